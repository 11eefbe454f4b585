// What a handle stands for, and how the threads of the process share it.
//
// Every thread has a session of its own with each database, made on its first use and closed when the thread
// or the handle ends. A session is locked while an operation uses it, which costs its thread nothing and lets
// another thread's zym_db_close, or a fork, wait for the operation's end.
//
// Locks are taken in this order: the opening of the shared handle, the registry, a database, the engine's.
#ifndef ZYMDB_PLATFORM_CLIENT_SESSION_DATABASE_H
#define ZYMDB_PLATFORM_CLIENT_SESSION_DATABASE_H

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "client/dialect/statement.h"
#include "client/engine/engine.h"

namespace zymdb::client {

class Database;

// A thread's session with a database.
struct ThreadSession {
  explicit ThreadSession(std::shared_ptr<Database> owner);

  std::shared_ptr<Database> database;
  std::unique_ptr<Session> session;
  Statement statement;
  std::atomic<bool> closed{false};

  // Ends it for good.
  void close();
};

class Database {
 public:
  explicit Database(DataSource source) : source_(std::move(source)) {}

  const DataSource& source() const { return source_; }
  WriterQueue& writers() { return writers_; }

  // Null when the handle was closed meanwhile.
  static std::shared_ptr<ThreadSession> join(const std::shared_ptr<Database>& database);

  // Ends every thread's session once its operation is over.
  void close();

  std::mutex& mutex() { return mutex_; }

 private:
  DataSource source_;
  WriterQueue writers_;
  std::mutex mutex_;
  std::vector<std::weak_ptr<ThreadSession>> sessions_;
  bool closed_ = false;
};

}  // namespace zymdb::client

struct _zym_db_handle_t final : zymdb::client::Database {
  using Database::Database;
};

#endif
