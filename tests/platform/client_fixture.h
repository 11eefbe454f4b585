// The client's interface in the hands of a test.
#ifndef ZYMDB_TESTS_PLATFORM_CLIENT_FIXTURE_H
#define ZYMDB_TESTS_PLATFORM_CLIENT_FIXTURE_H

#include <memory>
#include <string>
#include <vector>

#include "common/client_objects.h"
#include "support/inventory.h"
#include "zymdb_platform.h"

using Rows = zymdb::ResultPtr;
using Set = zymdb::ValuesPtr;

class ClientTest : public InventoryTest {
 protected:
  static _zym_db_handle_t* handle() { return get_dmdb_handle(); }

  Rows query(const char* table, std::vector<const char*> columns, const char* where = nullptr,
             std::vector<_zym_db_param_t> params = {}) {
    zym_db_result_t* rows = nullptr;
    status_ = zym_db_query(handle(), table, columns.empty() ? nullptr : columns.data(),
                           static_cast<int>(columns.size()), where, params.data(),
                           static_cast<int>(params.size()), 0, &rows);
    return Rows(rows);
  }

  // How many rows match; -1 when the query fails.
  int64_t count(const char* table, const std::string& where) {
    const Rows rows = query(table, {"_id"}, where.c_str());
    return rows != nullptr ? static_cast<int64_t>(zym_db_result_row_count(rows.get())) : -1;
  }

  // What `body` logs.
  template <class Body>
  static std::string log_of(Body body) {
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
  }

  // The first row's first column as text.
  std::string first(const Rows& rows) {
    char text[128] = "";
    if (rows == nullptr) return "no result";
    zym_db_result_reset(rows.get());
    if (zym_db_result_step(rows.get()) != ZYM_DB_STATUS_ROW) return "no row";
    return zym_db_result_column_text(rows.get(), 0, text, sizeof text) == 0 ? text : "unreadable";
  }

  static _zym_db_param_t u32(uint64_t value) { return {3, 0, 1, value}; }

  int status_ = 0;
};

#endif
