// How a kind of database is marked, created and upgraded.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SCHEMA_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SCHEMA_H

#include <cstdint>
#include <span>

namespace zymdb::client {

// Takes a database of version `from` to the next.
struct UpgradeStep {
  int from;
  const char* sql;
};

struct Schema {
  const char* name;
  uint32_t application_id;  // in the file's header: tells the project's files from others
  int version;
  const char* sql;  // creates every table of the current version
  std::span<const UpgradeStep> steps;
  bool may_be_absent = false;    // where none may be created, a missing one counts as empty
  bool is_opened_often = false;  // opened and closed for each use
};

extern const Schema kInventorySchema;
extern const Schema kPropertiesSchema;

}  // namespace zymdb::client

#endif
