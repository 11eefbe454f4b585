#include "client/engine/sqlite/database_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>

namespace zymdb::client::sqlite {
namespace {

constexpr char kWalSuffix[] = "-wal";
constexpr char kShmSuffix[] = "-shm";

constexpr mode_t kPermissions = 0777;

bool may(const std::string& path, int access) {
  return faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0;
}

}  // namespace

FileId file_id(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? FileId{status.st_dev, status.st_ino} : FileId{};
}

FileNames FileNames::of(const std::string& path, const std::string& file) {
  return {path, file + kWalSuffix, file + kShmSuffix};
}

Files FileNames::identify() const {
  Files files;
  struct stat status {};
  if (stat(database.c_str(), &status) == 0 && status.st_size != 0) {
    files.database = {status.st_dev, status.st_ino};
    files.written = int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
  }
  files.wal = file_id(wal);
  files.shm = file_id(shm);
  return files;
}

std::string resolved(const std::string& path) {
  char real[PATH_MAX];
  return realpath(path.c_str(), real) != nullptr ? real : path;
}

bool may_read(const std::string& path) {
  return may(path, R_OK);
}

bool may_write(const std::string& path) {
  return may(path, W_OK);
}

bool may_write_folder_of(const std::string& path) {
  return may_write(std::filesystem::path(path).parent_path());
}

void share_permissions(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return;
  for (const char* suffix : {kWalSuffix, kShmSuffix}) {
    const std::string beside = path + suffix;
    if (!may_write(beside) && errno == EACCES) chmod(beside.c_str(), status.st_mode & kPermissions);
  }
}

}  // namespace zymdb::client::sqlite
