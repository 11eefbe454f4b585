// What a handle stands for, and how the threads of the process share it.
//
// Every thread has a session of its own with each database, opened on its first use and closed when the
// thread or the handle ends. A session is locked while an operation uses it, which costs its thread nothing
// and lets another thread's zym_db_close, or a fork, wait for the operation's end.
//
// A child process never uses a session of its parent. The fork waits for running operations, so that the
// child finds SQLite's own state whole; the child's first call then drops what it inherited, without touching
// the files, and opens anew. Merely forgetting the inherited connections would not do: SQLite counts the
// locks of a process per file, and the child would take its parent's locks for its own.
//
// SQLite shares the index of the log between all connections of a process to a file, and takes the one beside
// a file of the same name for its own: a connection to the file that took another's place would cut the index
// short under those to the old one, whose next read is a bus error. Therefore databases are opened one at a
// time, and between finding its file and using it, an opening ends the sessions with any other file that was
// there.
//
// Locks are taken in this order: the opening of the shared handle, openings, the registry, a database, a
// session.
#ifndef ZYMDB_PLATFORM_CLIENT_SESSION_DATABASE_H
#define ZYMDB_PLATFORM_CLIENT_SESSION_DATABASE_H

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "client/dialect/statement.h"
#include "client/engine/data_source.h"
#include "client/engine/engine.h"

namespace zymdb::client {

class Database;

// A thread's session with a database.
struct ThreadSession {
  explicit ThreadSession(std::shared_ptr<Database> owner) : database(std::move(owner)) {}

  std::mutex mutex;
  std::shared_ptr<Database> database;
  std::unique_ptr<Session> session;  // null until used, and after a failure that it cannot outlive
  std::atomic<uint64_t> file{0};     // of the session, for those who do not wait for its lock
  Statement statement;
  std::atomic<bool> closed{false};

  // For the lock's owner.
  void set(std::unique_ptr<Session> opened) {
    session = std::move(opened);
    file = session != nullptr ? session->file() : 0;
  }
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

  // A handle that was closed rests when one thread alone used it: that thread keeps the session, in case it
  // opens the database again. False: others use it too, or it rests or is closed already.
  bool rest(const ThreadSession& only);
  bool is_resting() const { return resting_; }
  void wake() { resting_ = false; }

  std::mutex& mutex() { return mutex_; }
  // For the owner of mutex(): the living ones, as std::shared_ptr<ThreadSession>.
  template <class Visit>
  void for_each_session(Visit visit) const {
    for (const auto& each : sessions_) {
      if (auto session = each.lock()) visit(std::move(session));
    }
  }

 private:
  DataSource source_;
  WriterQueue writers_;
  std::mutex mutex_;
  std::vector<std::weak_ptr<ThreadSession>> sessions_;
  bool closed_ = false;
  std::atomic<bool> resting_{false};
};

}  // namespace zymdb::client

struct _zym_db_handle_t final : zymdb::client::Database {
  using Database::Database;
};

#endif
