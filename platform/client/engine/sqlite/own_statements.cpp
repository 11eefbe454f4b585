#include "client/engine/sqlite/own_statements.h"

#include <new>

namespace zymdb::client::sqlite {

Failure execute(sqlite3* database, const std::string& sql) {
  const int code = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
  return code == SQLITE_OK ? Failure{} : failure_of(database, code);
}

Failure read_number(sqlite3* database, const char* sql, int64_t& value) {
  return read_rows(database, sql, [&](sqlite3_stmt* row) { value = sqlite3_column_int64(row, 0); });
}

Failure read_rows(sqlite3* database, const char* sql, const std::function<void(sqlite3_stmt*)>& row) {
  sqlite3_stmt* raw = nullptr;
  int code = sqlite3_prepare_v2(database, sql, -1, &raw, nullptr);
  const StatementPtr statement(raw);
  if (code != SQLITE_OK) return failure_of(database, code);
  while ((code = sqlite3_step(raw)) == SQLITE_ROW) row(raw);
  return code == SQLITE_DONE ? Failure{} : failure_of(database, code);
}

std::string text_of(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  if (text == nullptr) throw std::bad_alloc();
  return text;
}

}  // namespace zymdb::client::sqlite
