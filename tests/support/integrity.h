// Whether a database file is whole, asked of the engine itself.
#ifndef ZYMDB_TESTS_SUPPORT_INTEGRITY_H
#define ZYMDB_TESTS_SUPPORT_INTEGRITY_H

#include <sqlite3.h>

#include <string>

// "ok", or what is wrong with it. The file's log is taken into account, as every opening does.
inline std::string integrity_of(const std::string& path) {
  sqlite3* database = nullptr;
  std::string text;
  const auto add = [](void* out, int, char** values, char**) {
    *static_cast<std::string*>(out) += values[0];
    return 0;
  };
  int code = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
  if (code == SQLITE_OK) code = sqlite3_busy_timeout(database, 5000);
  if (code == SQLITE_OK) code = sqlite3_exec(database, "PRAGMA integrity_check", add, &text, nullptr);
  if (code != SQLITE_OK) text += sqlite3_errmsg(database);
  sqlite3_close(database);
  return text;
}

#endif
