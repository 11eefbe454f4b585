// Connector/C's own interface: what the library is compared with on MariaDB.
#ifndef ZYMDB_BENCH_RAW_MARIADB_H
#define ZYMDB_BENCH_RAW_MARIADB_H

#include <mysql.h>

#include <array>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "function_row.h"

namespace bench {

struct CloseMysql {
  void operator()(MYSQL* mysql) const { mysql_close(mysql); }
};
using MysqlPtr = std::unique_ptr<MYSQL, CloseMysql>;

// As the server's owner, with a database or none.
inline MysqlPtr open_mariadb(const std::string& folder, const char* database) {
  MysqlPtr mysql(mysql_init(nullptr));
  const std::string socket = folder + "/socket";
  if (mysql_real_connect(mysql.get(), nullptr, "root", "", database, 0, socket.c_str(), 0) == nullptr)
    throw std::runtime_error(mysql_error(mysql.get()));
  return mysql;
}

// What the server has counted.
inline uint64_t status_of(MYSQL* mysql, const std::string& name) {
  const std::string sql = "SHOW GLOBAL STATUS LIKE '" + name + "'";
  if (mysql_query(mysql, sql.c_str()) != 0) throw std::runtime_error(mysql_error(mysql));
  MYSQL_RES* const rows = mysql_store_result(mysql);
  const MYSQL_ROW row = rows != nullptr ? mysql_fetch_row(rows) : nullptr;
  const uint64_t value = row != nullptr ? std::stoull(row[1]) : 0;
  mysql_free_result(rows);
  return value;
}

// A statement that is prepared once and kept, its columns numbers but for texts of up to 256 bytes.
class MariadbStatement {
 public:
  // `kinds` has a letter for each column: "n" a number, "t" a text.
  MariadbStatement(MYSQL* mysql, const std::string& sql, const std::string& kinds)
      : statement_(mysql_stmt_init(mysql)),
        numbers_(kinds.size()),
        texts_(kinds.size()),
        binds_(kinds.size()) {
    if (mysql_stmt_prepare(statement_.get(), sql.data(), sql.size()) != 0) fail();
    for (size_t i = 0; i < kinds.size(); ++i) {
      const bool is_text = kinds[i] == 't';
      binds_[i].buffer_type = is_text ? MYSQL_TYPE_STRING : MYSQL_TYPE_LONGLONG;
      binds_[i].buffer = is_text ? static_cast<void*>(texts_[i].data()) : &numbers_[i];
      binds_[i].buffer_length = is_text ? texts_[i].size() : sizeof numbers_[i];
    }
    if (mysql_stmt_bind_result(statement_.get(), binds_.data()) != 0) fail();
  }

  // Calls `read` for each row.
  template <class Read, class... Arguments>
  int each(Read read, Arguments... arguments) {
    std::array<int64_t, sizeof...(Arguments) + 1> values = {static_cast<int64_t>(arguments)..., 0};
    std::array<MYSQL_BIND, sizeof...(Arguments) + 1> places{};
    for (size_t i = 0; i < sizeof...(Arguments); ++i) {
      places[i].buffer_type = MYSQL_TYPE_LONGLONG;
      places[i].buffer = &values[i];
    }
    if (sizeof...(Arguments) != 0 && mysql_stmt_bind_param(statement_.get(), places.data()) != 0) fail();
    if (mysql_stmt_execute(statement_.get()) != 0) fail();
    int rows = 0;
    for (int code = 0; (code = mysql_stmt_fetch(statement_.get())) != MYSQL_NO_DATA; ++rows) {
      if (code != 0) fail();
      column_ = 0;
      read(*this);
    }
    mysql_stmt_free_result(statement_.get());
    return rows;
  }

  Number number() { return {numbers_[column_++]}; }
  template <size_t N>
  void text(char (&field)[N]) {
    put_text(texts_[column_++].data(), field);
  }

 private:
  struct Close {
    void operator()(MYSQL_STMT* statement) const { mysql_stmt_close(statement); }
  };

  [[noreturn]] void fail() { throw std::runtime_error(mysql_stmt_error(statement_.get())); }

  std::unique_ptr<MYSQL_STMT, Close> statement_;
  std::vector<int64_t> numbers_;
  std::vector<std::array<char, 257>> texts_;
  std::vector<MYSQL_BIND> binds_;
  size_t column_ = 0;
};

}  // namespace bench

#endif
