// A schema's tables for MariaDB. schema/*.sql stays the one truth about them: what stands there is read and
// written anew in MariaDB's words.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_TABLES_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_TABLES_H

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "client/dialect/catalog.h"

namespace zymdb::client::mariadb {

struct Tables {
  Catalog catalog;
  std::vector<std::string> names;     // in the order of the schema
  std::set<std::string> lasting_ids;  // tables whose ids never come back
  // What makes that which is missing of it: tables and indexes, and columns that older tables lack. Each may
  // be run again.
  std::vector<std::string> statements;
  std::vector<std::string> additions;
};

// False when a statement is not understood; `error` is that statement.
bool read_tables(std::string_view schema, Tables& tables, std::string& error);

}  // namespace zymdb::client::mariadb

#endif
