// How amounts of memory are written for people.
#ifndef ZYMDB_TOOL_SHOW_MEMORY_TEXT_H
#define ZYMDB_TOOL_SHOW_MEMORY_TEXT_H

#include <cstdint>
#include <string>

namespace zymdb::tool {

// "64 GiB", and "129408 MiB" where it is no whole number of the larger unit.
std::string size_text(uint64_t mebibytes);

}  // namespace zymdb::tool

#endif
