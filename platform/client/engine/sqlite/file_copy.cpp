#include "client/engine/sqlite/file_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "client/engine/sqlite/own_statements.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

constexpr mode_t kFileMode = 0640;

Failure make_file(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
  if (descriptor < 0) return {errno == ENOSPC ? kStatusFull : kStatusIo, std::strerror(errno)};
  close(descriptor);
  return {};
}

// All pages in one go, so that they are of one moment; writers of the source go on beside it.
Failure copy_pages(sqlite3* from, sqlite3* to) {
  sqlite3_backup* const backup = sqlite3_backup_init(to, "main", from, "main");
  if (backup == nullptr) return failure_of(to, sqlite3_errcode(to));
  sqlite3_backup_step(backup, -1);
  const int code = sqlite3_backup_finish(backup);
  return code == SQLITE_OK ? Failure{} : failure_of(to, code);
}

Failure read_generation(sqlite3* database, uint64_t& generation) {
  int64_t number = 0;
  Failure failure = read_number(database, R"(SELECT ifnull(max("_id"), 0) FROM "Journal")", number);
  generation = static_cast<uint64_t>(number);
  return failure;
}

Failure fill(sqlite3* from, const std::string& path, uint64_t* generation) {
  sqlite3* opened = nullptr;
  const int code =
      sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_READWRITE, nullptr);
  const DatabasePtr to(opened);
  if (code != SQLITE_OK) return failure_of(opened, code);
  // Nothing is lost with a copy that was cut off; it is flushed once, below.
  if (Failure failure = execute(opened, "PRAGMA synchronous=OFF")) return failure;
  if (Failure failure = copy_pages(from, opened)) return failure;
  if (generation != nullptr) {
    if (Failure failure = read_generation(opened, *generation)) return failure;
  }
  // The copy is one file, without a write-ahead log beside it.
  return execute(opened, "PRAGMA synchronous=FULL; PRAGMA journal_mode=DELETE");
}

}  // namespace

Failure save_copy(sqlite3* database, const std::string& path, uint64_t* generation) {
  Failure failure = make_file(path);
  if (!failure) {
    failure = fill(database, path, generation);
    if (failure) unlink(path.c_str());
  }
  if (failure) failure.reason.insert(0, path + ": ");
  return failure;
}

}  // namespace zymdb::client::sqlite
