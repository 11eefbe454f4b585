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

// "[[1,4],[9,9]]"
std::string ranges_of(const std::set<int64_t>& ids) {
  std::string json = "[";
  for (auto at = ids.begin(); at != ids.end();) {
    const int64_t first = *at;
    int64_t last = first;
    for (++at; at != ids.end() && *at == last + 1; ++at) last = *at;
    if (json.size() > 1) json += ",";
    json += "[" + std::to_string(first) + "," + std::to_string(last) + "]";
  }
  return json + "]";
}

// A JSON object in the making.
class Object {
 public:
  void add(std::string_view name, std::string_view value) {
    json_.append(json_.empty() ? "{" : ",").append(json_text(name)).append(":").append(value);
  }
  bool is_empty() const { return json_.empty(); }
  std::string text() const { return json_ + "}"; }

 private:
  std::string json_;
};

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
  tables_.clear();
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
  TableChanges& changes = tables_[table->name()];
  if (action == SQLITE_UPDATE && old_id == new_id) return record_update(*table, changes, old_id);
  if (action != SQLITE_INSERT) record_delete(*table, changes, old_id);
  if (action != SQLITE_DELETE) record_insert(changes, new_id);
}

void ChangeRecorder::record_update(const Table& table, TableChanges& changes, int64_t id) {
  const bool is_new = changes.added.contains(id);
  int column = -1;
  for (const Column& each : table.columns()) {
    sqlite3_value* const before = old_value(database_, ++column);
    if (same_value(before, new_value(database_, column))) continue;
    changed_ = true;
    if (is_new || volatile_.has(table.name(), each.name)) continue;
    Cells& cells = changes.before[id];
    if (!cells.contains(each.name)) cells.emplace(each.name, json_of(before));
  }
}

// A row that comes back after its deletion has its former values recorded already.
void ChangeRecorder::record_insert(TableChanges& changes, int64_t id) {
  changed_ = true;
  if (!changes.before.contains(id)) changes.added.insert(id);
}

void ChangeRecorder::record_delete(const Table& table, TableChanges& changes, int64_t id) {
  changed_ = true;
  if (changes.added.erase(id) != 0) return;
  Cells& cells = changes.before[id];
  int column = -1;
  for (const Column& each : table.columns()) {
    sqlite3_value* const before = old_value(database_, ++column);
    if (!cells.contains(each.name)) cells.emplace(each.name, json_of(before));
  }
}

std::string ChangeRecorder::account() const {
  Object account;
  for (const auto& [name, changes] : tables_) {
    Object table;
    if (!changes.added.empty()) table.add("added", ranges_of(changes.added));
    if (!changes.before.empty()) table.add("before", former_rows(changes));
    if (!table.is_empty()) account.add(name, table.text());
  }
  return account.is_empty() ? std::string() : account.text();
}

std::string ChangeRecorder::former_rows(const TableChanges& changes) {
  Object rows;
  for (const auto& [id, cells] : changes.before) {
    Object row;
    for (const auto& [column, value] : cells) row.add(column, value);
    rows.add(std::to_string(id), row.text());
  }
  return rows.text();
}

}  // namespace zymdb::client::sqlite
