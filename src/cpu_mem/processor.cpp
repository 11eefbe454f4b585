#include "controller/platform_tables.h"
#include "cpu_mem/row_ids.h"
#include "db/query.h"
#include "zymdb_cpu_mem.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_Processor;

constexpr auto kProcessorColumns = columns_of<Record>({
    ZYMDB_FIELD(Record, _id),
    ZYMDB_FIELD(Record, ProcId),
    ZYMDB_FIELD(Record, ProcType),
    ZYMDB_FIELD(Record, Family),
    ZYMDB_FIELD(Record, Socket),
    ZYMDB_FIELD(Record, Manufacturer),
    ZYMDB_FIELD(Record, Version),
    ZYMDB_FIELD(Record, Voltage),
    ZYMDB_FIELD(Record, ExtClock),
    ZYMDB_FIELD(Record, MaxSpeed),
    ZYMDB_FIELD(Record, CurSpeed),
    ZYMDB_FIELD(Record, Status),
    ZYMDB_FIELD(Record, Upgrade),
    ZYMDB_FIELD(Record, SerialNo),
    ZYMDB_FIELD(Record, AssetTag),
    ZYMDB_FIELD(Record, PartNo),
    ZYMDB_FIELD(Record, CoreCount),
    ZYMDB_FIELD(Record, CoreEnabled),
    ZYMDB_FIELD(Record, ThreadCount),
    ZYMDB_FIELD(Record, Characteristics),
    ZYMDB_FIELD(Record, L1CacheMaxSize),
    ZYMDB_FIELD(Record, L1CacheInstalled),
    ZYMDB_FIELD(Record, L1CacheType),
    ZYMDB_FIELD(Record, L1CacheConfig),
    ZYMDB_FIELD(Record, L2CacheMaxSize),
    ZYMDB_FIELD(Record, L2CacheInstalled),
    ZYMDB_FIELD(Record, L2CacheType),
    ZYMDB_FIELD(Record, L2CacheConfig),
    ZYMDB_FIELD(Record, L3CacheMaxSize),
    ZYMDB_FIELD(Record, L3CacheInstalled),
    ZYMDB_FIELD(Record, L3CacheType),
    ZYMDB_FIELD(Record, L3CacheConfig),
    ZYMDB_FIELD(Record, NodeIndex),
});

constexpr unsigned kAmdPlatform = 1u << 15;

}  // namespace

int zymdb_get_processor_list(_ZYMDB_Processor_List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  return list_row_ids(handle, "Processor", list);
}

int zymdb_get_processor(_ZYMDB_Processor* proc) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (proc == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  const _zym_db_param_t id = parameter(proc->_id);
  Query query(handle, "Processor", AllColumns(), "_id=?", &id);
  if (query.status() != ZYM_DB_STATUS_OK) return query.status();
  if (query.step() != ZYM_DB_STATUS_ROW) return ZYM_DB_STATUS_ERROR;

  query.read_columns_by_name(kProcessorColumns, proc);
  return ZYM_DB_STATUS_OK;
}

int zymdb_is_amd(void) {
  ptables_t tables{};
  ptables_platform_t platform{};
  // Tables that cannot be read leave the record zero: not AMD.
  ptables_from_ram(&tables);
  ptables_lookup_platform_direct(&tables, &platform);
  ptables_free(&tables);
  return (platform.word[2] & kAmdPlatform) != 0 ? 1 : 0;
}
