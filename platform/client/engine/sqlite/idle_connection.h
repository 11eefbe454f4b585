// The connection that a thread keeps for a while after it closed the database, in case it opens it again.
// Opening and closing a database that nobody else has open makes and removes its write-ahead log each time.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_IDLE_CONNECTION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_IDLE_CONNECTION_H

#include <cstdint>
#include <memory>
#include <string>

#include "client/engine/sqlite/connections.h"

namespace zymdb::client::sqlite {

class IdleConnection {
 public:
  // The calling thread's own; null once it ends.
  static IdleConnection* of_thread();
  static IdleConnection* known();

  // Ends what has been idle for too long.
  static void expire();

  IdleConnection() : slot_(Connections::instance().add_slot()) {}
  ~IdleConnection() { end(); }
  IdleConnection(const IdleConnection&) = delete;
  IdleConnection& operator=(const IdleConnection&) = delete;

  // Takes the slot's connection, which nobody holds locked, in place of what was idle before.
  void keep(Slot& from);

  // Puts it into a slot, if it is one to the path and that is still the same file. Else it goes.
  bool give(const std::string& path, Slot& to);

 private:
  void end();

  std::shared_ptr<Slot> slot_;
  int64_t since_ = 0;
};

}  // namespace zymdb::client::sqlite

#endif
