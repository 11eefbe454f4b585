#include "client/engine/sqlite/file_watch.h"

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "client/coarse_clock.h"

namespace zymdb::client::sqlite {
namespace {

// A reader looks this often whether the file was replaced or removed; a writer does before each write.
constexpr int64_t kLookInterval = 250'000'000;

}  // namespace

void FileWatch::begin(sqlite3* database, Access access, FileNames names, const Files& files) {
  database_ = database;
  access_ = access;
  names_ = std::move(names);
  files_ = files;
  looked_at_ = coarse_now();
}

SessionState FileWatch::state(Look look) {
  using Kind = SessionState::Kind;
  const int64_t now = coarse_now();
  if (unusable_ || look == Look::kNow || now - looked_at_ >= kLookInterval) {
    looked_at_ = now;
    if (look == Look::kNow && may_be_written_by_now()) unusable_ = true;
    keeps_its_files();
  }
  if (loss_ != nullptr) return {Kind::kLost, loss_};
  if (is_overtaken()) return {Kind::kOvertaken, nullptr};
  if (look == Look::kNow && access_ == Access::kAlone) return {Kind::kStale, nullptr};
  return {unusable_ ? Kind::kStale : Kind::kUsable, nullptr};
}

bool FileWatch::may_be_taken_over() {
  if (access_ != Access::kAlone) return state(Look::kNow).is_usable();
  return keeps_its_files() && is_whole();
}

bool FileWatch::may_be_written_by_now() const {
  if (access_ == Access::kAlone) return false;
  if (access_ == Access::kImmutable) return may_write_folder_of(names_.wal);
  return sqlite3_db_readonly(database_, "main") == 1 && may_write(names_.database);
}

bool FileWatch::keeps_its_files() {
  if (loss_ != nullptr) return false;
  if (abandoned_) return true;
  const Files found = names_.identify();
  const bool is_rewritten = has_the_file_alone() && found.written != files_.written;
  if (found == files_ && !is_rewritten) {
    was_rewritten_ = was_rewritten_ || found.written != files_.written;
    files_.written = found.written;
    return true;
  }
  unusable_ = true;
  if (access_ == Access::kShared)
    tidy_up(found);
  else
    leave(found);
  return false;
}

// Without files of its own beside the database there is nothing to save or to tidy up.
void FileWatch::leave(const Files& found) {
  if (has_the_file_alone() && found.database != files_.database) loss_ = kReplaced;
}

// What lies at the path now is not this connection's to tidy up, but for what its own database left there:
// SQLite would apply that log to whatever database stands beside it.
void FileWatch::tidy_up(const Files& found) {
  const bool own_wal = found.wal == files_.wal;
  if (found.database != files_.database) {
    loss_ = found.database == FileId{} ? "was removed or emptied" : kReplaced;
    if (own_wal) unlink(names_.wal.c_str());
  } else {
    loss_ = "lost its write-ahead log";
    // What only the lost one holds can still reach the database, unless that was written meanwhile, by
    // whomever: somebody may have copied another one over it.
    if (found.wal == FileId{} && found.written == files_.written)
      sqlite3_wal_checkpoint_v2(database_, nullptr, SQLITE_CHECKPOINT_FULL, nullptr, nullptr);
  }
  // A shared-memory file without its write-ahead log would hide the next one's content.
  if (found.shm == files_.shm) unlink(names_.shm.c_str());
  leave_wal(database_);
}

void FileWatch::abandon() {
  abandoned_ = true;
  unusable_ = true;
  leave_wal(database_);
}

bool FileWatch::is_overtaken() const {
  return access_ == Access::kAlone && !abandoned_ && file_id(names_.wal) != FileId{};
}

bool FileWatch::is_whole() const {
  if (access_ == Access::kAlone) return !unusable_ && !is_overtaken();
  struct stat wal {};
  return !unusable_ && stat(names_.wal.c_str(), &wal) == 0 && wal.st_size == 0;
}

}  // namespace zymdb::client::sqlite
