// The header of a write-ahead log's shared-memory file, which changes with every commit of any process.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_WAL_INDEX_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_WAL_INDEX_H

#include <sqlite3.h>

#include <array>
#include <cstdint>

namespace zymdb::client::sqlite {

using WalHeader = std::array<uint64_t, 6>;

class WalIndex {
 public:
  // Of a connection that outlives it. One without a write-ahead log would get such a file by being asked.
  explicit WalIndex(sqlite3* database) : database_(database) {}

  // Reads it as SQLite itself does where a read begins, without a lock: the file has two copies, which are
  // the same unless somebody is writing them. False while it is being written, and before anything was read.
  bool read(WalHeader& header);

 private:
  bool find();

  sqlite3* database_;
  const volatile uint64_t* copies_ = nullptr;  // mapped until the connection ends
};

}  // namespace zymdb::client::sqlite

#endif
