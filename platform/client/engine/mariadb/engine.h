// MariaDB: a database is a server's, or a cluster's.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_ENGINE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_ENGINE_H

#include "client/engine/module.h"

namespace zymdb::client::mariadb {

// The client that opened the module.
const ModuleHost& host();

}  // namespace zymdb::client::mariadb

#endif
