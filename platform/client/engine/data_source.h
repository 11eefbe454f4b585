// Where the databases are.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_DATA_SOURCE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_DATA_SOURCE_H

#include <string>
#include <string_view>

#include "client/engine/schema.h"

namespace zymdb::client {

struct DataSource {
  std::string path;  // absolute
  const Schema* schema = nullptr;
};

// The inventory: the path or "sqlite:" URI in ZYMDB_INVENTORY, else /var/lib/zymdb/inventory.db.
// False when the variable names what no engine can open; `error` then tells.
bool locate_inventory(DataSource& source, std::string& error);

// The database of this name, NAME.db in the inventory's folder. Only "propertiesdb" is known.
bool locate_database(std::string_view name, DataSource& source, std::string& error);

}  // namespace zymdb::client

#endif
