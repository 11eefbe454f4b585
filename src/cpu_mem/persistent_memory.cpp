#include <cstdio>

#include "cpu_mem/memory_columns.h"
#include "cpu_mem/row_ids.h"
#include "db/code_text.h"
#include "db/query.h"
#include "db/values.h"
#include "zymdb_cpu_mem.h"

using namespace zymdb;

namespace {

constexpr uint32_t kNonVolatile = 0x1000;

constexpr int kSecurityMode = 2;
constexpr int kSmartMode = 8;
constexpr auto kSecurityColumns =
    written(in_order(kMemoryColumns, {"SecurityState", "InfoMask"}), Puts::kWide);
constexpr auto kSmartColumns =
    written(in_order(kMemoryColumns, {"RemainingLife", "HealthStatus", "AlarmTrips", "LDShutdownCount",
                                      "AITDRAMStatus", "HealthStatusReason", "LLShutdownStatus", "InfoMask"}),
            Puts::kWide);

WrittenColumns<_ZYMDB_Memory> columns_for(int mode) {
  if (mode == kSecurityMode) return kSecurityColumns;
  if (mode == kSmartMode) return kSmartColumns;
  return {};
}

constexpr CodeText kHealthStates[] = {{0, "Normal"}, {1, "Noncritical"}, {2, "Critical"}, {4, "Fatal"}};

// By the state's bits, the first that decides.
const char* security_text(unsigned int state) {
  if ((state & 0x20) != 0) return "Not Supported";
  if ((state & 0x08) != 0) return "Frozen";
  if ((state & 0x04) != 0) return "Locked";
  return (state & 0x02) == 0 ? "Disabled" : "Enabled";
}

}  // namespace

int zymdb_get_AEP_memory_list(_ZYMDB_Memory_List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "Memory", {"_id", "TypeDetail"}, Filter<128>("Manufacturer='%s'", "Intel"));
  if (query.status() != ZYM_DB_STATUS_OK) return fail_list(list, query.status());
  const unsigned rows = query.row_count();
  CallerArray<uint32_t> ids = allocate_array<uint32_t>(rows);
  list->count = 0;
  list->ids = ids.get();
  if (ids == nullptr) return ZYM_DB_STATUS_NO_MEMORY;
  ids.release();

  // As many steps as rows, none of them examined: what cannot be read is the previous row's.
  uint32_t id = 0;
  uint32_t type_detail = 0;
  for (unsigned row = 0; row < rows && query.has_result(); ++row) {
    query.step();
    query.read(0, id);
    query.read(1, type_detail);
    if ((type_detail & kNonVolatile) != 0) list->ids[list->count++] = id;
  }
  return ZYM_DB_STATUS_OK;
}

int zymdb_update_dcpmm_smart_info(const _ZYMDB_Memory* mem, int mode) {
  if (mem == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  values.clear();
  values.put_columns(columns_for(mode), mem);
  return values.update("Memory", Filter<32>("_id=%u", mem->_id));
}

int bps_format_hstate_str(unsigned int code, char* text, unsigned int size) {
  if (text == nullptr || size == 0) return 0;
  const char* const state = text_of(kHealthStates, code, nullptr);
  return state != nullptr ? std::snprintf(text, size, "%s", state)
                          : std::snprintf(text, size, "others(0x%x)", code);
}

void bps_format_security_str(unsigned int state, char* text, unsigned int size) {
  if (text == nullptr || size == 0) return;
  std::snprintf(text, size, "%s", security_text(state));
}
