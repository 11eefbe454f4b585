#include "support/test_database.h"

#include <mysql.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace {

const char* server() {
  return std::getenv("ZYMDB_TEST_SERVER");
}

struct Close {
  void operator()(MYSQL* mysql) const { mysql_close(mysql); }
};
struct Free {
  void operator()(MYSQL_RES* rows) const { mysql_free_result(rows); }
};

std::string run_as_owner(const std::string& database, const std::string& sql) {
  const std::unique_ptr<MYSQL, Close> mysql(mysql_init(nullptr));
  const std::string socket = std::string(server()) + "/socket";
  const bool is_done =
      mysql_real_connect(mysql.get(), nullptr, "root", "", database.empty() ? nullptr : database.c_str(), 0,
                         socket.c_str(), 0) != nullptr &&
      mysql_real_query(mysql.get(), sql.data(), sql.size()) == 0;
  if (!is_done) throw std::runtime_error(sql + ": " + mysql_error(mysql.get()));
  const std::unique_ptr<MYSQL_RES, Free> rows(mysql_store_result(mysql.get()));
  std::string text;
  if (rows == nullptr) return text;
  while (MYSQL_ROW row = mysql_fetch_row(rows.get())) {
    const unsigned long* const lengths = mysql_fetch_lengths(rows.get());
    for (unsigned i = 0; i < mysql_num_fields(rows.get()); ++i)
      text.append(i ? "|" : "").append(row[i] ? std::string(row[i], lengths[i]) : "NULL");
    text += "\n";
  }
  return text;
}

std::string new_name() {
  static std::atomic<int> count{0};
  return "test_" + std::to_string(getpid()) + "_" + std::to_string(++count);
}

}  // namespace

bool TestDatabase::is_wanted() {
  return server() != nullptr;
}

TestDatabase::TestDatabase() : name_(new_name()) {
  setenv("ZYMDB_ENGINES", ZYMDB_TEST_ENGINES, 1);
  run_as_owner("", "CREATE OR REPLACE DATABASE " + name_);
}

TestDatabase::~TestDatabase() {
  run_as_owner("", "DROP DATABASE IF EXISTS " + name_);
}

std::string TestDatabase::address_of(const std::string& database) {
  const std::string folder = server();
  return "mariadb://zymdb@localhost/" + database + "?socket=" + folder + "/socket&password-file=" + folder +
         "/password";
}

std::string TestDatabase::run(const std::string& sql) const {
  return run_as_owner(name_, sql);
}
