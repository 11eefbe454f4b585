// The database engine's own interface: a connection, and statements that are kept or prepared per call.
#ifndef ZYMDB_BENCH_RAW_SQLITE_H
#define ZYMDB_BENCH_RAW_SQLITE_H

#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <string>

namespace bench {

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Prepared = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

// With the settings that the client uses.
Connection open_raw(const std::string& path);
Prepared prepare(sqlite3* connection, const char* sql);

// A text column into a field, as the library's records hold it.
template <size_t N>
void copy_column(sqlite3_stmt* row, int column, char (&field)[N]) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  const size_t length = std::min(static_cast<size_t>(sqlite3_column_bytes(row, column)), N - 1);
  if (length > 0) __builtin_memcpy(field, text, length);
  field[length] = '\0';
}

}  // namespace bench

#endif
