// A database that used to lie elsewhere moves to its place.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_PREDECESSOR_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_PREDECESSOR_H

#include "client/engine/data_source.h"
#include "client/engine/sqlite/handles.h"

namespace zymdb::client::sqlite {

// Renames the source's predecessor, if there is one of its kind and nothing in its place yet. It moves whole:
// what its write-ahead log holds reaches the file first, and whoever uses it is waited for.
Failure take_over_predecessor(const DataSource& source);

}  // namespace zymdb::client::sqlite

#endif
