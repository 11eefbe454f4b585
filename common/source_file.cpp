#include "common/source_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <system_error>
#include <utility>

#include "common/source_access.h"
#include "common/text.h"

namespace zymdb {
namespace {

constexpr size_t kLargestSource = size_t{64} << 20;

class Descriptor {
 public:
  explicit Descriptor(const std::string& path) : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool is_open() const { return fd_ >= 0; }

  // The count of bytes read, 0 at the end, -1 on failure.
  ssize_t read(char* buffer, size_t size) const {
    ssize_t count = 0;
    do {
      count = ::read(fd_, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
  }

 private:
  int fd_;
};

// 0, or the error number.
int read_all(const std::string& path, std::string& content) {
  const Descriptor file(path);
  if (!file.is_open()) return errno;
  std::array<char, 16384> block;
  ssize_t count = 0;
  while ((count = file.read(block.data(), block.size())) > 0) {
    content.append(block.data(), static_cast<size_t>(count));
    if (content.size() > kLargestSource) return EFBIG;
  }
  return count < 0 ? errno : 0;
}

struct Attribute {
  std::optional<std::string> content;
  int error = 0;
};

Attribute read_attribute_now(const std::string& path) {
  std::string content;
  const int error = read_all(path, content);
  if (error != 0) return {std::nullopt, error};
  return {std::move(content), 0};
}

std::optional<std::vector<std::filesystem::path>> list_now(const std::filesystem::path& folder) {
  namespace fs = std::filesystem;
  std::error_code error;
  std::vector<fs::path> paths;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    paths.push_back(it->path());
  }
  if (error) return std::nullopt;
  std::ranges::sort(paths);
  return paths;
}

}  // namespace

SourceError::SourceError(std::string_view file, std::string_view reason)
    : std::runtime_error(std::string(file).append(": ").append(reason)) {}

SourceError SourceError::at_line(std::string_view file, size_t line, std::string_view reason) {
  return {std::string(file).append(", line ").append(std::to_string(line)), reason};
}

SourceError SourceError::at_offset(std::string_view file, size_t offset, std::string_view reason) {
  return {std::string(file).append(", offset ").append(hex_text(offset)), reason};
}

std::string read_source(const std::string& path) {
  std::string content;
  const int error = read_all(path, content);
  if (error != 0) throw SourceError(path, std::generic_category().message(error));
  return content;
}

std::optional<std::string> read_attribute(const std::string& path) {
  auto file = ask(path, [path] { return read_attribute_now(path); });
  if (auto* const observer = access_observer()) observer->read_file(path, file.content, file.error);
  return std::move(file.content);
}

std::optional<uint64_t> read_number(const std::string& path) {
  const auto content = read_attribute(path);
  return content ? leading_number(*content) : std::nullopt;
}

std::optional<std::vector<std::filesystem::path>> folder_entries(const std::filesystem::path& folder) {
  auto entries = ask(folder.string(), [folder] { return list_now(folder); });
  if (auto* const observer = access_observer(); observer != nullptr && entries)
    observer->listed(folder, *entries);
  return entries;
}

bool is_there(const std::filesystem::path& path) {
  if (auto* const observer = access_observer()) observer->looked_at(path);
  return ask(path.string(), [path] {
    std::error_code error;
    return std::filesystem::exists(path, error);
  });
}

std::optional<std::filesystem::path> real_path(const std::filesystem::path& path) {
  if (auto* const observer = access_observer()) observer->looked_at(path);
  return ask(path.string(), [path]() -> std::optional<std::filesystem::path> {
    std::error_code error;
    auto real = std::filesystem::canonical(path, error);
    return error ? std::nullopt : std::optional(std::move(real));
  });
}

}  // namespace zymdb
