// What came of a check as JSON.
#ifndef ZYMDB_DOCUMENTS_CHECK_JSON_H
#define ZYMDB_DOCUMENTS_CHECK_JSON_H

#include <string>
#include <vector>

#include "documents/check.h"

namespace zymdb::documents {

// The shape of a version never changes.
inline constexpr int kCheckFormatVersion = 1;

// An object with "format_version", the number of "expectations", and "failures": of each "class",
// "expectation", "place" (null of a class as a whole), "expected" and "found".
std::string to_json(const std::vector<Verdict>& verdicts);

}  // namespace zymdb::documents

#endif
