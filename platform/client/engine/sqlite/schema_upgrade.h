// Creates a database's tables, or brings them from the file's version to the current one.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_SCHEMA_UPGRADE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_SCHEMA_UPGRADE_H

#include "client/engine/schema.h"
#include "client/engine/sqlite/handles.h"

namespace zymdb::client::sqlite {

// Why an empty database is refused where none may be created.
inline constexpr char kEmpty[] = "it is empty";

// Refuses what is not ours, or newer, and leaves it as it was.
Failure bring_up_to_date(sqlite3* database, const Schema& schema);

}  // namespace zymdb::client::sqlite

#endif
