// Where the databases are.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_DATA_SOURCE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_DATA_SOURCE_H

#include <string>
#include <string_view>

#include "client/engine/schema.h"

namespace zymdb::client {

struct Engine;

struct DataSource {
  std::string address;  // as the engine has it: of SQLite an absolute path
  const Schema* schema = nullptr;
  const Engine* engine = nullptr;
  std::string predecessor = {};  // where it used to lie, from where it moves to its address; empty for none
  bool flushes_commits = true;   // each before it returns; else the device has the newest a while later
};

inline constexpr char kDefaultInventory[] = "/var/lib/zymdb/inventory.db";

// The inventory: the address in ZYMDB_INVENTORY, else the default one.
// False when the variable names what no engine can open; `error` then tells.
bool locate_inventory(DataSource& source, std::string& error);

// The database of this name that belongs to the inventory. Only "propertiesdb" is known.
bool locate_database(std::string_view name, DataSource& source, std::string& error);

}  // namespace zymdb::client

#endif
