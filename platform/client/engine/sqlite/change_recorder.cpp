// SQLite declares its preupdate hook where this is defined.
#define SQLITE_ENABLE_PREUPDATE_HOOK
#include "client/engine/sqlite/change_recorder.h"

#include <new>

#include "client/engine/sqlite/json_value.h"

namespace zymdb::client::sqlite {
namespace {

// Values of the row that is about to change. They are the hook's.
sqlite3_value* old_value(sqlite3* database, int column) {
  sqlite3_value* value = nullptr;
  if (sqlite3_preupdate_old(database, column, &value) != SQLITE_OK) throw std::bad_alloc();
  return value;
}

sqlite3_value* new_value(sqlite3* database, int column) {
  sqlite3_value* value = nullptr;
  if (sqlite3_preupdate_new(database, column, &value) != SQLITE_OK) throw std::bad_alloc();
  return value;
}

}  // namespace

ChangeRecorder::~ChangeRecorder() {
  if (database_ != nullptr) sqlite3_preupdate_hook(database_, nullptr, nullptr);
}

void ChangeRecorder::attach(sqlite3* database, const Catalog& catalog) {
  database_ = database;
  catalog_ = &catalog;
  sqlite3_preupdate_hook(database, hear, this);
}

void ChangeRecorder::forget() {
  account_.clear();
  changed_ = false;
  failed_ = false;
}

void ChangeRecorder::hear(void* self, sqlite3*, int action, const char*, const char* table,
                          sqlite3_int64 old_id, sqlite3_int64 new_id) {
  auto& recorder = *static_cast<ChangeRecorder*>(self);
  try {
    recorder.record(action, table, old_id, new_id);
  } catch (...) {
    recorder.failed_ = true;
  }
}

void ChangeRecorder::record(int action, std::string_view name, int64_t old_id, int64_t new_id) {
  const Table* const table = catalog_->table(name);
  if (table == nullptr || name == kJournalTable) return;
  if (volatile_.has_all_of(table->name())) {
    changed_ = true;
    return;
  }
  TableChanges& changes = account_.of(table->name());
  if (action == SQLITE_UPDATE && old_id == new_id) return record_update(*table, changes, old_id);
  if (action != SQLITE_INSERT) record_delete(*table, changes, old_id);
  if (action == SQLITE_DELETE) return;
  changed_ = true;
  changes.add(new_id);
}

void ChangeRecorder::record_update(const Table& table, TableChanges& changes, int64_t id) {
  const bool is_new = changes.has_added(id);
  int column = -1;
  for (const Column& each : table.columns()) {
    sqlite3_value* const before = old_value(database_, ++column);
    if (same_value(before, new_value(database_, column))) continue;
    changed_ = true;
    if (is_new || volatile_.has(table.name(), each.name)) continue;
    FormerCells& cells = changes.former(id);
    if (!cells.contains(each.name)) cells.emplace(each.name, json_of(before));
  }
}

void ChangeRecorder::record_delete(const Table& table, TableChanges& changes, int64_t id) {
  changed_ = true;
  FormerCells* const cells = changes.remove(id);
  if (cells == nullptr) return;
  int column = -1;
  for (const Column& each : table.columns()) {
    sqlite3_value* const before = old_value(database_, ++column);
    if (!cells->contains(each.name)) cells->emplace(each.name, json_of(before));
  }
}

}  // namespace zymdb::client::sqlite
