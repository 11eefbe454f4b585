#include "collect/write/stored_rows.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "common/client_objects.h"

namespace zymdb::collect {
namespace {

// Longer than any text the collector writes, so that a longer one in the database is seen to differ.
constexpr size_t kLongestText = 1024;

Value read_text(zym_db_result_t* row, int column) {
  std::array<char, kLongestText + 1> text;
  const int status = zym_db_result_column_text(row, column, text.data(), static_cast<int>(text.size()));
  return status == ZYM_DB_STATUS_OK ? Value::text(text.data()) : Value();
}

Value read_value(zym_db_result_t* row, int column, Kind kind) {
  int is_null = 0;
  if (zym_db_result_column_is_null(row, column, &is_null) != ZYM_DB_STATUS_OK || is_null != 0) return {};
  int64_t number = 0;
  if (kind == Kind::kNumber && zym_db_result_column_int64(row, column, &number) == ZYM_DB_STATUS_OK)
    return Value::number(number);
  return read_text(row, column);
}

StoredRow read_row(zym_db_result_t* row, const TableContent& content) {
  StoredRow stored;
  if (const int status = zym_db_result_column_int64(row, 0, &stored.id); status != ZYM_DB_STATUS_OK)
    fail("cannot read table", content.table, status);
  stored.values.reserve(content.columns.size());
  for (size_t i = 0; i < content.columns.size(); ++i)
    stored.values.push_back(read_value(row, static_cast<int>(i) + 1, content.columns[i].kind));
  stored.is_foreign = content.is_foreign && content.is_foreign(content, stored.values);
  return stored;
}

}  // namespace

void fail(const char* attempt, const char* table, int status) {
  const char* reason = zym_db_get_error_str(status);
  throw DatabaseError(std::string(attempt) + " " + table + ": " + (reason ? reason : "unknown failure"));
}

void for_each_row(_zym_db_handle_t* handle, const char* table, const std::vector<const char*>& columns,
                  const char* where, const std::function<void(zym_db_result_t* row)>& read) {
  zym_db_result_t* raw = nullptr;
  int status = zym_db_query(handle, table, columns.data(), static_cast<int>(columns.size()), where, nullptr,
                            0, 0, &raw);
  const ResultPtr result(raw);
  if (status == ZYM_DB_STATUS_OK && result) {
    while ((status = zym_db_result_step(result.get())) == ZYM_DB_STATUS_ROW) read(result.get());
  }
  if (status != ZYM_DB_STATUS_DONE) fail("cannot read table", table, status);
}

std::set<FunctionKey> read_functions(_zym_db_handle_t* handle, const char* table, const char* where) {
  std::set<FunctionKey> functions;
  for_each_row(handle, table, {"PCIFuncKey"}, where, [&functions](zym_db_result_t* row) {
    uint32_t key = 0;
    if (zym_db_result_column_uint(row, 0, &key) == ZYM_DB_STATUS_OK) functions.insert(FunctionKey(key));
  });
  return functions;
}

std::vector<StoredRow> read_stored_rows(_zym_db_handle_t* handle, const TableContent& content) {
  std::vector<const char*> columns = {"_id"};
  for (const auto& column : content.columns) columns.push_back(column.name);
  std::vector<StoredRow> rows;
  for_each_row(handle, content.table, columns, nullptr,
               [&](zym_db_result_t* row) { rows.push_back(read_row(row, content)); });
  std::ranges::sort(rows, {}, &StoredRow::id);
  return rows;
}

}  // namespace zymdb::collect
