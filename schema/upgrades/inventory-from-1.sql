-- From version 1 to 2: an adapter without a health status is a healthy one, and not one that cannot be read.
-- A default cannot be changed in place, so that the table is made anew and takes the rows over.
ALTER TABLE "PCIAdapter" RENAME TO "FormerPCIAdapter";
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
INSERT INTO "PCIAdapter"
  SELECT "_id", "PCIKey", "PCIFuncKey", "NodeNo", "SegNo", "BusNo", "DeviceNo", "FunctionNo", "Location", "SlotNo",
         "CardName", "ConnectorType", "AIMSupported", ifnull("HealthStatus", 0)
  FROM "FormerPCIAdapter";
DROP TABLE "FormerPCIAdapter";
CREATE INDEX "PCIAdapterByPCIKey" ON "PCIAdapter" ("PCIKey");
CREATE INDEX "PCIAdapterByPCIFuncKey" ON "PCIAdapter" ("PCIFuncKey");
CREATE INDEX "PCIAdapterBySlot" ON "PCIAdapter" ("Location", "SlotNo");

-- The machine as a whole, one row: our own table, which no operation of the library reads.
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
  "FirmwareDate"      TEXT
);

-- Embedded devices have a version in words. Made anew, too, so that the table reads as in a new inventory.
ALTER TABLE "EmbeddedDeviceFirmware" RENAME TO "FormerEmbeddedDeviceFirmware";
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
INSERT INTO "EmbeddedDeviceFirmware"
  SELECT "_id", "DeviceName", "DeviceIndex", "StructRev", "Version", NULL, "SoftwareID", "Class", "Category",
         "SubCategory", "Checksum"
  FROM "FormerEmbeddedDeviceFirmware";
DROP TABLE "FormerEmbeddedDeviceFirmware";
CREATE INDEX "EmbeddedDeviceFirmwareBySoftwareID" ON "EmbeddedDeviceFirmware" ("SoftwareID");
