// A database file in the hands of another program.
#ifndef ZYMDB_TESTS_SUPPORT_SQL_H
#define ZYMDB_TESTS_SUPPORT_SQL_H

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

// Runs statements on the file. What they find: a line for each row, its values separated by "|".
inline std::string run_sql_on(const std::string& file, const std::string& sql) {
  sqlite3* database = nullptr;
  EXPECT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
  std::string text;
  const auto add = [](void* out, int columns, char** values, char**) {
    for (int i = 0; i < columns; ++i)
      static_cast<std::string*>(out)->append(i ? "|" : "").append(values[i] ? values[i] : "NULL");
    static_cast<std::string*>(out)->append("\n");
    return 0;
  };
  EXPECT_EQ(sqlite3_exec(database, sql.c_str(), add, &text, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
  sqlite3_close(database);
  return text;
}

#endif
