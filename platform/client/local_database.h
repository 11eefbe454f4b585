// Reads and writes of the platform library itself, through the same interface that its users have.
#ifndef ZYMDB_PLATFORM_CLIENT_LOCAL_DATABASE_H
#define ZYMDB_PLATFORM_CLIENT_LOCAL_DATABASE_H

#include <memory>
#include <string>
#include <string_view>

#include "db/database_client.h"

namespace zymdb::client {

struct CloseHandle {
  void operator()(_zym_db_handle_t* handle) const { zym_db_close(handle); }
};
using HandlePtr = std::unique_ptr<_zym_db_handle_t, CloseHandle>;

struct FreeResult {
  void operator()(zym_db_result_t* result) const { zym_db_free_result(result); }
};
using RowsPtr = std::unique_ptr<zym_db_result_t, FreeResult>;

struct FreeValues {
  void operator()(zym_db_content_values_t* values) const { zym_db_free_content_values(values); }
};
using ValuesPtr = std::unique_ptr<zym_db_content_values_t, FreeValues>;

inline HandlePtr open_properties() {
  return HandlePtr(zym_db_open("localhost", "root", "", "propertiesdb", 0));
}

// `column="value"`, safe for any value.
inline std::string equals(std::string_view column, std::string_view value) {
  std::string filter(column);
  filter.append("=\"");
  for (const char c : value) {
    if (c == '"') filter.push_back('"');
    filter.push_back(c);
  }
  return filter.append("\"");
}

// One column of the rows that match. Returns the query's status.
inline int select(_zym_db_handle_t* handle, const char* table, const char* column, const std::string& where,
                  RowsPtr& rows) {
  zym_db_result_t* found = nullptr;
  const int status = zym_db_query(handle, table, &column, 1, where.c_str(), nullptr, 0, 0, &found);
  rows.reset(found);
  return status;
}

}  // namespace zymdb::client

#endif
