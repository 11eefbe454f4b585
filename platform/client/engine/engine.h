// What the client needs of a database: a session of one thread that reads and changes. SQLite implements it.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_ENGINE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_ENGINE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "client/dialect/catalog.h"
#include "client/dialect/statement.h"
#include "client/engine/data_source.h"
#include "client/engine/writer_queue.h"
#include "client/limits.h"
#include "client/result/result.h"

namespace zymdb::client {

// What a change did: rows changed or deleted, or the id of the inserted row.
struct Change {
  int64_t rows = 0;
  int64_t id = 0;
};

// What a session can lose its database by.
inline constexpr char kReplaced[] = "was replaced";

// A connection of one thread. Operations answer a status; error() then tells the engine's own words.
class Session {
 public:
  virtual ~Session() = default;

  virtual const Catalog& catalog() const = 0;

  virtual int query(Statement& statement, Result& result) = 0;
  // Whether an update or delete would change a row. It lets an unchanged report end without a lock or a
  // write.
  virtual int would_change(Statement& statement, bool& would) = 0;
  virtual int change(Statement& statement, Change& change) = 0;

  virtual int begin() = 0;
  virtual int commit() = 0;
  virtual int rollback() = 0;

  // False when the data source names another database by now, or this one cannot be used any further. Looked
  // at from time to time, and each time when `now` is set. A transaction goes on: its commit tells.
  virtual bool is_usable(bool now) = 0;

  // The number of the file that it was opened on.
  virtual uint64_t file() const = 0;

  // What became of the database that it was opened on (kReplaced), once is_usable() has noticed; else
  // null.
  virtual const char* loss() const = 0;

  // Whether it has a transaction that can still be committed: all others end before the database is opened
  // anew.
  virtual bool must_stay() const = 0;

  // Whether it may stay open though its handle is closed: it has no transaction, and the file alone, as it
  // may be copied, is all of the database.
  virtual bool may_rest() const = 0;

  // Called in a child process on a session of its parent, before it is destroyed: nothing may reach the
  // database any more.
  virtual void disown() = 0;

  virtual const std::string& error() const = 0;
};

struct Opened {
  std::unique_ptr<Session> session;  // null on failure
  int status = 0;
  std::string error;
};

// Opens a session, creating or upgrading the database as its schema tells. `writers` outlives the session.
// `connected` is called once the file is open, before anything in it or beside it is used.
Opened open_session(
    const DataSource& source, WriterQueue& writers, const Limits& limits = {},
    const std::function<void()>& connected = [] {});

// The number of the file that a path leads to; 0 for none.
uint64_t file_at(const std::string& path);

}  // namespace zymdb::client

#endif
