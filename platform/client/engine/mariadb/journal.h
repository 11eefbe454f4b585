// The inventory's account of its changes, as every engine keeps it: one row for each transaction that changed
// anything. The newest row's id is the generation.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_JOURNAL_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_JOURNAL_H

#include <string>

#include "client/engine/history_bounds.h"
#include "client/engine/mariadb/connection.h"

namespace zymdb::client::mariadb {

// An account that is empty: nothing but volatile columns changed, or none is kept.
Failure append_to_journal(Connection& connection, const HistoryBounds& bounds, const std::string& account);

Failure read_generation(Connection& connection, uint64_t& generation);

}  // namespace zymdb::client::mariadb

#endif
