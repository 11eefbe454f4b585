#include "firmware/pldm_list.h"

#include "db/known_devices.h"
#include "db/query.h"
#include "db/rows.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PLDM_Firmware;

constexpr Column kPldmColumns[] = {
    ZYMDB_FIELD(Record, DeviceName),
    // A device whose type is missing is of the unknown type.
    ZYMDB_COLUMN("DeviceType", Record, DeviceType, 23),
    ZYMDB_FIELD(Record, PCIKey),
    ZYMDB_FIELD(Record, PCIFuncKey),
    ZYMDB_FIELD(Record, Location),
    ZYMDB_FIELD(Record, SlotNo),
    ZYMDB_FIELD(Record, Manufacture),
    ZYMDB_FIELD(Record, SoftwareID),
    ZYMDB_FIELD(Record, VersionString),
    ZYMDB_FIELD(Record, PendingVersionString),
    ZYMDB_FIELD(Record, PkgVersionString),
    ZYMDB_FIELD(Record, ReleaseDate),
    ZYMDB_FIELD(Record, PendingReleaseDate),
    ZYMDB_FIELD(Record, UpdateSupport),
    ZYMDB_FIELD(Record, UpdateMethod),
    ZYMDB_FIELD(Record, UpdateAuxInfo),
    ZYMDB_FIELD(Record, Updated),
    ZYMDB_FIELD(Record, UpdateErrCode),
    ZYMDB_FIELD(Record, UpdateErrString),
    ZYMDB_FIELD(Record, Status),
};

}  // namespace

int zymdb::list_pldm_firmware(_ZYMDB_PLDM_Firmware_List* out, const char* filter) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (out == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *out = {};
  Query query(handle, "PldmDeviceFirmware", kPldmColumns, filter);
  return list_rows(query, allocate_array<Record>, out->Count, out->Firmwares, [&](Record& record) {
    query.read_columns(kPldmColumns, &record);
    return true;
  });
}

int zymdb_get_pldm_firmware_list(_ZYMDB_PLDM_Firmware_List* out) {
  return list_pldm_firmware(out, nullptr);
}

int zymdb_get_pldm_firmware_pending_list(_ZYMDB_PLDM_Firmware_List* out) {
  return list_pldm_firmware(out, Filter<64>("Status=%d", ZYMDB_PLDM_UPDATE_PENDING));
}

int zymdb_get_pldm_firmware_updated_list(_ZYMDB_PLDM_Firmware_List* out) {
  return list_pldm_firmware(out, "Updated!=0");
}

int zymdb_get_pldm_firmware_update_failure_list(_ZYMDB_PLDM_Firmware_List* out) {
  return list_pldm_firmware(out, "Updated!=0 AND UpdateErrCode!=0");
}

int zymdb_get_pldm_firmware_update_success_list(_ZYMDB_PLDM_Firmware_List* out) {
  return list_pldm_firmware(out, "Updated!=0 AND UpdateErrCode=0");
}

int zymdb_get_pldm_firmware_marvell_ctrl_list(_ZYMDB_PLDM_Firmware_List* out) {
  return list_pldm_firmware(out, board_marvell_controllers());
}
