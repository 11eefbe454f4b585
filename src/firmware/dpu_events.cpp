#include <cstring>

#include "controller/ruvo_log.h"
#include "db/query.h"
#include "db/rows.h"
#include "db/values.h"
#include "zymdb_firmware.h"

using namespace zymdb;

namespace {

using Event = _ZYMDB_DPU_Event;

constexpr auto kEventColumns = columns_of<Event>({
    ZYMDB_REQUIRED_COLUMN("_id", Event, Id),
    ZYMDB_REQUIRED(Event, GenID),
    ZYMDB_REQUIRED(Event, Message),
    ZYMDB_REQUIRED(Event, Timestamp),
});

constexpr uint32_t kMostEvents = 256;

// What the log of a slot holds.
struct Extent {
  uint32_t count;
  uint32_t first_id;
  uint32_t last_id;
};

int measure(_zym_db_handle_t* handle, int slot, Extent& extent) {
  Query query(handle, "DPUEvents", {"COUNT(*)", "MIN(_id)", "MAX(_id)"}, Filter<32>("Slot=%d", slot));
  if (query.status() != ZYM_DB_STATUS_OK) return query.status();
  if (const int status = query.step(); status != ZYM_DB_STATUS_ROW) return status;
  if (const int status = query.read(0, extent.count); status != ZYM_DB_STATUS_OK) return status;
  if (const int status = query.read(1, extent.first_id); status != ZYM_DB_STATUS_OK) return status;
  return query.read(2, extent.last_id);
}

int remove_event(_zym_db_handle_t* handle, uint32_t id) {
  const Filter<32> filter("_id=%d", static_cast<int>(id));
  int64_t count = 0;
  const int status = zym_db_delete(handle, "DPUEvents", filter, nullptr, 0, &count);
  if (status != ZYM_DB_STATUS_OK) ruvo_log::logErr("zym_db_delete(%s)", filter.text());
  return status;
}

// A text that fills its field has no terminator of its own.
template <size_t N>
struct Terminated {
  explicit Terminated(const char (&field)[N]) { std::memcpy(text, field, N); }
  char text[N + 1] = {};
};

// A partly readable event is none: its place in the list stays as it is.
bool read_event(Query& query, Event& event) {
  Event read{};
  if (!query.read_columns(kEventColumns, &read)) return false;
  event = read;
  return true;
}

}  // namespace

int dpu_insert_log(int slot, const _ZYMDB_DPU_Event* event, uint32_t* nextId) {
  if (slot < 1 || event == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  Extent log{};
  if (const int status = measure(handle, slot, log); status != ZYM_DB_STATUS_OK) return status;
  if (log.count >= kMostEvents)
    if (const int status = remove_event(handle, log.first_id); status != ZYM_DB_STATUS_OK) return status;

  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;
  values.put("Slot", static_cast<uint32_t>(slot));
  values.put("GenID", Terminated(event->GenID).text);
  values.put("Message", Terminated(event->Message).text);
  values.put("Timestamp", event->Timestamp);
  const int status = values.insert("DPUEvents");
  if (status == ZYM_DB_STATUS_OK && nextId != nullptr) *nextId = log.last_id + 1;
  return status;
}

int dpu_get_log_by_slot(int slot, _ZYMDB_DPU_Event_List* out) {
  if (slot < 1 || out == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  Query query(handle, "DPUEvents", kEventColumns, Filter<16>("Slot=%d", slot));
  if (!query.has_result()) return fail_list(out, query.status());
  const unsigned rows = query.row_count();
  CallerArray<Event> events = allocate_zeroed_array<Event>(rows);
  if (events == nullptr) return fail_list(out, ZYM_DB_STATUS_NO_MEMORY);
  out->Events = events.release();

  // The count is that of the rows: events that could not be read leave zeroed entries at the end.
  uint32_t filled = 0;
  const int status =
      read_rows(query, out->Events, rows, filled, [&](Event& event) { return read_event(query, event); });
  out->Count = rows;
  return ended_well(status) ? ZYM_DB_STATUS_OK : status;
}

int dpu_clear_logs_by_slot(int slot) {
  if (slot < 1) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  int64_t count = 0;
  return zym_db_delete(handle, "DPUEvents", Filter<16>("Slot=%d", slot), nullptr, 0, &count);
}
