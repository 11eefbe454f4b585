// Opens a database file: creates it when missing, refuses what is not ours, brings its schema up to date.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_OPENING_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_OPENING_H

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>

#include "client/dialect/catalog.h"
#include "client/engine/data_source.h"
#include "client/engine/sqlite/guard.h"
#include "client/engine/sqlite/handles.h"

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
  FileId log;
  FileId index;         // of the log
  int64_t written = 0;  // when the database was, in nanoseconds

  bool operator==(const Files& other) const {
    return database == other.database && log == other.log && index == other.index;
  }
};

struct FileNames {
  std::string database;
  std::string log;
  std::string index;

  Files identify() const;
};

class Opening {
 public:
  Opening(const DataSource& source, Guard& guard, const std::function<void()>& connected)
      : source_(source), guard_(guard), connected_(connected) {}

  // Returns 0 with database, catalog and file filled, or a status; error() then tells why.
  int run();

  const std::string& error() const { return error_; }

  DatabasePtr database;
  Catalog catalog;
  FileNames names;
  Files files;

 private:
  enum class State { kReady, kNew, kOlder, kForeign, kNewer };

  int try_once();
  bool is_replaced() const;
  void let_go();

  int create_file();
  int connect();
  void share_permissions() const;
  int configure();
  int examine(State& state);
  int write_ahead();
  int bring_up_to_date();
  int upgrade(State state);
  int read_catalog();
  int note_files();

  int execute(const char* sql);
  int read_number(const char* sql, int64_t& value);
  int refuse(State state);
  int fail(int status, std::string why);
  int fail_as_engine(int code);

  const DataSource& source_;
  Guard& guard_;
  const std::function<void()>& connected_;
  FileId connected_to_;
  int64_t version_ = 0;
  std::string error_;
};

}  // namespace zymdb::client::sqlite

#endif
