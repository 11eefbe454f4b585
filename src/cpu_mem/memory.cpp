#include "cpu_mem/memory_columns.h"
#include "cpu_mem/row_ids.h"
#include "db/query.h"
#include "zymdb_cpu_mem.h"

using namespace zymdb;

int zymdb_get_memory_list(_ZYMDB_Memory_List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  return list_row_ids(handle, "Memory", list);
}

int zymdb_get_memory_with_filter(_ZYMDB_Memory* mem, const char* filter, const _zym_db_param_t* param) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (mem == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "Memory", AllColumns(), filter, param);
  if (query.status() != ZYM_DB_STATUS_OK) return query.status();
  if (query.step() != ZYM_DB_STATUS_ROW) return ZYM_DB_STATUS_ERROR;

  query.read_columns_by_name(kMemoryColumns, mem);
  return ZYM_DB_STATUS_OK;
}

int zymdb_get_memory_by_slot(_ZYMDB_Memory* mem, unsigned short slot) {
  const _zym_db_param_t param = parameter(slot);
  return zymdb_get_memory_with_filter(mem, "SlotNo=?", &param);
}

int zymdb_get_memory_by_id(_ZYMDB_Memory* mem, unsigned int id) {
  const _zym_db_param_t param = parameter(id);
  return zymdb_get_memory_with_filter(mem, "_id=?", &param);
}

int zymdb_get_mpfa_health_by_slot(int slot, unsigned int* major, unsigned int* minor, unsigned int* repair) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  // Here a missing output outweighs a missing database.
  if (major == nullptr || minor == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  Query query(handle, "Memory", {"MajorHealth", "MinorHealth", "RepairStatus"},
              Filter<32>("SlotNo=%d", slot));
  if (query.status() != ZYM_DB_STATUS_OK) return query.status();
  if (const int status = query.step(); status != ZYM_DB_STATUS_ROW) return status;

  *major = query.read_or(0, uint32_t{0}) & 0xFF;
  *minor = query.read_or(1, uint32_t{0}) & 0xFF;
  if (repair != nullptr) *repair = query.read_or(2, uint32_t{0});
  return ZYM_DB_STATUS_OK;
}
