#include "db/query.h"
#include "db/rows.h"
#include "db/values.h"
#include "zymdb_firmware.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_Embedded_Firmware;

constexpr auto kEmbeddedColumns = columns_of<Record>({
    ZYMDB_FIELD(Record, DeviceName),
    ZYMDB_FIELD(Record, DeviceIndex),
    ZYMDB_FIELD(Record, StructRev),
    ZYMDB_FIELD(Record, Version),
    ZYMDB_FIELD(Record, SoftwareID),
    ZYMDB_FIELD(Record, Class),
    ZYMDB_FIELD(Record, Category),
    ZYMDB_FIELD(Record, SubCategory),
    ZYMDB_FIELD(Record, Checksum),
});

constexpr auto kWrittenColumns = written(kEmbeddedColumns, Puts::kWideOrNull);

// The row of this id where any column differs.
Filter<512> filter_of_change(int64_t id, const Record& record) {
  return Filter<512>(
      "_id=%d AND ((DeviceName!='%s') OR (SoftwareID!='%s') OR (DeviceIndex!=%d) OR (StructRev!=%d) OR "
      "(Version!=%d) OR (Class!=%d) OR (Category!=%d) OR (SubCategory!=%d) OR (Checksum!=%d))",
      static_cast<int>(id), record.DeviceName, record.SoftwareID, record.DeviceIndex, record.StructRev,
      record.Version, record.Class, record.Category, record.SubCategory, record.Checksum);
}

}  // namespace

int zymdb_get_embedded_firmware_list(_ZYMDB_Embedded_Firmware_List* out) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (out == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *out = {};
  Query query(handle, "EmbeddedDeviceFirmware", kEmbeddedColumns, nullptr);
  return list_rows(query, allocate_array<Record>, out->Count, out->Firmwares, [&](Record& record) {
    query.read_columns(kEmbeddedColumns, &record);
    return true;
  });
}

int zymdb_insert_or_update_embedded_firmware_info(const _ZYMDB_Embedded_Firmware* rec) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (rec == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  values.put_columns(kWrittenColumns, rec);
  const Filter<256> filter("SoftwareID='%s' AND DeviceIndex=%d", rec->SoftwareID, rec->DeviceIndex);
  const int64_t id = find_db_record(handle, "EmbeddedDeviceFirmware", filter);
  if (id < 0) log_if_cut(filter);
  // A row that could not be looked up counts as missing.
  if (id < 1) return values.insert("EmbeddedDeviceFirmware");
  return values.update("EmbeddedDeviceFirmware", filter_of_change(id, *rec));
}

int zymdb_clear_all_embedded_firmware_info(void) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  int64_t count = 0;
  return zym_db_delete(handle, "EmbeddedDeviceFirmware", nullptr, nullptr, 0, &count);
}
