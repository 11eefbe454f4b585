// Rows as SQLite has them: the arguments of a function.
//
// To ask a statement for a row's columns one by one costs as much again as SQLite takes to read them. A query
// of plain columns is therefore written "SELECT gathered(column, ...)": the aggregate's steps get all values
// of a row at once, and the whole list takes one step of the statement.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_GATHERING_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_GATHERING_H

#include <sqlite3.h>

#include "client/result/result.h"

namespace zymdb::client::sqlite {

// Where the rows of a connection's statements go. It outlives the connection.
class Gathering {
 public:
  // Makes the function known to the connection. Returns SQLite's code.
  int attach(sqlite3* database);

  // The rows of the statement that runs next are added to the result.
  void begin(Result& result) { result_ = &result; }

 private:
  static void add_row(sqlite3_context* context, int count, sqlite3_value** values);
  static void end(sqlite3_context*) {}

  Result* result_ = nullptr;
};

}  // namespace zymdb::client::sqlite

#endif
