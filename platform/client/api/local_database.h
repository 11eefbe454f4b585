// Reads and writes of the platform library itself, through the same interface that its users have.
#ifndef ZYMDB_PLATFORM_CLIENT_API_LOCAL_DATABASE_H
#define ZYMDB_PLATFORM_CLIENT_API_LOCAL_DATABASE_H

#include <string>
#include <string_view>

#include "common/client_objects.h"

namespace zymdb::client {

// The property database, for who writes it time and again: it stays open, for closing would bring its log
// into the file and remove it each time. Null when it cannot be opened.
_zym_db_handle_t* kept_properties();

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
                  zymdb::ResultPtr& rows) {
  zym_db_result_t* found = nullptr;
  const int status = zym_db_query(handle, table, &column, 1, where.c_str(), nullptr, 0, 0, &found);
  rows.reset(found);
  return status;
}

}  // namespace zymdb::client

#endif
