#include "collect/write/collection_stamp.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "collect/write/stored_rows.h"
#include "common/client_objects.h"
#include "zymdb_db.h"

namespace zymdb::collect {
namespace {

constexpr char kTable[] = "System";

// The first row of them, should there be several.
std::optional<int64_t> find_row(_zym_db_handle_t* handle) {
  std::optional<int64_t> id;
  for_each_row(handle, kTable, {"_id"}, nullptr, [&id](zym_db_result_t* row) {
    int64_t number = 0;
    if (zym_db_result_column_int64(row, 0, &number) == ZYM_DB_STATUS_OK)
      id = std::min(id.value_or(number), number);
  });
  return id;
}

void require(int status) {
  if (status != ZYM_DB_STATUS_OK) fail("cannot prepare a row of table", kTable, status);
}

ValuesPtr make_values(_zym_db_handle_t* handle, const std::string& sources) {
  using std::chrono::seconds;
  ValuesPtr values(zym_db_get_content_values(handle));
  if (!values) require(ZYM_DB_STATUS_NO_MEMORY);
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto at = std::to_string(std::chrono::duration_cast<seconds>(now).count());
  require(zym_db_content_put_text(values.get(), "CollectedAt", at.c_str()));
  require(zym_db_content_put_text(values.get(), "CollectedBy", "zymdb " ZYMDB_VERSION));
  require(zym_db_content_put_text(values.get(), "CollectedFrom", sources.c_str()));
  return values;
}

}  // namespace

void stamp_collection(_zym_db_handle_t* handle, const std::string& sources) {
  const auto values = make_values(handle, sources);
  const auto row = find_row(handle);
  const int64_t written =
      row ? update_db_record(handle, kTable, ("_id=" + std::to_string(*row)).c_str(), values.get(), nullptr)
          : insert_db_record(handle, kTable, values.get());
  if (written < 1) fail("cannot write to table", kTable, ZYM_DB_STATUS_ERROR);
}

}  // namespace zymdb::collect
