// A prepared statement's run: its values in, its rows out.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_ROWS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_ROWS_H

#include <span>

#include "client/dialect/statement.h"
#include "client/engine/sqlite/statement_cache.h"

namespace zymdb::client::sqlite {

// The end of a run, however it comes, ends the statement's own transaction.
class Run {
 public:
  explicit Run(sqlite3_stmt* statement) : statement_(statement) {}
  ~Run() { sqlite3_reset(statement_); }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  // Texts are bound in place: they outlive the run. Returns SQLite's code.
  int bind(std::span<const Argument> arguments) const;
  int step() const { return sqlite3_step(statement_); }

 private:
  sqlite3_stmt* statement_;
};

inline constexpr char kTooLarge[] = "the result is too large";

// Adds a value to the row that was begun. False: the result would be too large.
bool add_cell(sqlite3_value* value, bool is_expression, Result& result);

// Adds the row at which the statement stands. False: the result would be too large.
bool read_row(const Prepared& prepared, Result& result);

}  // namespace zymdb::client::sqlite

#endif
