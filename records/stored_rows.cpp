#include "records/stored_rows.h"

namespace zymdb::records {
namespace {

Value read_number(zym_db_result_t* result, int column) {
  int is_null = 0;
  int64_t number = 0;
  if (zym_db_result_column_is_null(result, column, &is_null) != ZYM_DB_STATUS_OK || is_null != 0) return {};
  if (zym_db_result_column_int64(result, column, &number) != ZYM_DB_STATUS_OK) return {};
  // Numbers of 64 bits are stored with a sign.
  return static_cast<uint64_t>(number);
}

}  // namespace

std::map<uint32_t, StoredRow> read_stored_rows(const Reading& reading, const char* table, const char* key,
                                               const std::vector<const char*>& columns) {
  std::vector<const char*> names{key};
  names.insert(names.end(), columns.begin(), columns.end());
  zym_db_result_t* raw = nullptr;
  const int status = zym_db_query(get_dmdb_handle(), table, names.data(), static_cast<int>(names.size()),
                                  nullptr, nullptr, 0, 0, &raw);
  const ResultPtr result(raw);
  reading.require(status);
  std::map<uint32_t, StoredRow> rows;
  while (result != nullptr && zym_db_result_step(result.get()) == ZYM_DB_STATUS_ROW) {
    const Value of = read_number(result.get(), 0);
    if (!is_known(of)) continue;
    StoredRow& row = rows[static_cast<uint32_t>(std::get<uint64_t>(of))];
    for (size_t i = 0; i < columns.size(); ++i)
      row[columns[i]] = read_number(result.get(), static_cast<int>(i) + 1);
  }
  reading.require_whole();
  return rows;
}

}  // namespace zymdb::records
