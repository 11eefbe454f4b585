// Records as JSON.
#ifndef ZYMDB_RECORDS_JSON_H
#define ZYMDB_RECORDS_JSON_H

#include <string>
#include <string_view>

#include "records/record.h"

namespace zymdb::records {

// The shape of a version never changes: new keys, and keys that mean something else, take a new version.
inline constexpr int kFormatVersion = 2;

// An object with "format_version" and, under `name`, an array with one object for each row. What is not known
// is null; a number of 64 bits that identifies something is a text; bytes that are not UTF-8 become U+FFFD.
std::string to_json(std::string_view name, const Sheet& sheet);

}  // namespace zymdb::records

#endif
