#include "records/rows.h"

#include "zymdb_db.h"

namespace zymdb::records {

Rows::Rows(const Reading& reading, _zym_db_handle_t* handle, const char* table,
           const std::vector<const char*>& columns) {
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
