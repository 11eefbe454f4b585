// Reading the files that describe a machine, and saying what is wrong with them. Attribute files and folders
// are read within the time bound of source_access.h, where there is one.
#ifndef ZYMDB_COMMON_SOURCE_FILE_H
#define ZYMDB_COMMON_SOURCE_FILE_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zymdb {

// A source that cannot be used. Its text is one line: the file, the line or offset, and the reason.
class SourceError : public std::runtime_error {
 public:
  explicit SourceError(const std::string& problem) : std::runtime_error(problem) {}
  SourceError(std::string_view file, std::string_view reason);

  static SourceError at_line(std::string_view file, size_t line, std::string_view reason);
  static SourceError at_offset(std::string_view file, size_t offset, std::string_view reason);
};

// The whole file; throws SourceError when it cannot be read or is larger than any source is (64 MiB).
std::string read_source(const std::string& path);

// The same of any size, part by part as it comes.
void read_source_in_parts(const std::string& path, const std::function<void(std::string_view)>& take);

// The same for the attribute files of sysfs, which come and go; nothing when it cannot be read. In a recorded
// tree anything may stand in its place: what is no file (a pipe, a device, a folder) or larger than any
// attribute is (4 MiB) is not read, so that nothing keeps the reader waiting.
std::optional<std::string> read_attribute(const std::string& path);

// The number that an attribute file holds, in decimal or with a "0x" prefix; text after it is ignored.
std::optional<uint64_t> read_number(const std::string& path);

// The entries of a folder, by name; nothing when it cannot be read.
std::optional<std::vector<std::filesystem::path>> folder_entries(const std::filesystem::path& folder);

// Whether there is a file or folder, links followed.
bool is_there(const std::filesystem::path& path);

// What a link says, which need not be there; nothing when it is no link.
std::optional<std::filesystem::path> link_target(const std::filesystem::path& link);

// The path without links; nothing when there is no such file or folder.
std::optional<std::filesystem::path> real_path(const std::filesystem::path& path);

}  // namespace zymdb

#endif
