// What a connection lets statements do: SQLite asks it for every table, column and function that a statement
// names, and while a statement runs whether it may go on.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_AUTHORIZER_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_AUTHORIZER_H

#include <sqlite3.h>

#include <chrono>
#include <string_view>

#include "client/dialect/statement.h"
#include "client/limits.h"

namespace zymdb::client::sqlite {

class Authorizer {
 public:
  explicit Authorizer(const Limits& limits) : limits_(limits) {}
  Authorizer(const Authorizer&) = delete;
  Authorizer& operator=(const Authorizer&) = delete;

  // Hooks it into the connection, which must not outlive it. Everything is allowed until watch().
  void attach(sqlite3* database);

  // From here on statements may only do what such a statement on `table` must. Starts the running time anew.
  void watch(Request::Kind kind, std::string_view table);

  // For the client's own statements.
  void stand_aside() { watching_ = false; }

 private:
  using Clock = std::chrono::steady_clock;

  static int authorize(void* self, int action, const char* first, const char* second, const char* database,
                       const char* trigger);
  static int check_time(void* self);
  static int wait_for_writer(void* self, int tries);

  bool may_write(std::string_view table) const;
  bool allows(int action, std::string_view first, std::string_view second) const;

  Limits limits_;
  bool watching_ = false;
  Request::Kind kind_ = Request::Kind::kQuery;
  std::string_view table_;
  Clock::time_point started_{};
  Clock::time_point waiting_since_{};
};

}  // namespace zymdb::client::sqlite

#endif
