#include "controller/ruvo_log.h"
#include "db/query.h"
#include "db/rows.h"
#include "db/values.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

using Entry = _ZYMDB_NCSIPackageID;

constexpr auto kEntryColumns = columns_of<Entry>({
    ZYMDB_REQUIRED(Entry, SlotNo),
    ZYMDB_REQUIRED(Entry, Location),
    ZYMDB_REQUIRED(Entry, PackageID1),
    ZYMDB_REQUIRED(Entry, PackageID2),
});

}  // namespace

int zymdb_get_ncsi_id_by_slotNo(int location, int slotNo, uint8_t* id1, uint8_t* id2) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  Query query(handle, "NCSIPackageID", {"PackageID1", "PackageID2"},
              Filter<128>("Location=%d AND SlotNo=%d", location, slotNo));
  // Callers tell only 0 from the rest: whatever went wrong reads as a missing database.
  if (query.step() != ZYM_DB_STATUS_ROW) return ZYM_DB_STATUS_NO_DB;
  query.read(0, *id1);
  query.read(1, *id2);
  return ZYM_DB_STATUS_OK;
}

int zymdb_set_ncsi_id_by_slotNo(int location, int slotNo, uint8_t type, uint8_t id1, uint8_t id2) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) {
    ruvo_log::logErr("zymdb_set_ncsi_id_by_slotNo, ZYM_DB_STATUS_NO_MEMORY");
    return ZYM_DB_STATUS_NO_MEMORY;
  }

  values.clear();
  values.put("PackageID1", id1);
  values.put("PackageID2", id2);
  uint8_t present1 = 0;
  uint8_t present2 = 0;
  if (zymdb_get_ncsi_id_by_slotNo(location, slotNo, &present1, &present2) == ZYM_DB_STATUS_OK) {
    // The type keeps its first value.
    const Filter<128> filter("SlotNo=%d AND Location=%d", slotNo, location);
    const int status = values.update("NCSIPackageID", filter);
    if (status != ZYM_DB_STATUS_OK)
      ruvo_log::logErr(
          "Update pci location [%d], slot [%d]  id1 [%d], id2 [%d] fail, sql where segment:[%s], return [%d]",
          location, slotNo, id1, id2, filter.text(), status);
    return status;
  }

  values.put("Location", static_cast<uint8_t>(location));
  values.put("SlotNo", static_cast<uint16_t>(slotNo));
  values.put("Type", type);
  const int status = values.insert("NCSIPackageID");
  if (status != ZYM_DB_STATUS_OK)
    ruvo_log::logErr("insert pci location [%d], slot [%d]  id1 [%d], id2 [%d] fail, return [%d]", location,
                     slotNo, id1, id2, status);
  return status;
}

int zymdb_get_ncsi_id_list(_ZYMDB_NCSIPackageID_List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "NCSIPackageID", kEntryColumns, nullptr);
  if (query.status() != ZYM_DB_STATUS_OK) return fail_list(list, query.status());
  const unsigned room = query.row_count();
  *list = {};
  CallerArray<Entry> entries = allocate_zeroed_array<Entry>(room);
  if (entries == nullptr) return ZYM_DB_STATUS_NO_MEMORY;

  // Eight bits wide, as the list's count: beyond 255 entries both start again at 0.
  uint8_t filled = 0;
  const int status = read_rows(query, entries.get(), room, filled,
                               [&](Entry& entry) { return query.read_columns(kEntryColumns, &entry); });
  if (!ended_well(status) && status != ZYM_DB_STATUS_OK) return status;
  list->count = filled;
  list->entries = entries.release();
  return ZYM_DB_STATUS_OK;
}
