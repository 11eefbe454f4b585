// Names that tell the parts of a class apart, for forms of documents that refer to parts.
#ifndef ZYMDB_DOCUMENTS_PART_NAMES_H
#define ZYMDB_DOCUMENTS_PART_NAMES_H

#include <string>
#include <vector>

#include "documents/document.h"

namespace zymdb::documents {

// One for each part, in their order; no two are equal, and all are UTF-8. A part is called by its place as long
// as it is the only one there, then by its place and what it is; parts that have all of that in common, or none
// of it, are numbered.
std::vector<std::string> part_names(const PartClass& of);

// The text as UTF-8: what is none becomes U+FFFD, as in JSON.
std::string utf8_text(const std::string& text);

}  // namespace zymdb::documents

#endif
