#include "files/properties_file.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <set>
#include <sstream>

#include "common/source_file.h"

namespace zymdb::tool {
namespace {

constexpr size_t kLongestPath = 127;

// The bytes of a value of this kind; 0 for a kind that there is not.
size_t size_of(std::string_view kind) {
  if (kind == "byte") return 1;
  if (kind == "dword") return 4;
  return 0;
}

std::optional<uint64_t> parse_number(const std::string& text) {
  if (text.empty() || text[0] < '0' || text[0] > '9') return std::nullopt;
  const int base = text.starts_with("0x") ? 16 : 10;
  char* end = nullptr;
  errno = 0;
  const uint64_t number = std::strtoull(text.c_str(), &end, base);
  return errno == 0 && *end == '\0' ? std::optional(number) : std::nullopt;
}

std::string stored(uint64_t number, size_t size) {
  std::string value(1, static_cast<char>(size));
  for (size_t i = 0; i < size; ++i) value += static_cast<char>(number >> 8 * i & 0xFF);
  return value;
}

// What is wrong with a line, or null. Fills `property` otherwise.
const char* read_line(const std::string& line, Property& property) {
  std::istringstream words(line);
  std::string kind;
  std::string value;
  std::string more;
  if (!(words >> property.path >> kind >> value) || words >> more) return "not a path, a kind and a value";
  if (property.path.size() > kLongestPath) return "the path is longer than 127 bytes";
  if (property.path.find_first_of("'\"") != std::string::npos) return "a path has no quotes";
  const size_t size = size_of(kind);
  if (size == 0) return "the kind is neither byte nor dword";
  const auto number = parse_number(value);
  if (!number) return "the value is not a number";
  if (*number >> 8 * size != 0) return "the value does not fit its kind";
  property.value = stored(*number, size);
  return nullptr;
}

}  // namespace

std::vector<Property> parse_properties(std::string_view text, const std::string& file) {
  std::vector<Property> properties;
  std::set<std::string> known;
  std::istringstream lines{std::string(text)};
  std::string line;
  for (size_t number = 1; std::getline(lines, line); ++number) {
    const auto first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') continue;
    Property property;
    if (const char* problem = read_line(line, property)) throw SourceError::at_line(file, number, problem);
    if (!known.insert(property.path).second) throw SourceError::at_line(file, number, "the path comes twice");
    properties.push_back(std::move(property));
  }
  return properties;
}

}  // namespace zymdb::tool
