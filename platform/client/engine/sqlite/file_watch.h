// Whether a connection's files are still those at its path.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_FILE_WATCH_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_FILE_WATCH_H

#include <cstdint>
#include <utility>

#include "client/engine/engine.h"
#include "client/engine/sqlite/opening.h"

namespace zymdb::client::sqlite {

// What a connection can lose its database by.
inline constexpr char kReplaced[] = "was replaced";

class FileWatch {
 public:
  // Of a connection that has just been opened and outlives it.
  void begin(sqlite3* database, Access access, FileNames names, const Files& files);

  SessionState state(Look look);

  // Looks at the files. Where they are others by now, saves what can be saved and tidies up what the
  // connection left beside them.
  bool keeps_its_files();

  // Whether it is good for who opens the database now.
  bool may_be_taken_over();

  // After a failure that the connection cannot outlive.
  void give_up() { unusable_ = true; }
  // The connection is the parent's: its files are not this process's to look at or tidy up.
  void abandon();

  // All of it is as it was, and nothing waits in the write-ahead log.
  bool is_whole() const;
  // Others write what was read as it stood.
  bool is_overtaken() const;
  bool is_unchanged() const { return names_.identify() == files_; }

  // Whether the database's file was written since this was asked last, as far as was looked.
  bool was_rewritten() { return std::exchange(was_rewritten_, false); }

  const std::string& path() const { return names_.database; }
  uint64_t file() const { return files_.database.inode; }
  const char* loss() const { return loss_; }

 private:
  bool may_be_written_by_now() const;
  bool has_the_file_alone() const { return access_ == Access::kImmutable || access_ == Access::kAlone; }
  void leave(const Files& found);
  void tidy_up(const Files& found);

  sqlite3* database_ = nullptr;
  Access access_ = Access::kShared;
  FileNames names_;
  Files files_;
  int64_t looked_at_ = 0;
  bool unusable_ = false;
  bool abandoned_ = false;
  bool was_rewritten_ = false;
  const char* loss_ = nullptr;
};

}  // namespace zymdb::client::sqlite

#endif
