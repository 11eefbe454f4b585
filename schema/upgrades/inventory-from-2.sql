-- From version 2 to 3: what the operating system knows of functions and ports, how the machine was collected, and a
-- journal, which begins with what is there.
-- The tables are made anew, so that they read as in a new inventory.
ALTER TABLE "PCIs" RENAME TO "FormerPCIs";
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
INSERT INTO "PCIs"
  ("_id", "FunKey", "DevKey", "HardwareId", "HardwareTypeId", "BridgeId", "SegNo", "BusNo", "DeviceNo",
   "FunctionNo", "VendorId", "DeviceId", "RevId", "ClsCode", "SubVendorId", "SubDeviceId", "SlotNo",
   "Location", "SlotDesignation", "SlotType", "SlotDataBusWidth", "Hotplug", "PCIType",
   "BladeSlotPort", "NodeIndex", "FunType", "LanesInUse", "MaxLanes", "MaxPCIeType", "PCIeType")
  SELECT "_id", "FunKey", "DevKey", "HardwareId", "HardwareTypeId", "BridgeId", "SegNo", "BusNo", "DeviceNo",
         "FunctionNo", "VendorId", "DeviceId", "RevId", "ClsCode", "SubVendorId", "SubDeviceId", "SlotNo",
         "Location", "SlotDesignation", "SlotType", "SlotDataBusWidth", "Hotplug", "PCIType",
         "BladeSlotPort", "NodeIndex", "FunType", "LanesInUse", "MaxLanes", "MaxPCIeType", "PCIeType"
  FROM "FormerPCIs";
DROP TABLE "FormerPCIs";
CREATE INDEX "PCIsByFunKey" ON "PCIs" ("FunKey");
CREATE INDEX "PCIsByDevKey" ON "PCIs" ("DevKey");
CREATE INDEX "PCIsBySlot" ON "PCIs" ("Location", "SlotNo");
CREATE INDEX "PCIsByDeviceId" ON "PCIs" ("DeviceId");

ALTER TABLE "PCIPhysicalPort" RENAME TO "FormerPCIPhysicalPort";
CREATE TABLE "PCIPhysicalPort" (
  "_id"                  INTEGER PRIMARY KEY,
  "PCIFuncKey"           INTEGER,
  "Idx"                  INTEGER,
  "ConnectorLayout"      TEXT,  -- number in text
  "NumberofLogicalPorts" INTEGER,
  "PermanentAddress"     TEXT,
  "InterfaceName"        TEXT   -- the operating system's; our own column
);
INSERT INTO "PCIPhysicalPort"
  ("_id", "PCIFuncKey", "Idx", "ConnectorLayout", "NumberofLogicalPorts", "PermanentAddress")
  SELECT "_id", "PCIFuncKey", "Idx", "ConnectorLayout", "NumberofLogicalPorts", "PermanentAddress"
  FROM "FormerPCIPhysicalPort";
DROP TABLE "FormerPCIPhysicalPort";
CREATE INDEX "PCIPhysicalPortByPCIFuncKey" ON "PCIPhysicalPort" ("PCIFuncKey");

ALTER TABLE "System" RENAME TO "FormerSystem";
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
INSERT INTO "System"
  ("_id", "Manufacturer", "Model", "Version", "SerialNo", "UUID", "SKU", "Family", "BoardManufacturer",
   "BoardModel", "BoardVersion", "BoardSerialNo", "FirmwareVendor", "FirmwareVersion", "FirmwareDate")
  SELECT "_id", "Manufacturer", "Model", "Version", "SerialNo", "UUID", "SKU", "Family", "BoardManufacturer",
         "BoardModel", "BoardVersion", "BoardSerialNo", "FirmwareVendor", "FirmwareVersion", "FirmwareDate"
  FROM "FormerSystem";
DROP TABLE "FormerSystem";

-- What changed, and when: a row for each transaction that changed anything, none for one that did not. The
-- client alone writes it. The newest row's "_id" is the inventory's generation. A transaction that changed
-- volatile columns alone leaves no "Changes": the newest row moves along, if it has none either.
CREATE TABLE "Journal" (
  "_id"     INTEGER PRIMARY KEY,  -- the generation
  "Time"    INTEGER,              -- ms since 1970
  "Size"    INTEGER,              -- bytes of all "Changes" up to this one, since the inventory was made
  "Changes" TEXT                  -- JSON: what was there before
);
INSERT INTO "Journal" ("Time", "Size") SELECT CAST(strftime('%s', 'now') AS INTEGER) * 1000, 0;
