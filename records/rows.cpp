#include "records/rows.h"

#include "zymdb_db.h"

namespace zymdb::records {

Rows::Rows(const Reading& reading, _zym_db_handle_t* handle, const char* table,
           const std::vector<const char*>& columns) {
  // A query without a handle would fail, too, and hide why there is none.
  if (handle == nullptr) reading.require(ZYM_DB_STATUS_NO_DB);
  zym_db_result_t* result = nullptr;
  const char* const* const names = columns.empty() ? nullptr : columns.data();
  const int status =
      zym_db_query(handle, table, names, static_cast<int>(columns.size()), nullptr, nullptr, 0, 0, &result);
  result_.reset(result);
  reading.require(status);
}

bool Rows::step() {
  return result_ != nullptr && zym_db_result_step(result_.get()) == ZYM_DB_STATUS_ROW;
}

std::string Rows::text(const char* column) {
  char text[1025] = "";
  extract_str_column_from_result(result_.get(), column, text, sizeof text);
  return text;
}

// The client cuts a text where its room ends.
std::string Rows::long_text(const char* column) {
  for (size_t room = 4096;; room *= 4) {
    std::string text(room, '\0');
    extract_str_column_from_result(result_.get(), column, text.data(), static_cast<int>(room));
    const size_t size = text.find('\0');
    if (size + 1 < room) return text.substr(0, size);
  }
}

Value Rows::stored(const char* column) {
  uint64_t number = 0;
  const int status = extract_uint64_column_from_result(result_.get(), column, &number);
  return status == ZYM_DB_STATUS_OK ? Value(number) : Value();
}

uint32_t Rows::number(const char* column) {
  uint32_t number = 0;
  extract_uint_column_from_result(result_.get(), column, &number);
  return number;
}

}  // namespace zymdb::records
