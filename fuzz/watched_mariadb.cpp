// An inventory of a server's, which counts the rows that are changed, by whomever; what its tables hold is
// compared too.
#include <mysql.h>

#include <cstdlib>

#include "checks.h"
#include "common/client_objects.h"
#include "support/test_database.h"
#include "watched_inventory.h"

namespace zymdb::fuzz {
namespace {

class MariadbInventory : public WatchedInventory {
 public:
  MariadbInventory() {
    setenv("ZYMDB_INVENTORY", database_.address().c_str(), 1);
    require(get_dmdb_handle() != nullptr, "no inventory", database_.address());
    const std::string socket = std::string(std::getenv("ZYMDB_TEST_SERVER")) + "/socket";
    require(mysql_real_connect(keeper_, nullptr, "root", "", database_.name().c_str(), 0, socket.c_str(),
                               0) != nullptr,
            "no server", mysql_error(keeper_));
    ask("SET SESSION sql_mode='PIPES_AS_CONCAT'");
    ask("SET GLOBAL userstat=1");
    populate();
    first_ = sums();
  }
  ~MariadbInventory() override {
    ask("DROP DATABASE " + kept_.name());
    mysql_close(keeper_);
  }
  MariadbInventory(const MariadbInventory&) = delete;
  MariadbInventory& operator=(const MariadbInventory&) = delete;

  // Texts that were stored for an input are no change of its operation's.
  void forget() override {
    before_ = sums();
    newest_entry_ = newest_entry();
    ask("FLUSH TABLE_STATISTICS");
  }

  Changes changes() override {
    Changes found;
    // Also those that an operation changed and changed back.
    for (const auto& row : ask("SELECT TABLE_NAME FROM information_schema.TABLE_STATISTICS WHERE "
                               "TABLE_SCHEMA=DATABASE() AND ROWS_CHANGED>0")) {
      if (tables_.contains(row[0])) found.tables.insert(row[0]);
    }
    for (const auto& [table, sum] : sums()) {
      if (sum != before_.at(table)) found.tables.insert(table);
    }
    found.has_entry = newest_entry() != newest_entry_;
    return found;
  }

  void restore(const std::string& table) override {
    ask("BEGIN");
    ask("DELETE FROM " + table);
    ask("INSERT INTO " + table + " SELECT * FROM " + kept_.name() + "." + table);
    ask("COMMIT");
  }
  void restore() override {
    for (const auto& [table, sum] : sums()) {
      if (sum != first_.at(table)) restore(table);
    }
  }

 private:
  using Rows = std::vector<std::vector<std::string>>;

  void populate() {
    for (const auto& row :
         ask("SELECT TABLE_NAME, COLUMN_NAME, DATA_TYPE FROM information_schema.COLUMNS WHERE "
             "TABLE_SCHEMA=DATABASE() AND TABLE_NAME<>'Journal' AND TABLE_NAME NOT LIKE 'zymdb%'")) {
      Columns& columns = tables_[row[0]];
      ++columns.count;
      if (row[2].ends_with("blob") || row[2].ends_with("binary")) columns.texts.push_back(row[1]);
    }
    for (unsigned n = 1; n <= kRows; ++n) {
      for (const std::string& insertion : insertions(n)) ask(insertion);
    }
    for (const char* const update : kParts) ask(update);
    for (const auto& [table, columns] : tables_) {
      ask("CREATE TABLE " + kept_.name() + "." + table + " AS SELECT * FROM " + table);
      all_.append(all_.empty() ? "" : ",").append(table);
    }
  }

  std::map<std::string, std::string> sums() {
    std::map<std::string, std::string> found;
    for (const auto& row : ask("CHECKSUM TABLE " + all_)) found[row[0].substr(row[0].find('.') + 1)] = row[1];
    require(found.size() == tables_.size(), "a table is gone");
    return found;
  }

  std::string newest_entry() { return ask("SELECT MAX(_id) FROM Journal").at(0).at(0); }

  Rows ask(const std::string& sql) {
    require(mysql_real_query(keeper_, sql.data(), sql.size()) == 0, mysql_error(keeper_), sql);
    Rows found;
    MYSQL_RES* const rows = mysql_store_result(keeper_);
    if (rows == nullptr) return found;
    while (const MYSQL_ROW row = mysql_fetch_row(rows)) {
      auto& cells = found.emplace_back();
      for (unsigned i = 0; i < mysql_num_fields(rows); ++i)
        cells.emplace_back(row[i] != nullptr ? row[i] : "NULL");
    }
    mysql_free_result(rows);
    return found;
  }

  TestDatabase database_, kept_;
  MYSQL* keeper_ = mysql_init(nullptr);
  std::string all_;  // tables
  std::map<std::string, std::string> first_, before_;
  std::string newest_entry_;
};

}  // namespace

std::unique_ptr<WatchedInventory> WatchedInventory::make() {
  return std::make_unique<MariadbInventory>();
}

}  // namespace zymdb::fuzz
