// The embedded inventory: SQLite tells of each row.
#include <sqlite3.h>

#include <cstdlib>
#include <string_view>

#include "checks.h"
#include "common/client_objects.h"
#include "support/temporary_folder.h"
#include "watched_inventory.h"

namespace zymdb::fuzz {
namespace {

// What the connections of this process change.
class Hooks {
 public:
  static Hooks& instance() {
    static Hooks hooks;
    return hooks;
  }

  void watch_from_now_on() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(attach)); }

  void forget() {
    told_ = {};
    rows_ = 0;
    counted_ = sqlite3_total_changes(inventory_);
  }
  const WatchedInventory::Changes& told() const { return told_; }

  // All rows of a table can be deleted without a word on each; only their count tells.
  bool untold() const { return sqlite3_total_changes(inventory_) - counted_ != rows_; }

 private:
  static int attach(sqlite3* database, const char**, const void*) {
    if (!std::string_view(sqlite3_db_filename(database, "main")).ends_with("inventory.db")) return SQLITE_OK;
    sqlite3_update_hook(database, note, nullptr);
    instance().inventory_ = database;
    return SQLITE_OK;
  }

  static void note(void*, int, const char*, const char* table, sqlite3_int64) {
    if (table == std::string_view("Journal"))
      instance().told_.has_entry = true;
    else
      instance().told_.tables.insert(table);
    ++instance().rows_;
  }

  sqlite3* inventory_ = nullptr;
  WatchedInventory::Changes told_;
  int rows_ = 0;
  int counted_ = 0;
};

// In a folder of its own.
class SqliteInventory : public WatchedInventory {
 public:
  SqliteInventory() {
    const std::string path = folder_.file("inventory.db");
    setenv("ZYMDB_INVENTORY", path.c_str(), 1);
    require(get_dmdb_handle() != nullptr, "no inventory", path);
    sqlite3_open(path.c_str(), &keeper_);
    populate();
    zym_db_close(get_dmdb_handle());
    Hooks::instance().watch_from_now_on();
    require(get_dmdb_handle() != nullptr, "no inventory", path);
  }

  void forget() override { Hooks::instance().forget(); }

  Changes changes() override {
    Changes found = Hooks::instance().told();
    if (!Hooks::instance().untold()) return found;
    for (const auto& [table, columns] : tables_) {
      if (row_count(table) != kRows) found.tables.insert(table);
    }
    return found;
  }

  void restore(const std::string& table) override {
    execute("BEGIN; DELETE FROM main." + table + "; INSERT INTO main." + table + " SELECT * FROM kept." +
            table + "; COMMIT");
  }
  void restore() override {
    const Hooks& hooks = Hooks::instance();
    if (!hooks.untold()) {
      for (const std::string& table : hooks.told().tables) restore(table);
      return;
    }
    for (const auto& [table, columns] : tables_) restore(table);
  }

 private:
  void populate() {
    const auto note = [](void* self, int, char** cells, char**) {
      Columns& columns = static_cast<SqliteInventory*>(self)->tables_[cells[0]];
      ++columns.count;
      if (cells[2] == std::string_view("TEXT")) columns.texts.emplace_back(cells[1]);
      return 0;
    };
    execute(
        "SELECT t.name, c.name, c.type FROM sqlite_schema t, pragma_table_info(t.name) c "
        "WHERE t.type='table' AND t.name NOT LIKE 'sqlite%' AND t.name<>'Journal'",
        note);
    for (unsigned n = 1; n <= kRows; ++n) {
      for (const std::string& insertion : insertions(n)) execute(insertion);
    }
    for (const char* const update : kParts) execute(update);
    execute("ATTACH ':memory:' AS kept");
    for (const auto& [table, columns] : tables_)
      execute("CREATE TABLE kept." + table + " AS SELECT * FROM main." + table);
  }

  static uint32_t row_count(const std::string& table) {
    zym_db_result_t* rows = nullptr;
    const int status =
        zym_db_query(get_dmdb_handle(), table.c_str(), nullptr, 0, nullptr, nullptr, 0, 0, &rows);
    const ResultPtr owner(rows);
    require(status == 0, "cannot read", table);
    return zym_db_result_row_count(rows);
  }

  void execute(const std::string& sql, int (*row)(void*, int, char**, char**) = nullptr) {
    require(sqlite3_exec(keeper_, sql.c_str(), row, this, nullptr) == SQLITE_OK,
            "cannot prepare the inventory", sqlite3_errmsg(keeper_));
  }

  TemporaryFolder folder_;
  sqlite3* keeper_ = nullptr;  // not watched
};

}  // namespace

std::unique_ptr<WatchedInventory> WatchedInventory::make() {
  return std::make_unique<SqliteInventory>();
}

}  // namespace zymdb::fuzz
