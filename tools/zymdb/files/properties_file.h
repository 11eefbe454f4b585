// Properties files: one platform property a line.
#ifndef ZYMDB_TOOL_FILES_PROPERTIES_FILE_H
#define ZYMDB_TOOL_FILES_PROPERTIES_FILE_H

#include <string>
#include <string_view>
#include <vector>

namespace zymdb::tool {

struct Property {
  std::string path;
  std::string value;  // as it is stored: a byte with the value's size, then the value, lowest byte first
};

// The properties of a text, in its order. A line is "PATH KIND VALUE", with KIND byte (8 bits) or dword (32)
// and VALUE decimal or with "0x"; empty lines and lines that begin with "#" say nothing.
//
// Throws SourceError, which names the file and the line, for anything else: an unknown kind, a value
// that its kind cannot hold, a path that comes twice, is longer than 127 bytes or holds a quote.
std::vector<Property> parse_properties(std::string_view text, const std::string& file);

}  // namespace zymdb::tool

#endif
