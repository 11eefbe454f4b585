// Brings a database's tables to what the schema says, and tells which version they are of.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_MARKS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_MARKS_H

#include "client/engine/mariadb/connection.h"
#include "client/engine/mariadb/tables.h"
#include "client/engine/schema.h"

namespace zymdb::client::mariadb {

// Refuses what is newer, or of another kind, and leaves it as it was. Where nothing may be made, `is_absent`
// tells that there are no tables: empty ones of this connection alone stand for them, if the schema admits
// it.
Failure bring_up_to_date(Connection& connection, const Schema& schema, const Tables& tables, bool may_create,
                         bool& is_absent);

}  // namespace zymdb::client::mariadb

#endif
