#include "client/engine/sqlite/json_value.h"

#include <new>
#include <string_view>

#include "client/engine/json_text.h"

namespace zymdb::client::sqlite {
namespace {

std::string_view bytes_of(sqlite3_value* value) {
  const auto* const bytes = static_cast<const char*>(sqlite3_value_blob(value));
  const auto size = static_cast<size_t>(sqlite3_value_bytes(value));
  if (bytes == nullptr && size != 0) throw std::bad_alloc();
  return {bytes, size};
}

}  // namespace

std::string json_of(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return std::to_string(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
      return json_of_real(sqlite3_value_double(value));
    case SQLITE_TEXT:
      return json_of_text(bytes_of(value));
    case SQLITE_BLOB:
      return json_of_blob(bytes_of(value));
    default:
      return "null";
  }
}

bool same_value(sqlite3_value* a, sqlite3_value* b) {
  const int type = sqlite3_value_type(a);
  if (type != sqlite3_value_type(b)) return false;
  if (type == SQLITE_NULL) return true;
  if (type == SQLITE_INTEGER) return sqlite3_value_int64(a) == sqlite3_value_int64(b);
  if (type == SQLITE_FLOAT) return sqlite3_value_double(a) == sqlite3_value_double(b);
  return bytes_of(a) == bytes_of(b);
}

}  // namespace zymdb::client::sqlite
