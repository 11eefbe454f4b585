// Owners of SQLite's objects, and its result codes as statuses of the client.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_HANDLES_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_HANDLES_H

#include <sqlite3.h>

#include <memory>
#include <string>

namespace zymdb::client::sqlite {

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using DatabasePtr = std::unique_ptr<sqlite3, CloseDatabase>;

// For a connection, which may be null, to files that are not its own any more: closing it then neither
// checkpoints nor removes the write-ahead log, it only lets go of memory and descriptors.
void leave_wal(sqlite3* database);

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementPtr = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

struct Failure {
  int status = 0;
  std::string reason;

  explicit operator bool() const { return status != 0; }
};

// What the last call on the connection, which may be null, failed with.
Failure failure_of(sqlite3* database, int code);

// The client's status for a result code, extended or not.
int status_of(int code);

// Whether the cause lies in the files, not in the statement.
bool is_of_files(int status);

// After these the connection's view of the file cannot be trusted.
bool is_lasting(int status);

}  // namespace zymdb::client::sqlite

#endif
