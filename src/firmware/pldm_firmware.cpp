#include "controller/ruvo_log.h"
#include "db/filter.h"
#include "db/rows.h"
#include "db/system_log.h"
#include "db/values.h"
#include "firmware/pldm_list.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PLDM_Firmware;

constexpr int32_t kNotPending = ZYMDB_PLDM_NOT_PENDING;

// The component of the slot, narrowed to a PCI device where one is given.
Filter<512> filter_of_slot(int location, int slot, int bus, int device) {
  if (bus < 0 || device < 0) return Filter<512>("Location=%d AND SlotNo=%d", location, slot);
  return Filter<512>(
      "Location=%d AND SlotNo=%d AND PCIFuncKey IN (select FunKey from PCIs where BusNo=%d and DeviceNo=%d)",
      location, slot, bus, device);
}

// Callers' texts are cut where their field ends.
void terminate_texts(Record& record) {
  record.VersionString[sizeof record.VersionString - 1] = '\0';
  record.PendingVersionString[sizeof record.PendingVersionString - 1] = '\0';
  record.PkgVersionString[sizeof record.PkgVersionString - 1] = '\0';
  record.ReleaseDate[sizeof record.ReleaseDate - 1] = '\0';
  record.PendingReleaseDate[sizeof record.PendingReleaseDate - 1] = '\0';
  record.UpdateErrString[sizeof record.UpdateErrString - 1] = '\0';
}

void put_update_state(Values& values, const Record& record) {
  values.put("VersionString", record.VersionString);
  values.put("PendingVersionString", record.PendingVersionString);
  values.put("PkgVersionString", record.PkgVersionString);
  values.put("ReleaseDate", record.ReleaseDate);
  values.put("PendingReleaseDate", record.PendingReleaseDate);
  values.put("UpdateErrString", record.UpdateErrString);
  values.put("UpdateSupport", uint32_t{record.UpdateSupport});
  values.put("UpdateMethod", uint32_t{record.UpdateMethod});
  values.put("UpdateAuxInfo", uint32_t{record.UpdateAuxInfo});
  values.put("Updated", uint32_t{record.Updated});
  values.put("UpdateErrCode", uint32_t{record.UpdateErrCode});
  values.put("Status", record.Status);
}

template <size_t N>
void log_failed_update(const Record& record, const Filter<N>& filter, int status) {
  ruvo_log::logErr(
      "zymdb_update_pldm_firmware failed, filter: %s, value: %s(0x%s) %s(0x%s) %s(0x%s) %s(0x%s) %s(0x%s) "
      "%s(0x%s) %s(0x%x) %s(0x%x) %s(0x%x) %s(0x%x) %s(0x%x) %s(0x%x), ret: %d\n",
      filter.text(), "VersionString", record.VersionString, "PendingVersionString",
      record.PendingVersionString, "PkgVersionString", record.PkgVersionString, "ReleaseDate",
      record.ReleaseDate, "PendingReleaseDate", record.PendingReleaseDate, "UpdateErrString",
      record.UpdateErrString, "UpdateSupport", record.UpdateSupport, "UpdateMethod", record.UpdateMethod,
      "UpdateAuxInfo", record.UpdateAuxInfo, "Updated", record.Updated, "UpdateErrCode", record.UpdateErrCode,
      "Status", record.Status, status);
  log_if_cut(filter);
}

}  // namespace

int zymdb_get_pldm_firmware(int location, int slotNo, _ZYMDB_PLDM_Firmware* out, int busNo, int deviceNo) {
  if (out == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  _ZYMDB_PLDM_Firmware_List list{};
  const int status = list_pldm_firmware(&list, filter_of_slot(location, slotNo, busNo, deviceNo));
  const CallerArray<Record> rows(list.Firmwares);
  if (status != ZYM_DB_STATUS_OK) return status;
  if (list.Count != 1 && list.Count != 2) return ZYM_DB_STATUS_NOT_FOUND;

  const bool is_second = list.Count == 2 && rows[0].UpdateSupport == 0 && rows[1].UpdateSupport != 0;
  *out = rows[is_second ? 1 : 0];
  return ZYM_DB_STATUS_OK;
}

int zymdb_update_pldm_firmware(unsigned int location, unsigned int slotNo, _ZYMDB_PLDM_Firmware* rec) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (rec == nullptr || rec->Location != location || rec->SlotNo != slotNo)
    return ZYM_DB_STATUS_INVALID_PARAM;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  terminate_texts(*rec);
  values.clear();
  put_update_state(values, *rec);
  const Filter<64> filter("Location=%d AND SlotNo=%d AND SoftwareID=\"%s\"", rec->Location, rec->SlotNo,
                          rec->SoftwareID);
  const int status = values.update("PldmDeviceFirmware", filter);
  if (status != ZYM_DB_STATUS_OK) log_failed_update(*rec, filter, status);
  return status;
}

int zymdb_clear_all_pldm_firmware_pending_status(void) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  values.put("Status", kNotPending);
  const Filter<64> filter("Status=%d", ZYMDB_PLDM_UPDATE_PENDING);
  const int status = values.update("PldmDeviceFirmware", filter);
  if (status != ZYM_DB_STATUS_OK)
    ruvo_log::logErr("clear all pending pldm firmware failed, filter: %s, ret: %d\n", filter.text(), status);
  return status;
}

int zymdb_clear_pldm_firmware_by_type(int deviceType) {
  return delete_db_record(get_dmdb_handle(), "PldmDeviceFirmware", Filter<32>("DeviceType=%d", deviceType),
                          nullptr, 0);
}

int zymdb_insert_or_update_pldm_firmware(unsigned int vendorId, unsigned int deviceId,
                                         unsigned int subVendorId, unsigned int subDeviceId,
                                         const _ZYMDB_PLDM_Firmware* rec) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (rec == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  const uint32_t pci_key = uint32_t{rec->Location} << 16 | rec->SlotNo;
  values.put("DeviceName", rec->DeviceName);
  values.put("DeviceType", rec->DeviceType);
  values.put("PCIKey", pci_key);
  values.put("VendorId", uint32_t{vendorId});
  values.put("SubVendorId", uint32_t{subVendorId});
  values.put("DeviceId", uint32_t{deviceId});
  values.put("SubDeviceId", uint32_t{subDeviceId});
  values.put("Location", uint32_t{rec->Location});
  values.put("SlotNo", uint32_t{rec->SlotNo});
  values.put("Manufacture", rec->Manufacture);
  values.put("SoftwareID", rec->SoftwareID);
  values.put("VersionString", rec->VersionString);
  values.put("ReleaseDate", rec->ReleaseDate);
  values.put("UpdateSupport", uint32_t{rec->UpdateSupport});

  const Filter<64> where("DeviceType=%u AND SlotNo=%u AND Location=%u", rec->DeviceType, rec->SlotNo,
                         rec->Location);
  // The software id stands bare: the database takes a word that is no column for a text.
  const Filter<64> filter("PCIKey!=%u OR SoftwareID!=%s", pci_key, rec->SoftwareID);
  // Discovery goes on whatever becomes of one row: only the log tells.
  if (values.insert_or_update("PldmDeviceFirmware", where, filter) <= 0) {
    log_to_system(kLogInformation, "%s: Failed to insert/update PLDM FW info, where:%s, filter:%s\n\n",
                  "zymdb_insert_or_update_pldm_firmware", where.text(), filter.text());
    log_if_cut(filter);
  }
  return ZYM_DB_STATUS_OK;
}
