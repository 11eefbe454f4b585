-- The property database: platform properties by path name, and what the BIOS configuration manager keeps.
--
-- Version 1.

-- Properties by path. A value is a blob whose byte 0 describes it and is not interpreted; the value itself
-- begins at byte 1, least significant byte first.
CREATE TABLE "propertiesDCTbl" (
  "_id"       INTEGER PRIMARY KEY,
  "propName"  TEXT NOT NULL UNIQUE,
  "propValue" BLOB
);

-- The attributes that the host's firmware knows. While the table is empty every name is accepted.
CREATE TABLE "biosAttribute" (
  "_id"  INTEGER PRIMARY KEY,
  "name" TEXT NOT NULL UNIQUE
);

-- Accepted values that wait for the host's firmware to take them over.
CREATE TABLE "biosPendingValue" (
  "_id"   INTEGER PRIMARY KEY,
  "name"  TEXT NOT NULL UNIQUE,
  "kind"  INTEGER,
  "value" TEXT
);
