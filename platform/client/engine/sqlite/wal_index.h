// The header of a write-ahead log's shared-memory file, which changes with every commit of any process.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_WAL_INDEX_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_WAL_INDEX_H

#include <sqlite3.h>

#include <array>
#include <cstddef>

namespace zymdb::client::sqlite {

using WalHeader = std::array<unsigned char, 48>;

// Reads it as SQLite itself does where a read begins, without a lock: the file has two copies, which are the
// same unless somebody is writing them. False without a write-ahead log, and while it is being written.
bool read_wal_header(sqlite3* database, WalHeader& header);

}  // namespace zymdb::client::sqlite

#endif
