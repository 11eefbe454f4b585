// Owners of what the database client hands out.
#ifndef ZYMDB_COMMON_CLIENT_OBJECTS_H
#define ZYMDB_COMMON_CLIENT_OBJECTS_H

#include <memory>
#include <stdexcept>
#include <string>

#include "controller/database_client.h"

namespace zymdb {

struct CloseHandle {
  void operator()(_zym_db_handle_t* handle) const { zym_db_close(handle); }
};
using HandlePtr = std::unique_ptr<_zym_db_handle_t, CloseHandle>;

struct FreeResult {
  void operator()(zym_db_result_t* result) const { zym_db_free_result(result); }
};
using ResultPtr = std::unique_ptr<zym_db_result_t, FreeResult>;

struct FreeValues {
  void operator()(zym_db_content_values_t* values) const { zym_db_free_content_values(values); }
};
using ValuesPtr = std::unique_ptr<zym_db_content_values_t, FreeValues>;

// The property database; null when it cannot be opened.
inline HandlePtr open_properties() {
  return HandlePtr(zym_db_open("localhost", "root", "", "propertiesdb", 0));
}

// The database refused something. Its text is one line, its status the library's or the client's.
class DatabaseError : public std::runtime_error {
 public:
  explicit DatabaseError(const std::string& text, int status = ZYM_DB_STATUS_ERROR)
      : std::runtime_error(text), status_(status) {}

  int status() const { return status_; }

 private:
  int status_;
};

}  // namespace zymdb

#endif
