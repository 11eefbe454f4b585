#include "common/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "common/source_file.h"

namespace zymdb {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPrivateMode = 0640;
constexpr mode_t kSharedMode = 0666;

[[noreturn]] void fail(const fs::path& path, int error) {
  throw SourceError(path.string(), std::generic_category().message(error));
}

void require(const std::error_code& error, const fs::path& path) {
  if (error) throw SourceError(path.string(), error.message());
}

class Descriptor {
 public:
  Descriptor(const fs::path& path, const fs::path& told, int flags, mode_t mode = 0)
      : told_(told), fd_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {
    if (fd_ < 0) fail();
  }
  ~Descriptor() { close(fd_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return fd_; }

  void write(std::string_view content) const {
    while (!content.empty()) {
      const ssize_t count = ::write(fd_, content.data(), content.size());
      if (count < 0 && errno != EINTR) fail();
      if (count > 0) content.remove_prefix(static_cast<size_t>(count));
    }
  }
  void require(int status) const {
    if (status != 0) fail();
  }

 private:
  [[noreturn]] void fail() const { zymdb::fail(told_, errno); }

  const fs::path told_;
  const int fd_;
};

// Goes with the object unless it is kept.
class NewFile {
 public:
  NewFile(const fs::path& path, const fs::path& told, mode_t mode)
      : path_(path), file_(path, told, O_WRONLY | O_CREAT | O_EXCL, mode) {}
  ~NewFile() {
    if (!path_.empty()) unlink(path_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void fill(std::string_view content) const {
    file_.write(content);
    file_.require(fsync(file_.get()));
  }
  void keep() { path_.clear(); }

  void keep_as(const fs::path& name) {
    file_.require(::rename(path_.c_str(), name.c_str()));
    keep();
  }

 private:
  fs::path path_;
  const Descriptor file_;
};

// "copy/" is the folder "copy".
fs::path without_end(const fs::path& folder) {
  return folder.has_filename() ? folder : folder.parent_path();
}

// What a link leads to, which need not be there.
fs::path behind_links(fs::path path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int links = 0; links < kMostLinks && fs::is_symlink(path, error); ++links)
    path = path.parent_path() / fs::read_symlink(path, error);
  return path;
}

void sync_folder(const fs::path& folder, const fs::path& told) {
  const Descriptor opened(folder, told, O_RDONLY | O_DIRECTORY);
  opened.require(fsync(opened.get()));
}

}  // namespace

void write_new_file(const std::string& path, std::string_view content) {
  NewFile file(path, path, kPrivateMode);
  file.fill(content);
  file.keep();
}

void replace_file(const std::string& path, std::string_view content) {
  std::error_code error;
  if (const auto kind = fs::status(path, error).type(); kind != fs::file_type::not_found) {
    require(error, path);
    if (kind != fs::file_type::regular) return Descriptor(path, path, O_WRONLY).write(content);
  }
  const fs::path place = behind_links(fs::absolute(path));
  // A file of that name was left by a process of our number, which is no more.
  const fs::path draft = place.string() + "." + std::to_string(getpid());
  unlink(draft.c_str());
  NewFile file(draft, path, kSharedMode);
  file.fill(content);
  file.keep_as(place);
  sync_folder(place.parent_path(), path);
}

void require_new_or_empty(const fs::path& folder) {
  std::error_code error;
  if (!fs::exists(folder, error)) return;
  const bool is_empty = fs::is_directory(folder, error) && fs::is_empty(folder, error);
  require(error, folder);
  if (!is_empty) throw SourceError(folder.string(), "is not an empty folder");
}

NewFolder::NewFolder(const fs::path& folder) : folder_(without_end(fs::absolute(folder).lexically_normal())) {
  require_new_or_empty(folder_);
  std::string name = folder_.string() + ".XXXXXX";
  if (mkdtemp(name.data()) == nullptr) fail(folder_, errno);
  draft_ = name;
}

NewFolder::~NewFolder() {
  std::error_code ignored;
  if (!draft_.empty()) fs::remove_all(draft_, ignored);
}

void NewFolder::add_folder(const fs::path& place) const {
  std::error_code error;
  fs::create_directories(draft_ / place, error);
  require(error, folder_ / place);
}

void NewFolder::add_file(const fs::path& place, std::string_view content) const {
  add_folder(place.parent_path());
  Descriptor(draft_ / place, folder_ / place, O_WRONLY | O_CREAT | O_EXCL, kSharedMode).write(content);
}

void NewFolder::add_link(const fs::path& place, const std::string& target) const {
  add_folder(place.parent_path());
  std::error_code error;
  fs::create_symlink(target, draft_ / place, error);
  require(error, folder_ / place);
}

// One flush for all of its files, of which there may be thousands.
void NewFolder::finish() {
  const Descriptor filled(draft_, folder_, O_RDONLY | O_DIRECTORY);
  filled.require(syncfs(filled.get()));
  filled.require(::rename(draft_.c_str(), folder_.c_str()));
  draft_.clear();
  sync_folder(folder_.parent_path(), folder_);
}

}  // namespace zymdb
