// The columns of AimDisks and the fields that they fill.
#ifndef ZYMDB_SRC_STORAGE_DRIVE_COLUMNS_H
#define ZYMDB_SRC_STORAGE_DRIVE_COLUMNS_H

#include "db/column.h"
#include "zymdb_storage.h"

namespace zymdb {

inline constexpr auto kDriveColumns = columns_of<_ZYMDB_AimDisk>({
    ZYMDB_FIELD(_ZYMDB_AimDisk, PCIFuncKey),  ZYMDB_FIELD(_ZYMDB_AimDisk, SlotNo),
    ZYMDB_FIELD(_ZYMDB_AimDisk, CtrlType),    ZYMDB_COLUMN("BayNo", _ZYMDB_AimDisk, BayNo, 255),
    ZYMDB_FIELD(_ZYMDB_AimDisk, LocationId),  ZYMDB_FIELD(_ZYMDB_AimDisk, Location),
    ZYMDB_OWN_COLUMN("DriveTypeId"),          ZYMDB_OWN_COLUMN("MediaTypeId"),
    ZYMDB_FIELD(_ZYMDB_AimDisk, FruNo),       ZYMDB_FIELD(_ZYMDB_AimDisk, PartNo),
    ZYMDB_FIELD(_ZYMDB_AimDisk, SerialNo),    ZYMDB_FIELD(_ZYMDB_AimDisk, Model),
    ZYMDB_FIELD(_ZYMDB_AimDisk, UUID),        ZYMDB_FIELD(_ZYMDB_AimDisk, Manufacture),
    ZYMDB_FIELD(_ZYMDB_AimDisk, FwVersion),   ZYMDB_FIELD(_ZYMDB_AimDisk, Capacity),
    ZYMDB_FIELD(_ZYMDB_AimDisk, SFlags),      ZYMDB_FIELD(_ZYMDB_AimDisk, Warning),
    ZYMDB_FIELD(_ZYMDB_AimDisk, Temperature), ZYMDB_FIELD(_ZYMDB_AimDisk, RemainLife),
    ZYMDB_FIELD(_ZYMDB_AimDisk, InfoMask),
});

}  // namespace zymdb

#endif
