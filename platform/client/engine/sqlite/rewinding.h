// Takes back what the journal accounts for.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_REWINDING_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_REWINDING_H

#include <cstdint>
#include <map>
#include <string>

#include "client/dialect/catalog.h"
#include "client/engine/sqlite/handles.h"

namespace zymdb::client::sqlite {

// Within a transaction of the caller's. Volatile columns stay as they are.
class Rewinding {
 public:
  Rewinding(sqlite3* database, const Catalog& catalog) : database_(database), catalog_(catalog) {}

  // Every table as it was when `generation` was the newest, and the journal too.
  Failure run(uint64_t generation);

 private:
  Failure check(int64_t generation);
  Failure take_back(const std::string& account);
  Failure forget_later(const std::string& generation);
  Failure remove_added(const std::string& account);
  Failure restore_former(const std::string& account);
  Failure restore(sqlite3_stmt* cell);
  Failure prepare(const std::string& sql, sqlite3_stmt*& statement);
  Failure step(sqlite3_stmt* statement);
  Failure failure(int code) const { return failure_of(database_, code); }

  sqlite3* database_;
  const Catalog& catalog_;
  std::map<std::string, StatementPtr> statements_;
};

}  // namespace zymdb::client::sqlite

#endif
