// The files that SQLite keeps for a database: itself, the write-ahead log, the shared-memory file.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_DATABASE_FILES_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_DATABASE_FILES_H

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace zymdb::client::sqlite {

// Which file a path names at the moment; {} stands for none.
struct FileId {
  dev_t device = 0;
  ino_t inode = 0;

  bool operator==(const FileId&) const = default;
};

FileId file_id(const std::string& path);

// The files of a database in use. None of them changes as long as a connection is open, unless somebody else
// interferes: SQLite looks for none of that and would mix the files of two databases.
struct Files {
  FileId database;  // {} for an empty one, too: either becomes a new database
  FileId wal;
  FileId shm;
  int64_t written = 0;  // when the database was, in nanoseconds

  bool operator==(const Files& other) const {
    return database == other.database && wal == other.wal && shm == other.shm;
  }
};

struct FileNames {
  std::string database;
  std::string wal;
  std::string shm;

  // Those of the database at a path: SQLite keeps the others beside the file, which a link leads to.
  static FileNames of(const std::string& path, const std::string& file);

  Files identify() const;
};

// The file that a link leads to; the path itself where nothing lies.
std::string resolved(const std::string& path);

// Whether the effective user may.
bool may_read(const std::string& path);
bool may_write(const std::string& path);
bool may_write_folder_of(const std::string& path);

// SQLite makes the files beside a database with its mode. What was made while that could not be written would
// keep it so.
void share_permissions(const std::string& path);

}  // namespace zymdb::client::sqlite

#endif
