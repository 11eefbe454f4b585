// Changes of parts as tables.
#ifndef ZYMDB_TOOL_SHOW_CHANGES_H
#define ZYMDB_TOOL_SHOW_CHANGES_H

#include <string>
#include <vector>

#include "documents/difference.h"
#include "documents/history.h"

namespace zymdb::tool {

records::Sheet sheet_of(const std::vector<documents::Change>& changes);

// With time and generation in front. A baseline is one row.
records::Sheet sheet_of(const std::vector<documents::Event>& events);

}  // namespace zymdb::tool

#endif
