#include "raw_sqlite.h"

#include <stdexcept>

namespace bench {

Connection open_raw(const std::string& path) {
  sqlite3* connection = nullptr;
  if (sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) !=
      SQLITE_OK)
    throw std::runtime_error("cannot open " + path);
  execute(connection, "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL");
  return {connection, &sqlite3_close};
}

Prepared prepare(sqlite3* connection, const char* sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v3(connection, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK)
    throw std::runtime_error(sqlite3_errmsg(connection));
  return {statement, &sqlite3_finalize};
}

void execute(sqlite3* connection, const char* sql) {
  if (sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
    throw std::runtime_error(sqlite3_errmsg(connection));
}

}  // namespace bench
