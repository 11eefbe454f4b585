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
  std::string predecessor = {};  // where it used to lie, from where it moves to its path; empty for none
};

inline constexpr char kDefaultInventory[] = "/var/lib/zymdb/inventory.db";

// The inventory: the path or "sqlite:" URI in ZYMDB_INVENTORY, else the default one.
// False when the variable names what no engine can open; `error` then tells.
bool locate_inventory(DataSource& source, std::string& error);

// The database of this name beside the inventory, NAME-properties.db beside NAME.db. Only "propertiesdb" is
// known. All inventories of a folder used to share one, which is the default inventory's.
bool locate_database(std::string_view name, DataSource& source, std::string& error);

}  // namespace zymdb::client

#endif
