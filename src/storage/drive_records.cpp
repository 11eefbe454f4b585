#include <cstring>

#include "db/query.h"
#include "db/values.h"
#include "storage/drive_location.h"
#include "zymdb_storage.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_AimDisk;

constexpr int kNvmeClass = 0x010802;
constexpr uint8_t kPresent = 1;
constexpr char kSolidState[] = "1";
constexpr int kHysteresis = 3;  // degrees

constexpr bool is_slot_or_bay(int kind) {
  return kind == ZYMDB_LOCATION_SLOT || kind == ZYMDB_LOCATION_BAY;
}

constexpr bool is_known_place(int kind) {
  return kind >= ZYMDB_LOCATION_SLOT && kind <= ZYMDB_LOCATION_7MM_BAY;
}

Filter<48> nvme_drive_at(int kind, int bay) {
  return Filter<48>("Location=\"%s\" AND DriveTypeId=%d", location_text(kind, bay).data(), kNvmeDrive);
}

// What AimDisks holds for the place of a drive.
struct Stored {
  bool exists = false;
  uint8_t ctrl_type = 0;
  char serial_no[sizeof Record::SerialNo] = {};
  char fw_version[sizeof Record::FwVersion] = {};
};

Stored look_up(_zym_db_handle_t* handle, const char* filter) {
  Stored stored;
  Query query(handle, "AimDisks", {"CtrlType", "SerialNo", "FwVersion"}, filter);
  if (query.step() != ZYM_DB_STATUS_ROW) return stored;
  stored.exists = true;
  stored.ctrl_type = query.read_or(0, uint8_t{0});
  query.read_text(1, stored.serial_no, sizeof stored.serial_no);
  query.read_text(2, stored.fw_version, sizeof stored.fw_version);
  return stored;
}

template <size_t N>
bool equal(const char (&text)[N], const char (&other)[N]) {
  return std::strncmp(text, other, N) == 0;
}

void put_smart(Values& values, const Record& drive) {
  values.put("SFlags", drive.SFlags);
  values.put("Warning", drive.Warning);
  values.put("Temperature", drive.Temperature);
  values.put("RemainLife", drive.RemainLife);
  values.put("InfoMask", drive.InfoMask);
}

void put_drive(Values& values, const Record& drive, const Stored& stored) {
  values.put("PCIFuncKey", drive.PCIFuncKey);
  values.put("SlotNo", drive.SlotNo);
  // A controller type that is known is never overwritten.
  if (!stored.exists || (stored.ctrl_type == 0 && drive.CtrlType != 0))
    values.put("CtrlType", drive.CtrlType);
  values.put("BayNo", drive.BayNo);
  values.put("LocationId", drive.LocationId);
  values.put("Location", location_text(drive.LocationId, drive.BayNo));
  values.put("Presence", kPresent);
  values.put("DriveTypeId", Filter<8>("%d", drive.DriveTypeId));
  values.put("MediaTypeId", kSolidState);
  values.put("FruNo", drive.FruNo);
  values.put("PartNo", drive.PartNo);
  values.put("SerialNo", drive.SerialNo);
  values.put("Model", drive.Model);
  values.put("UUID", drive.UUID);
  values.put("Manufacture", drive.Manufacture);
  values.put("FwVersion", drive.FwVersion);
  values.put("Capacity", drive.Capacity);
  put_smart(values, drive);
}

}  // namespace

int zymdb_get_nvme_drv_funkey(int location, int slot_no, unsigned int* funkey) {
  if (funkey == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  Query query(handle, "PCIs", {"SegNo", "BusNo", "DeviceNo", "FunctionNo"},
              Filter<128>("Location=%d AND SlotNo=%d AND ClsCode=%d", location, slot_no, kNvmeClass));
  if (!query.has_result()) return query.status();
  // Callers know a missing function by this code.
  if (query.step() != ZYM_DB_STATUS_ROW) return ZYM_DB_STATUS_NO_DB;
  uint32_t key = 0;
  for (int part = 0; part < 4; ++part) key = key << 8 | query.read_or(part, uint8_t{0});
  *funkey = key;
  return ZYM_DB_STATUS_OK;
}

int zymdb_nvme_aim_disk_exist(int location_id, int bay_no) {
  if (!is_slot_or_bay(location_id)) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  Query query(handle, "AimDisks", {"_id"}, nvme_drive_at(location_id, bay_no));
  return query.step() == ZYM_DB_STATUS_ROW ? 1 : 0;
}

int zymdb_add_update_nvme_aim_disk(const _ZYMDB_AimDisk* disk) {
  if (disk == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (!is_slot_or_bay(disk->LocationId)) return ZYM_DB_STATUS_INVALID_PARAM;

  const Filter<48> filter = nvme_drive_at(disk->LocationId, disk->BayNo);
  const Stored stored = look_up(handle, filter);
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;
  values.clear();
  if (!stored.exists || !equal(disk->SerialNo, stored.serial_no))
    put_drive(values, *disk, stored);
  else if (disk->FwVersion[0] != '\0' && !equal(disk->FwVersion, stored.fw_version))
    values.put("FwVersion", disk->FwVersion);
  return stored.exists ? values.update("AimDisks", filter) : values.insert("AimDisks");
}

int zymdb_update_nvme_disk_firmware_version(int location, int slot_no, const char* fw_version) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  values.put("FwVer", fw_version);
  return values.update("NVMeDrives", Filter<128>("Location=%d AND SlotNo=%d", location, slot_no));
}

int zymdb_update_aim_disk_smart_info(const _ZYMDB_AimDisk* disk) {
  if (disk == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;
  if (!is_known_place(disk->LocationId)) return ZYM_DB_STATUS_INVALID_PARAM;

  put_smart(values, *disk);
  // A temperature within 3 degrees of the stored one rewrites nothing.
  return values.update(
      "AimDisks",
      Filter<256>("Location=\"%s\" AND (SFlags!=%d OR Warning!=%d OR RemainLife!=%d OR InfoMask!=%d OR "
                  "((Temperature+%d)<%d) OR ((Temperature-%d)>%d))",
                  location_text(disk->LocationId, disk->BayNo).data(), disk->SFlags, disk->Warning,
                  disk->RemainLife, disk->InfoMask, kHysteresis, disk->Temperature, kHysteresis,
                  disk->Temperature));
}

int zymdb_update_aim_disk_ctrl_type(const _ZYMDB_AimDisk* disk) {
  if (disk == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;
  if (!is_known_place(disk->LocationId)) return ZYM_DB_STATUS_INVALID_PARAM;

  values.put("CtrlType", disk->CtrlType);
  return values.update("AimDisks",
                       Filter<64>("Location=\"%s\" AND CtrlType!=%d",
                                  location_text(disk->LocationId, disk->BayNo).data(), disk->CtrlType));
}

int zymdb_update_aim_disk_presence(int location_id, int bay_no, int presence) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  values.put("Presence", static_cast<uint16_t>(presence));
  return values.update(
      "AimDisks", Filter<128>("LocationId=%d AND BayNo=%d AND Presence!=%d", location_id, bay_no, presence));
}

int zymdb_update_aim_disk_vpd_info(const _ZYMDB_AimDisk* disk) {
  if (disk == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  values.put("Model", disk->Model);
  values.put("SerialNo", disk->SerialNo);
  values.put("PartNo", disk->PartNo);
  values.put("FruNo", disk->FruNo);
  values.put("Manufacture", disk->Manufacture);
  values.put("FwVersion", disk->FwVersion);
  return values.update("AimDisks", Filter<48>("LocationId=%d AND BayNo=%d", disk->LocationId, disk->BayNo));
}
