// Reading platform properties with a query of their own, where a pattern of names is looked for.
#ifndef ZYMDB_SRC_STORAGE_PROPERTIES_H
#define ZYMDB_SRC_STORAGE_PROPERTIES_H

#include <cstdint>

#include "db/query.h"

namespace zymdb {

// A connection to the property database for one operation; false when there is none.
class PropertyConnection {
 public:
  PropertyConnection() : handle_(zym_db_open("localhost", "root", "", "propertiesdb", 0)) {}
  ~PropertyConnection() {
    if (handle_ != nullptr) zym_db_close(handle_);
  }
  PropertyConnection(const PropertyConnection&) = delete;
  PropertyConnection& operator=(const PropertyConnection&) = delete;

  explicit operator bool() const { return handle_ != nullptr; }
  _zym_db_handle_t* handle() const { return handle_; }

 private:
  _zym_db_handle_t* handle_;
};

// A property's path. Bytes behind its end are NUL, so that any position in it can be looked at.
using PropertyName = char[128];

// The properties that match a filter.
class PropertyQuery {
 public:
  PropertyQuery(const PropertyConnection& connection, const char* filter)
      : query_(connection.handle(), "propertiesDCTbl", {"propName", "propValue"}, filter) {}

  int status() const { return query_.status(); }
  int step() { return query_.step(); }

  void read_name(PropertyName& name) { query_.read_text(0, name, sizeof name); }

  // The 8-bit value, which follows a byte that describes it; 0 when it is missing.
  uint8_t value() {
    uint8_t blob[128] = {};
    return query_.read_blob(1, blob, sizeof blob) == ZYM_DB_STATUS_OK ? blob[1] : uint8_t{0};
  }

 private:
  Query query_;
};

}  // namespace zymdb

#endif
