#include "common/source_file.h"

#include <fcntl.h>
#include <sys/stat.h>
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
constexpr size_t kLargestAttribute = size_t{4} << 20;

class Descriptor {
 public:
  explicit Descriptor(const std::string& path, int flags = 0)
      : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags)) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool is_open() const { return fd_ >= 0; }

  bool is_file() const {
    struct stat status {};
    return ::fstat(fd_, &status) == 0 && S_ISREG(status.st_mode);
  }

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

// Hands out the content; `take` answers whether it wants more. 0, or the error number.
template <class Take>
int read_parts(const Descriptor& file, Take take) {
  std::array<char, 16384> block;
  ssize_t count = 0;
  while ((count = file.read(block.data(), block.size())) > 0) {
    if (!take(std::string_view(block.data(), static_cast<size_t>(count)))) return EFBIG;
  }
  return count < 0 ? errno : 0;
}

int read_all(const Descriptor& file, size_t largest, std::string& content) {
  return read_parts(file, [&](std::string_view part) {
    content.append(part);
    return content.size() <= largest;
  });
}

void require(int error, const std::string& path) {
  if (error != 0) throw SourceError(path, std::generic_category().message(error));
}

struct Attribute {
  std::optional<std::string> content;
  int error = 0;
};

Attribute read_attribute_now(const std::string& path) {
  // To open a device may set it going already.
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {std::nullopt, errno};
  if (!S_ISREG(status.st_mode)) return {std::nullopt, EINVAL};
  const Descriptor file(path, O_NONBLOCK | O_NOCTTY);
  if (!file.is_open()) return {std::nullopt, errno};
  std::string content;
  const int error = file.is_file() ? read_all(file, kLargestAttribute, content) : EINVAL;
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
  const Descriptor file(path);
  require(file.is_open() ? 0 : errno, path);
  std::string content;
  require(read_all(file, kLargestSource, content), path);
  return content;
}

void read_source_in_parts(const std::string& path, const std::function<void(std::string_view)>& take) {
  const Descriptor file(path);
  require(file.is_open() ? 0 : errno, path);
  require(read_parts(file,
                     [&take](std::string_view part) {
                       take(part);
                       return true;
                     }),
          path);
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

std::optional<std::filesystem::path> link_target(const std::filesystem::path& link) {
  if (auto* const observer = access_observer()) observer->looked_at(link);
  return ask(link.string(), [link]() -> std::optional<std::filesystem::path> {
    std::error_code error;
    auto target = std::filesystem::read_symlink(link, error);
    return error ? std::nullopt : std::optional(std::move(target));
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
