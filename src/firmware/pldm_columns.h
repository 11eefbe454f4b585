// The columns of PldmDeviceFirmware and the fields that they fill.
#ifndef ZYMDB_SRC_FIRMWARE_PLDM_COLUMNS_H
#define ZYMDB_SRC_FIRMWARE_PLDM_COLUMNS_H

#include "db/column.h"
#include "zymdb_firmware.h"

namespace zymdb {

inline constexpr auto kPldmColumns = columns_of<_ZYMDB_PLDM_Firmware>({
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, DeviceName),
    // A device whose type is missing is of the unknown type.
    ZYMDB_COLUMN("DeviceType", _ZYMDB_PLDM_Firmware, DeviceType, 23),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, PCIKey),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, PCIFuncKey),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, Location),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, SlotNo),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, Manufacture),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, SoftwareID),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, VersionString),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, PendingVersionString),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, PkgVersionString),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, ReleaseDate),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, PendingReleaseDate),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, UpdateSupport),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, UpdateMethod),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, UpdateAuxInfo),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, Updated),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, UpdateErrCode),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, UpdateErrString),
    ZYMDB_FIELD(_ZYMDB_PLDM_Firmware, Status),
});

}  // namespace zymdb

#endif
