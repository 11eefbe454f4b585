// Whatever texts an operation is given: it answers a known status, its texts end within their fields, and it
// changes rows of its own table at most.
//
// An input's first line names the operation, the lines after it are its texts.
#include <sqlite3.h>
#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "checks.h"
#include "controller/database_client.h"
#include "operations.h"
#include "support/system_log.h"
#include "support/temporary_folder.h"

namespace {

using namespace zymdb::fuzz;
using Kind = Operation::Kind;

// What the connections of this process change, as SQLite tells it.
class Changes {
 public:
  static Changes& instance() {
    static Changes changes;
    return changes;
  }

  void watch_from_now_on() { sqlite3_auto_extension(reinterpret_cast<void (*)()>(attach)); }

  void forget() {
    tables_.clear();
    has_entry_ = false;
    told_ = 0;
    counted_ = sqlite3_total_changes(inventory_);
  }

  // The inventory's tables with a changed row.
  const std::set<std::string>& tables() const { return tables_; }

  // The client's own account of a change.
  bool has_entry() const { return has_entry_; }

  // All rows of a table can be deleted without a word on each; only their count tells.
  bool untold() const { return sqlite3_total_changes(inventory_) - counted_ != told_; }

 private:
  static int attach(sqlite3* database, const char**, const void*) {
    if (!std::string_view(sqlite3_db_filename(database, "main")).ends_with("inventory.db")) return SQLITE_OK;
    sqlite3_update_hook(database, note, nullptr);
    instance().inventory_ = database;
    return SQLITE_OK;
  }

  static void note(void*, int, const char*, const char* table, sqlite3_int64) {
    if (table == std::string_view("Journal"))
      instance().has_entry_ = true;
    else
      instance().tables_.insert(table);
    ++instance().told_;
  }

  sqlite3* inventory_ = nullptr;
  std::set<std::string> tables_;
  bool has_entry_ = false;
  int told_ = 0;
  int counted_ = 0;
};

// An inventory in a folder of its own, with a few rows in every table of the machine's.
class Inventory {
 public:
  static constexpr int kRows = 3;

  Inventory() {
    const std::string path = folder_.file("inventory.db");
    setenv("ZYMDB_INVENTORY", path.c_str(), 1);
    require(get_dmdb_handle() != nullptr, "no inventory", path);
    sqlite3_open(path.c_str(), &keeper_);
    populate();
    zym_db_close(get_dmdb_handle());
    Changes::instance().watch_from_now_on();
    require(get_dmdb_handle() != nullptr, "no inventory", path);
  }

  // Gives a table its first rows back.
  void restore(const std::string& table) const {
    execute(("BEGIN; DELETE FROM main." + table + "; INSERT INTO main." + table + " SELECT * FROM kept." +
             table + "; COMMIT")
                .c_str());
  }
  void restore() const {
    for (const auto& [table, columns] : text_columns_) restore(table);
  }

  // Gives the texts of every row of a table.
  void store(const char* table, const Texts& texts) const {
    zym_db_content_values_t* const values = zym_db_get_content_values(get_dmdb_handle());
    size_t place = 0;
    for (const std::string& column : text_columns_.at(table))
      zym_db_content_put_text(values, column.c_str(),
                              texts[place++ % std::max<size_t>(texts.size(), 1)].c_str());
    require(zym_db_update(get_dmdb_handle(), table, values, nullptr, nullptr, 0, nullptr) == 0,
            "cannot store");
    zym_db_free_content_values(values);
  }

  // Every table but the operation's own has all its rows.
  template <class IsOwn>
  void require_rows(IsOwn is_own) const {
    for (const auto& [table, columns] : text_columns_) {
      if (is_own(table)) continue;
      zym_db_result_t* rows = nullptr;
      require(zym_db_query(get_dmdb_handle(), table.c_str(), nullptr, 0, nullptr, nullptr, 0, 0, &rows) == 0,
              "cannot read", table);
      require(zym_db_result_row_count(rows) == kRows, "has lost its rows", table);
      zym_db_free_result(rows);
    }
  }

 private:
  // In the n-th row every number is n and every text "n", so that all keys lead to a row of every table.
  void populate() {
    const auto note = [](void* self, int, char** cells, char**) {
      auto& columns = static_cast<Inventory*>(self)->text_columns_[cells[0]];
      if (cells[2] == std::string_view("TEXT")) columns.emplace_back(cells[1]);
      return 0;
    };
    execute(
        "SELECT t.name, c.name, c.type FROM sqlite_schema t, pragma_table_info(t.name) c "
        "WHERE t.type='table' AND t.name NOT LIKE 'sqlite%' AND t.name<>'Journal'",
        note);
    const auto run = [](void* self, int, char** cells, char**) {
      static_cast<Inventory*>(self)->execute(cells[0]);
      return 0;
    };
    execute(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<3) "
        "SELECT 'INSERT INTO \"' || t.name || '\" VALUES (' || group_concat(i) || ')' "
        "FROM n, sqlite_schema t, pragma_table_info(t.name) "
        "WHERE t.type='table' AND t.name NOT LIKE 'sqlite%' AND t.name<>'Journal' GROUP BY t.name, i",
        run);
    // NVIDIA's cards, a Marvell controller, a DPU in slot 3, drives in bays and of the kinds that lists ask
    // for.
    execute(
        "UPDATE Firmwares SET Manufacture='NVIDIA';"
        "UPDATE VPDs SET Manufacture='NVIDIA';"
        "UPDATE PCIs SET Location=2, VendorId=6987, DeviceId=37424, SubVendorId=65535 WHERE _id=2;"
        "UPDATE PCIs SET Location=1, VendorId=5555, DeviceId=41686, HardwareId=768 WHERE _id=3;"
        "UPDATE Firmwares SET HardwareId=768 WHERE _id=3;"
        "UPDATE PldmDeviceFirmware SET Location=1, DeviceId=41686 WHERE _id=3;"
        "UPDATE AimDisks SET Presence=1, Location='Bay ' || _id, LocationId=_id+1, DriveTypeId=_id+2;"
        "UPDATE NVMeDrives SET CtrlType=0 WHERE _id=1;");
    execute("ATTACH ':memory:' AS kept");
    for (const auto& [table, columns] : text_columns_)
      execute(("CREATE TABLE kept." + table + " AS SELECT * FROM main." + table).c_str());
  }

  void execute(const char* sql, int (*row)(void*, int, char**, char**) = nullptr) const {
    require(sqlite3_exec(keeper_, sql, row, const_cast<Inventory*>(this), nullptr) == SQLITE_OK,
            "cannot prepare the inventory", sqlite3_errmsg(keeper_));
  }

  TemporaryFolder folder_;
  sqlite3* keeper_ = nullptr;  // not watched
  std::map<std::string, std::vector<std::string>> text_columns_;
};

// What the operation did to the inventory, against what it may do.
void require_contained(const Inventory& inventory, const Operation& operation, const Texts& texts) {
  const auto is_own = [&](const std::string& table) {
    if (operation.table == nullptr) return strcasecmp(texts[0].c_str(), table.c_str()) == 0;
    return (" " + std::string(operation.table) + " ").find(" " + table + " ") != std::string::npos;
  };
  const Changes& changes = Changes::instance();
  const bool writes = operation.kind == Kind::kWrites;
  for (const std::string& table : changes.tables())
    require(writes && is_own(table), "changes a row that is not its own", table);
  require(!changes.has_entry() || changes.untold() || !changes.tables().empty(), "accounts for no change");
  if (!changes.untold()) return;
  require(writes, "empties a table");
  inventory.require_rows(is_own);
}

// Whatever was done is undone afterwards: every input finds the same inventory.
void run(const Inventory& inventory, const Operation& operation, Texts texts) {
  Changes& changes = Changes::instance();
  if (operation.kind == Kind::kShows) inventory.store(operation.table, texts);
  changes.forget();
  operation.run(texts);
  require_contained(inventory, operation, texts);
  if (operation.kind == Kind::kShows) inventory.restore(operation.table);
  for (const std::string& table : changes.tables()) inventory.restore(table);
  if (changes.untold()) inventory.restore();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Inventory inventory;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string_view name = input.substr(0, input.find('\n'));
  const auto all = operations();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; });
  if (found == all.end()) return 0;
  system_log().clear();
  const bool has_texts = name.size() < input.size();
  run(inventory, *found, has_texts ? Texts(input.substr(name.size() + 1), found->texts) : Texts({}, 0));
  return 0;
}
