// Takes back what the journal accounts for.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_REWINDING_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_REWINDING_H

#include "client/dialect/catalog.h"
#include "client/engine/mariadb/connection.h"

namespace zymdb::client::mariadb {

// Every table as it was when `generation` was the newest, and the journal too, within a transaction of the
// caller's. Volatile columns stay as they are.
Failure take_back(Connection& connection, const Catalog& catalog, uint64_t generation);

}  // namespace zymdb::client::mariadb

#endif
