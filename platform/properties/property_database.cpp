#include "controller/property_database.h"

#include <cstdint>
#include <cstring>

#include "client/api/local_database.h"
#include "client/guarded.h"

namespace {

using namespace zymdb;
using namespace zymdb::client;

// Byte 0 of a property's blob describes it; the value follows, least significant byte first. A value that is
// shorter than what is asked for is filled up with zeros.
constexpr int kValueOffset = 1;
constexpr int kBlobSize = kValueOffset + 4;

int read_value(const char* path, uint32_t& value) {
  const HandlePtr handle = open_properties();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  zymdb::ResultPtr rows;
  if (const int status =
          select(handle.get(), "propertiesDCTbl", "propValue", equals("propName", path), rows)) {
    return status;
  }
  if (zym_db_result_step(rows.get()) != ZYM_DB_STATUS_ROW) return ZYM_DB_STATUS_NOT_FOUND;
  int length = 0;
  uint8_t blob[kBlobSize] = {};
  if (const int status = zym_db_result_column_bytes(rows.get(), 0, &length)) return status;
  if (const int status = zym_db_result_column_blob(rows.get(), 0, blob, kBlobSize)) return status;
  if (length <= kValueOffset) return ZYM_DB_STATUS_ERROR;
  value = 0;
  for (int i = kBlobSize - 1; i >= kValueOffset; --i) value = value << 8 | blob[i];
  return 0;
}

template <class Number>
int read_property(const char* path, Number* value) {
  if (path == nullptr || value == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  return guarded([&] {
    uint32_t wide = 0;
    const int status = read_value(path, wide);
    if (status == 0) *value = static_cast<Number>(wide);
    return status;
  });
}

}  // namespace

int propdb_get_dword(const char* path, unsigned int* value) {
  return read_property(path, value);
}
int propdb_get_byte(const char* path, unsigned char* value) {
  return read_property(path, value);
}
