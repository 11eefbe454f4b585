// Opens a database file: creates it when missing, refuses what is not ours, brings its schema up to date.
#ifndef ZYMDB_PLATFORM_CLIENT_SQLITE_OPENING_H
#define ZYMDB_PLATFORM_CLIENT_SQLITE_OPENING_H

#include <sys/types.h>

#include <string>

#include "client/catalog.h"
#include "client/data_source.h"
#include "client/sqlite/guard.h"
#include "client/sqlite/handles.h"

namespace zymdb::client::sqlite {

// Which file a path names at the moment.
struct FileId {
  dev_t device = 0;
  ino_t inode = 0;

  bool operator==(const FileId&) const = default;
};

// False when the path names no file.
bool identify(const std::string& path, FileId& id);

class Opening {
 public:
  Opening(const DataSource& source, Guard& guard) : source_(source), guard_(guard) {}

  // Returns 0 with database, catalog and file filled, or a status; error() then tells why.
  int run();

  const std::string& error() const { return error_; }

  DatabasePtr database;
  Catalog catalog;
  FileId file;

 private:
  enum class State { kReady, kNew, kOlder, kForeign, kNewer };

  int create_file();
  int connect();
  int configure();
  int examine(State& state);
  int write_ahead();
  int bring_up_to_date();
  int upgrade(State state);
  int read_catalog();

  int execute(const char* sql);
  int read_number(const char* sql, int64_t& value);
  int refuse(State state);
  int fail(int status, std::string why);
  int fail_as_engine(int code);

  const DataSource& source_;
  Guard& guard_;
  int64_t version_ = 0;
  std::string error_;
};

}  // namespace zymdb::client::sqlite

#endif
