-- The inventory of the host: every table and column that the library reads or writes.
--
-- Version 3. Every row has an "_id". Numbers are INTEGER; where a collector reports a code as text, in decimal
-- or with a "0x" prefix, the column is TEXT and readers convert it. No column is required and nothing is unique
-- but "_id": a collector writes what it knows, and two writers that both find no row may both insert one.
-- Indexes serve the filters of the operations; rows of one key come out in the order of "_id".
--
-- A line "volatile:" in front of a table names its columns that change while nothing happens to the machine, or
-- all of them: "*". The journal leaves them out.

-- Processors, one row per socket, as SMBIOS describes them.
CREATE TABLE "Processor" (
  "_id"              INTEGER PRIMARY KEY,
  "ProcId"           INTEGER,  -- processor identification, 64 bits
  "ProcType"         INTEGER,
  "Family"           INTEGER,
  "Socket"           TEXT,
  "Manufacturer"     TEXT,
  "Version"          TEXT,
  "Voltage"          INTEGER,
  "ExtClock"         INTEGER,  -- MHz
  "MaxSpeed"         INTEGER,  -- MHz
  "CurSpeed"         INTEGER,  -- MHz
  "Status"           INTEGER,
  "Upgrade"          INTEGER,
  "SerialNo"         TEXT,
  "AssetTag"         TEXT,
  "PartNo"           TEXT,
  "CoreCount"        INTEGER,
  "CoreEnabled"      INTEGER,
  "ThreadCount"      INTEGER,
  "Characteristics"  INTEGER,
  "L1CacheMaxSize"   INTEGER,
  "L1CacheInstalled" INTEGER,
  "L1CacheType"      INTEGER,
  "L1CacheConfig"    INTEGER,
  "L2CacheMaxSize"   INTEGER,
  "L2CacheInstalled" INTEGER,
  "L2CacheType"      INTEGER,
  "L2CacheConfig"    INTEGER,
  "L3CacheMaxSize"   INTEGER,
  "L3CacheInstalled" INTEGER,
  "L3CacheType"      INTEGER,
  "L3CacheConfig"    INTEGER,
  "NodeIndex"        INTEGER
);

-- Memory module positions, one row per slot, persistent-memory modules included.
CREATE TABLE "Memory" (
  "_id"                INTEGER PRIMARY KEY,
  "ArrayId"            INTEGER,
  "SlotNo"             INTEGER,
  "TotalWidth"         INTEGER,  -- bits
  "DataWidth"          INTEGER,  -- bits
  "MemSize"            INTEGER,
  "FormFactor"         INTEGER,
  "MemType"            INTEGER,
  "TypeDetail"         INTEGER,  -- bit 0x1000: non-volatile
  "MaxSpeed"           INTEGER,
  "ClockSpeed"         INTEGER,
  "DevLocator"         TEXT,
  "BankLocator"        TEXT,
  "Manufacturer"       TEXT,
  "SerialNo"           TEXT,
  "AssetTag"           TEXT,
  "PartNo"             TEXT,
  "Attributes"         INTEGER,
  "NodeIndex"          INTEGER,
  "Capacity"           INTEGER,
  "MemCapacity"        INTEGER,
  "AppDirCap"          INTEGER,
  "UnconfigCap"        INTEGER,
  "InaccCap"           INTEGER,
  "ReservedCap"        INTEGER,
  "Classification"     INTEGER,
  "RemainingLife"      INTEGER,
  "SecurityState"      INTEGER,
  "HealthStatus"       INTEGER,
  "AlarmTrips"         INTEGER,
  "LDShutdownCount"    INTEGER,
  "AITDRAMStatus"      INTEGER,
  "HealthStatusReason" INTEGER,
  "LLShutdownStatus"   INTEGER,
  "InfoMask"           INTEGER,
  "CPUIndex"           INTEGER,
  "iMCNum"             INTEGER,
  "ChannelNum"         INTEGER,
  "DimmNum"            INTEGER,
  "FirmwareVersion"    TEXT,
  "SoftwareID"         TEXT,
  "MajorHealth"        INTEGER,
  "MinorHealth"        INTEGER,
  "RepairStatus"       INTEGER
);
CREATE INDEX "MemoryBySlot" ON "Memory" ("SlotNo");

-- PCI functions, one row each, addressed by "FunKey"; the functions of one device share "DevKey".
CREATE TABLE "PCIs" (
  "_id"              INTEGER PRIMARY KEY,
  "FunKey"           INTEGER,  -- function key
  "DevKey"           INTEGER,  -- PCI key
  "HardwareId"       INTEGER,
  "HardwareTypeId"   INTEGER,
  "BridgeId"         INTEGER,
  "SegNo"            INTEGER,
  "BusNo"            INTEGER,
  "DeviceNo"         INTEGER,
  "FunctionNo"       INTEGER,
  "VendorId"         INTEGER,
  "DeviceId"         INTEGER,
  "RevId"            INTEGER,
  "ClsCode"          INTEGER,  -- class, subclass, programming interface: 24 bits
  "SubVendorId"      INTEGER,
  "SubDeviceId"      INTEGER,
  "SlotNo"           INTEGER,
  "Location"         INTEGER,  -- 0 on the board, 1 in a slot, 2 in a drive bay
  "SlotDesignation"  TEXT,
  "SlotType"         INTEGER,
  "SlotDataBusWidth" INTEGER,
  "Hotplug"          INTEGER,
  "PCIType"          INTEGER,
  "BladeSlotPort"    INTEGER,
  "NodeIndex"        INTEGER,
  "FunType"          INTEGER,
  "LanesInUse"       INTEGER,
  "MaxLanes"         INTEGER,
  "MaxPCIeType"      INTEGER,
  "PCIeType"         INTEGER,
  "Driver"           TEXT,     -- the kernel's; our own column, as the next
  "IOMMUGroup"       INTEGER,
  "NUMANode"         INTEGER
);
CREATE INDEX "PCIsByFunKey" ON "PCIs" ("FunKey");
CREATE INDEX "PCIsByDevKey" ON "PCIs" ("DevKey");
CREATE INDEX "PCIsBySlot" ON "PCIs" ("Location", "SlotNo");
CREATE INDEX "PCIsByDeviceId" ON "PCIs" ("DeviceId");

-- Adapters as their management interface or the configuration data reports them: one row per function, the
-- functions of one card under one "PCIKey".
CREATE TABLE "PCIAdapter" (
  "_id"           INTEGER PRIMARY KEY,
  "PCIKey"        INTEGER,
  "PCIFuncKey"    INTEGER,
  "NodeNo"        INTEGER,
  "SegNo"         INTEGER,
  "BusNo"         INTEGER,
  "DeviceNo"      INTEGER,
  "FunctionNo"    INTEGER,
  "Location"      INTEGER,
  "SlotNo"        INTEGER,
  "CardName"      TEXT,
  "ConnectorType" TEXT,     -- number in text
  "AIMSupported"  INTEGER,  -- 1 to 3: known out of band; 3: merged from configuration data
  "HealthStatus"  INTEGER DEFAULT 0
);
CREATE INDEX "PCIAdapterByPCIKey" ON "PCIAdapter" ("PCIKey");
CREATE INDEX "PCIAdapterByPCIFuncKey" ON "PCIAdapter" ("PCIFuncKey");
CREATE INDEX "PCIAdapterBySlot" ON "PCIAdapter" ("Location", "SlotNo");

-- Connector and package of a function.
CREATE TABLE "PCIMisc" (
  "_id"              INTEGER PRIMARY KEY,
  "PCIFuncKey"       INTEGER,
  "MaxDataWidth"     INTEGER,
  "ConnectorLayout"  TEXT,  -- number in text
  "PackageType"      TEXT,  -- number in text
  "OtherPackageType" TEXT,
  "AIMSpecVersion"   TEXT
);
CREATE INDEX "PCIMiscByPCIFuncKey" ON "PCIMisc" ("PCIFuncKey");

-- Vital product data, by hardware id and type.
CREATE TABLE "VPDs" (
  "_id"            INTEGER PRIMARY KEY,
  "HardwareId"     INTEGER,
  "HardwareTypeId" INTEGER,
  "UUID"           TEXT,
  "ProductName"    TEXT,
  "Manufacture"    TEXT,
  "SerialNo"       TEXT,
  "PartNo"         TEXT,
  "Model"          TEXT,
  "FRUNo"          TEXT
);
CREATE INDEX "VPDsByHardwareId" ON "VPDs" ("HardwareId");

-- The NC-SI package identifiers of a slot's network controllers.
CREATE TABLE "NCSIPackageID" (
  "_id"        INTEGER PRIMARY KEY,
  "Location"   INTEGER,
  "SlotNo"     INTEGER,
  "Type"       INTEGER,
  "PackageID1" INTEGER,
  "PackageID2" INTEGER
);

-- Graphics functions: their video memory.
CREATE TABLE "PCIGPU" (
  "_id"                INTEGER PRIMARY KEY,
  "PCIFuncKey"         INTEGER,
  "VideoMemoryType"    TEXT,  -- number in text
  "VideoMemorySize"    TEXT,
  "TotalGPUChipNumber" INTEGER
);
CREATE INDEX "PCIGPUByPCIFuncKey" ON "PCIGPU" ("PCIFuncKey");

-- Graphics chips, one row per chip of a function.
CREATE TABLE "PCIGPUChip" (
  "_id"                         INTEGER PRIMARY KEY,
  "PCIFuncKey"                  INTEGER,
  "GPUChipIndex"                INTEGER,
  "GPUChipName"                 TEXT,
  "GPUChipManufacturer"         TEXT,
  "GPUChipModel"                TEXT,
  "GPUChipPartNumber"           TEXT,
  "GPUChipSKU"                  TEXT,
  "GPUChipSerialNumber"         TEXT,
  "GPUChipFamily"               TEXT,
  "GPUChipUniqueID"             TEXT,
  "GPUChipFormFactor"           TEXT,  -- number in text
  "GPUChipNumberOfEnabledCores" INTEGER,
  "ExternalBusClockSpeed"       INTEGER,
  "GPUChipMaxClockSpeed"        INTEGER,
  "GPUChipAddressWidth"         INTEGER,
  "GPUChipDataWidth"            INTEGER
);
CREATE INDEX "PCIGPUChipByPCIFuncKey" ON "PCIGPUChip" ("PCIFuncKey");

-- Network functions: how many ports they have. A function may have several rows; its counts are their sums.
CREATE TABLE "PCINetwork" (
  "_id"                     INTEGER PRIMARY KEY,
  "PCIKey"                  INTEGER,
  "PCIFuncKey"              INTEGER,
  "NumberofPhysicalPorts"   INTEGER,
  "MaxNumberofLogicalPorts" INTEGER
);
CREATE INDEX "PCINetworkByPCIKey" ON "PCINetwork" ("PCIKey");
CREATE INDEX "PCINetworkByPCIFuncKey" ON "PCINetwork" ("PCIFuncKey");

-- Logical ports (partitions, virtual NICs, storage endpoints) of network functions.
CREATE TABLE "PCILogicalPort" (
  "_id"                      INTEGER PRIMARY KEY,
  "PCIKey"                   INTEGER,
  "PCIFuncKey"               INTEGER,
  "PhyIdx"                   INTEGER,  -- index of the physical port that carries it
  "Idx"                      INTEGER,
  "MaxDataSize"              INTEGER,
  "PermanentAddress"         TEXT,
  "NetworkAddresses"         TEXT,
  "LinkTechnology"           TEXT,     -- number in text
  "vNICMode"                 TEXT,     -- number in text
  "MaxSpeed"                 INTEGER,
  "ProtocolType"             INTEGER,  -- interface-type number
  "Ethernet"                 INTEGER,
  "FCoEFC"                   INTEGER,
  "iSCSI"                    INTEGER,
  "FCoEPermanentAddress"     TEXT,
  "FCoENetworkAddressess"    TEXT,
  "ConnectionType"           TEXT,     -- number in text
  "Role"                     TEXT,     -- number in text
  "TargetRelativePortNumber" INTEGER
);
CREATE INDEX "PCILogicalPortByPCIKey" ON "PCILogicalPort" ("PCIKey");
CREATE INDEX "PCILogicalPortByPCIFuncKey" ON "PCILogicalPort" ("PCIFuncKey");

-- Physical ports of network functions: what does not change.
CREATE TABLE "PCIPhysicalPort" (
  "_id"                  INTEGER PRIMARY KEY,
  "PCIFuncKey"           INTEGER,
  "Idx"                  INTEGER,
  "ConnectorLayout"      TEXT,  -- number in text
  "NumberofLogicalPorts" INTEGER,
  "PermanentAddress"     TEXT,
  "InterfaceName"        TEXT   -- the operating system's; our own column
);
CREATE INDEX "PCIPhysicalPortByPCIFuncKey" ON "PCIPhysicalPort" ("PCIFuncKey");

-- Physical ports of network functions: their link. Paired with "PCIPhysicalPort" by position, so both tables
-- hold a function's rows in the same order.
-- volatile: TxUtil, RxUtil
CREATE TABLE "PCIPhysicalPortStat" (
  "_id"        INTEGER PRIMARY KEY,
  "PCIFuncKey" INTEGER,
  "Idx"        INTEGER,
  "LinkStatus" INTEGER,
  "LinkSpeed"  INTEGER,
  "TxUtil"     INTEGER,
  "RxUtil"     INTEGER
);
CREATE INDEX "PCIPhysicalPortStatByPCIFuncKey" ON "PCIPhysicalPortStat" ("PCIFuncKey");

-- Physical ports of network functions: what their counters said last. Collectors used to keep it here, where
-- it cost a write each time; now the table is empty.
-- volatile: *
CREATE TABLE "PCIPhysicalPortCounter" (
  "_id"        INTEGER PRIMARY KEY,
  "PCIFuncKey" INTEGER,
  "Idx"        INTEGER,
  "TxBytes"    INTEGER,
  "RxBytes"    INTEGER,
  "SampledAt"  INTEGER  -- when they last changed, ms since 1970
);
CREATE INDEX "PCIPhysicalPortCounterByPCIFuncKey" ON "PCIPhysicalPortCounter" ("PCIFuncKey");

-- Firmware and software components of PCI functions, by hardware id and type.
CREATE TABLE "Firmwares" (
  "_id"            INTEGER PRIMARY KEY,
  "HardwareId"     INTEGER,
  "HardwareTypeId" INTEGER,
  "FirmwareName"   TEXT,
  "VersionString"  TEXT,
  "Description"    TEXT,
  "ReleaseDate"    TEXT,
  "Manufacture"    TEXT,
  "Classification" INTEGER,
  "SoftwareID"     TEXT
);
CREATE INDEX "FirmwaresByHardwareId" ON "Firmwares" ("HardwareId");

-- Firmware components that devices report and take over PLDM.
CREATE TABLE "PldmDeviceFirmware" (
  "_id"                  INTEGER PRIMARY KEY,
  "DeviceName"           TEXT,
  "DeviceType"           INTEGER,
  "PCIKey"               INTEGER,
  "PCIFuncKey"           INTEGER,
  "VendorId"             INTEGER,
  "DeviceId"             INTEGER,
  "SubVendorId"          INTEGER,
  "SubDeviceId"          INTEGER,
  "Location"             INTEGER,
  "SlotNo"               INTEGER,
  "Manufacture"          TEXT,
  "SoftwareID"           TEXT,
  "VersionString"        TEXT,
  "PendingVersionString" TEXT,
  "PkgVersionString"     TEXT,
  "ReleaseDate"          TEXT,
  "PendingReleaseDate"   TEXT,
  "UpdateSupport"        INTEGER,
  "UpdateMethod"         INTEGER,
  "UpdateAuxInfo"        INTEGER,
  "Updated"              INTEGER,
  "UpdateErrCode"        INTEGER,
  "UpdateErrString"      TEXT,
  "Status"               INTEGER  -- 2: an update is pending
);
CREATE INDEX "PldmDeviceFirmwareBySlot" ON "PldmDeviceFirmware" ("Location", "SlotNo");

-- Firmware of devices embedded on the system board, by software id and device index.
CREATE TABLE "EmbeddedDeviceFirmware" (
  "_id"           INTEGER PRIMARY KEY,
  "DeviceName"    TEXT,
  "DeviceIndex"   INTEGER,
  "StructRev"     INTEGER,
  "Version"       INTEGER,
  "VersionString" TEXT,     -- in the words of whoever reports it: the number has no room for all of it
  "SoftwareID"    TEXT,
  "Class"         INTEGER,
  "Category"      INTEGER,
  "SubCategory"   INTEGER,
  "Checksum"      INTEGER
);
CREATE INDEX "EmbeddedDeviceFirmwareBySoftwareID" ON "EmbeddedDeviceFirmware" ("SoftwareID");

-- Events of data-processing units, by slot. An event's id is shown to users, so it never comes back.
-- volatile: *
CREATE TABLE "DPUEvents" (
  "_id"       INTEGER PRIMARY KEY AUTOINCREMENT,
  "Slot"      INTEGER,
  "GenID"     TEXT,
  "Message"   TEXT,
  "Timestamp" INTEGER
);
CREATE INDEX "DPUEventsBySlot" ON "DPUEvents" ("Slot");

-- Configuration settings of adapters, by setting id; "PfaKey" is the function key.
CREATE TABLE "PCISetting" (
  "_id"             INTEGER PRIMARY KEY,
  "SettingID"       TEXT,
  "SettingName"     TEXT,
  "PfaKey"          INTEGER,
  "CurrentValue"    TEXT,
  "PendingValue"    TEXT,
  "SuppressIf"      TEXT,
  "GrayIf"          TEXT,
  "GroupID"         TEXT,
  "GroupName"       TEXT,
  "GroupSuppressIf" TEXT,
  "GroupGrayIf"     TEXT,
  "Mriname"         TEXT,
  "ShortDesc"       TEXT,
  "FullDesc"        TEXT,
  "Type"            INTEGER,
  "Flags"           INTEGER,
  "Mininstances"    INTEGER,
  "Maxinstances"    INTEGER,
  "Defvalue"        TEXT,
  "Mfg_default"     TEXT,
  "Defaultaction"   TEXT,
  "RecordId"        TEXT,
  "Minim"           INTEGER,
  "Maxim"           INTEGER,
  "Step"            INTEGER,
  "Mins"            INTEGER,
  "Maxs"            INTEGER,
  "Pattern"         TEXT,
  "Numchoices"      INTEGER,
  "Choices"         TEXT
);
CREATE INDEX "PCISettingBySettingID" ON "PCISetting" ("SettingID");
CREATE INDEX "PCISettingByPfaKey" ON "PCISetting" ("PfaKey");

-- Drives known to the controller, by their location text ("Bay 3").
-- volatile: Temperature
CREATE TABLE "AimDisks" (
  "_id"         INTEGER PRIMARY KEY,
  "PCIFuncKey"  INTEGER,
  "SlotNo"      INTEGER,
  "CtrlType"    INTEGER,
  "BayNo"       INTEGER,
  "LocationId"  INTEGER,  -- 1 slot, 2 bay, 3 M.2 bay, 4 7 mm bay
  "Location"    TEXT,
  "Presence"    INTEGER,
  "DriveTypeId" INTEGER,  -- also read as text
  "MediaTypeId" INTEGER,  -- also read as text
  "FruNo"       TEXT,
  "PartNo"      TEXT,
  "SerialNo"    TEXT,
  "Model"       TEXT,
  "UUID"        TEXT,
  "Manufacture" TEXT,
  "FwVersion"   TEXT,
  "Capacity"    TEXT,
  "SFlags"      INTEGER,
  "Warning"     INTEGER,
  "Temperature" INTEGER,  -- degrees Celsius
  "RemainLife"  INTEGER,  -- percent
  "InfoMask"    INTEGER
);
CREATE INDEX "AimDisksByLocation" ON "AimDisks" ("Location");
CREATE INDEX "AimDisksByBay" ON "AimDisks" ("LocationId", "BayNo");

-- NVMe drives as their management interface reports them.
-- volatile: Temperature
CREATE TABLE "NVMeDrives" (
  "_id"          INTEGER PRIMARY KEY,
  "Location"     INTEGER,  -- 1 slot, 2 bay, 3 M.2 bay, 4 7 mm bay
  "SlotNo"       INTEGER,  -- the drive's bay number
  "CtrlSlot"     INTEGER,
  "CtrlType"     INTEGER,
  "ModelName"    TEXT,
  "Manufacturer" TEXT,
  "SupplierSN"   TEXT,
  "PartNo"       TEXT,
  "FruNo"        TEXT,
  "FwVer"        TEXT,
  "SFlags"       INTEGER,
  "Warning"      INTEGER,
  "Temperature"  INTEGER,
  "RemainLife"   INTEGER,
  "Capacity"     INTEGER,  -- bytes
  "FormFactor"   INTEGER
);
CREATE INDEX "NVMeDrivesBySlot" ON "NVMeDrives" ("Location", "SlotNo");

-- Health by sensor slot.
CREATE TABLE "SensorSlotMap" (
  "_id"            INTEGER PRIMARY KEY,
  "HardwareTypeId" INTEGER,
  "SlotNo"         INTEGER,
  "HealthStatusId" INTEGER
);

-- The machine as a whole, one row: our own table, which no operation of the library reads.
-- volatile: CollectedAt, CollectedBy, CollectedFrom
CREATE TABLE "System" (
  "_id"               INTEGER PRIMARY KEY,
  "Manufacturer"      TEXT,
  "Model"             TEXT,
  "Version"           TEXT,
  "SerialNo"          TEXT,
  "UUID"              TEXT,
  "SKU"               TEXT,
  "Family"            TEXT,
  "BoardManufacturer" TEXT,
  "BoardModel"        TEXT,
  "BoardVersion"      TEXT,
  "BoardSerialNo"     TEXT,
  "FirmwareVendor"    TEXT,
  "FirmwareVersion"   TEXT,
  "FirmwareDate"      TEXT,
  "HostName"          TEXT,
  "CollectedAt"       INTEGER,  -- seconds since 1970: when a collection last changed anything
  "CollectedBy"       TEXT,     -- the version that did
  "CollectedFrom"     TEXT      -- and its sources
);

-- What changed, and when: a row for each transaction that changed anything, none for one that did not. The
-- client alone writes it. The newest row's "_id" is the inventory's generation. A transaction that changed
-- volatile columns alone leaves no "Changes": the newest row moves along, if it has none either.
CREATE TABLE "Journal" (
  "_id"     INTEGER PRIMARY KEY,  -- the generation
  "Time"    INTEGER,              -- ms since 1970
  "Size"    INTEGER,              -- bytes of all "Changes" up to this one, since the inventory was made
  "Changes" TEXT                  -- JSON: what was there before
);
