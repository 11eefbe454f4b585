#include "client/engine/sqlite/gathering.h"

#include <new>
#include <span>

#include "client/engine/sqlite/engine.h"
#include "client/engine/sqlite/rows.h"

namespace zymdb::client::sqlite {

int Gathering::attach(sqlite3* database) {
  return sqlite3_create_function_v2(database, kGathering.data(), -1, SQLITE_UTF8 | SQLITE_DIRECTONLY, this,
                                    nullptr, add_row, end, nullptr);
}

// An exception cannot pass through SQLite.
void Gathering::add_row(sqlite3_context* context, int count, sqlite3_value** values) try {
  Result& result = *static_cast<Gathering*>(sqlite3_user_data(context))->result_;
  bool fits = result.begin_row();
  for (sqlite3_value* const value : std::span(values, static_cast<size_t>(count)))
    fits = fits && add_cell(value, false, result);
  if (fits) return result.end_row();
  sqlite3_result_error(context, kTooLarge, -1);
  sqlite3_result_error_code(context, SQLITE_TOOBIG);
} catch (const std::bad_alloc&) {
  sqlite3_result_error_nomem(context);
}

}  // namespace zymdb::client::sqlite
