#include "client/engine/sqlite/rows.h"

#include <new>

namespace zymdb::client::sqlite {
namespace {

int bind_one(sqlite3_stmt* statement, int place, const Argument& argument) {
  const char* const bytes = argument.text.data();
  const size_t size = argument.text.size();
  switch (argument.type) {
    case Argument::Type::kInteger:
      return sqlite3_bind_int64(statement, place, argument.integer);
    case Argument::Type::kReal:
      return sqlite3_bind_double(statement, place, argument.real);
    case Argument::Type::kText:
      return sqlite3_bind_text64(statement, place, bytes, size, SQLITE_STATIC, SQLITE_UTF8);
    case Argument::Type::kBlob:
      return sqlite3_bind_blob64(statement, place, bytes, size, SQLITE_STATIC);
    default:
      return sqlite3_bind_null(statement, place);
  }
}

}  // namespace

int Run::bind(std::span<const Argument> arguments) const {
  int place = 0;
  for (const Argument& argument : arguments) {
    if (const int code = bind_one(statement_, ++place, argument); code != SQLITE_OK) return code;
  }
  return SQLITE_OK;
}

bool add_cell(sqlite3_value* value, bool is_expression, Result& result) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      result.add_integer(sqlite3_value_int64(value));
      return true;
    case SQLITE_TEXT: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
      if (text == nullptr) throw std::bad_alloc();
      return result.add_text({text, static_cast<size_t>(sqlite3_value_bytes(value))});
    }
    case SQLITE_FLOAT:
      result.add_real(sqlite3_value_double(value));
      return true;
    case SQLITE_BLOB: {
      const auto* data = static_cast<const char*>(sqlite3_value_blob(value));
      return result.add_blob({data, static_cast<size_t>(sqlite3_value_bytes(value))});
    }
    default:
      if (is_expression)
        result.add_empty_aggregate();
      else
        result.add_null();
      return true;
  }
}

// A value looked up once and then read as it is costs half of asking the statement for its type and content
// one after the other. SQLite leaves such a value unlocked; the connection is this thread's alone.
bool read_row(const Prepared& prepared, Result& result) {
  if (!result.begin_row()) return false;
  sqlite3_stmt* const row = prepared.statement.get();
  const int columns = static_cast<int>(prepared.names->size());
  for (int column = 0; column < columns; ++column) {
    const bool is_expression = prepared.expressions[static_cast<size_t>(column)];
    if (!add_cell(sqlite3_column_value(row, column), is_expression, result)) return false;
  }
  result.end_row();
  return true;
}

}  // namespace zymdb::client::sqlite
