// A database as one moment has it, in a file of SQLite's.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_TABLE_COPY_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_TABLE_COPY_H

#include "client/engine/mariadb/connection.h"
#include "client/engine/mariadb/tables.h"
#include "client/engine/schema.h"

namespace zymdb::client::mariadb {

// `generation` receives the copy's; 0 for a database without a journal.
Failure save_copy(Connection& connection, const Schema& schema, const Tables& tables, const char* path,
                  uint64_t& generation);

}  // namespace zymdb::client::mariadb

#endif
