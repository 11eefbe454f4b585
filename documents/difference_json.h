// Differences as JSON.
#ifndef ZYMDB_DOCUMENTS_DIFFERENCE_JSON_H
#define ZYMDB_DOCUMENTS_DIFFERENCE_JSON_H

#include <string>
#include <vector>

#include "documents/difference.h"
#include "documents/history.h"

namespace zymdb::documents {

// The shape of a version never changes.
inline constexpr int kDifferenceFormatVersion = 1;

// An object with "format_version" and "changes".
std::string to_json(const std::vector<Change>& changes);

// What a transaction did, one object a line: "generation" and "time", and then as below. A baseline is one line,
// "change" being "baseline", with the number of "parts".
std::string to_json_lines(const Event& event);

// One change as an object on one line, without its end: "change", "class", "place", "former_place" of what moved,
// "description", "former_description" of what was replaced, and "fields" with "field", "before" and "after".
std::string to_json_line(const Change& change);

}  // namespace zymdb::documents

#endif
