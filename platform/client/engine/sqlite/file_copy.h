// A database as one moment has it, in a file of its own.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_FILE_COPY_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_FILE_COPY_H

#include <cstdint>
#include <string>

#include "client/engine/sqlite/handles.h"

namespace zymdb::client::sqlite {

// Makes the file, which must not exist, while others read and write the database. A failure leaves none.
// `generation` receives the copy's; null for a database without a journal.
Failure save_copy(sqlite3* database, const std::string& path, uint64_t* generation);

}  // namespace zymdb::client::sqlite

#endif
