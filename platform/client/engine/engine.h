// What the client needs of a database engine: sessions of one thread that read and change.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_ENGINE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_ENGINE_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "client/dialect/catalog.h"
#include "client/dialect/flavour.h"
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

// What a session answers about itself. All but a usable one are to be opened, or opened anew.
struct SessionState {
  // kOvertaken: others write what was read as it stood; what came of a read since is to be read again.
  enum class Kind : uint8_t { kUsable, kStale, kLost, kOvertaken };

  Kind kind = Kind::kUsable;
  const char* why = nullptr;  // what became of the database of a lost one

  bool is_usable() const { return kind == Kind::kUsable; }
  bool is_to_be_read_again() const { return kind == Kind::kLost || kind == Kind::kOvertaken; }
};

// What came of opening a session. On a failure the session's error() is the whole line.
struct Opened {
  int status = 0;
  const char* loss = nullptr;  // what became of the database that the process had open in its place
};

// How closely a session looks at what it is connected to: from time to time, or at once.
enum class Look : uint8_t { kAtTimes, kNow };

// A session of one thread. It is locked by whoever uses it, and by the engine where that ends a connection
// from elsewhere: all operations but close() are for the lock's owner. They answer a status; error() then
// tells the engine's own words.
class Session {
 public:
  virtual ~Session() = default;

  virtual std::mutex& lock() = 0;

  // Connects, creating or upgrading the database as its schema tells. `held` is the session's lock, which is
  // released meanwhile.
  virtual Opened open(std::unique_lock<std::mutex>& held) = 0;
  // Ends the connection, and a transaction with it, once no operation runs. Takes the lock itself; for any
  // thread.
  virtual void close() = 0;

  // A transaction goes on whatever becomes of the database: its commit tells.
  virtual SessionState state(Look look) = 0;

  // The rest is for a session that is usable, or was until now.
  virtual const Catalog& catalog() const = 0;

  virtual int query(Statement& statement, Result& result) = 0;
  // Whether an update or delete would change a row. It lets an unchanged report end without a lock or a
  // write.
  virtual int would_change(Statement& statement, bool& would) = 0;
  virtual int change(Statement& statement, Change& change) = 0;

  virtual int begin() = 0;
  virtual int commit() = 0;
  virtual int rollback() = 0;

  // The number of the last change that was committed.
  virtual int generation(uint64_t& generation) = 0;
  // Writes a new file that holds the database as one moment had it, and tells of which generation.
  virtual int save_copy(const char* path, uint64_t& generation) = 0;
  // Takes back every change after `generation`.
  virtual int rewind(uint64_t generation) = 0;

  virtual const std::string& error() const = 0;
};

// An engine, chosen by an address's form.
struct Engine {
  std::string_view scheme;  // what an address begins with, before ":"

  // Where the database of a schema lies, for the address of the inventory without its scheme. False when it
  // is no address; `error` then tells what it lacks. One that ends with a full stop is told without the
  // address, which holds what no log shall hold.
  bool (*locate)(std::string_view address, const Schema& schema, DataSource& source, std::string& error);
  // Takes what an address with a scheme says behind its first "?". False when that is no choice; as above.
  bool (*choose)(std::string_view choices, DataSource& source, std::string& error);

  // A session that is not open yet. `writers` outlives it.
  std::unique_ptr<Session> (*make_session)(const DataSource& source, WriterQueue& writers,
                                           const Limits& limits);

  const Flavour& flavour;  // of its SQL

  // A fork is between these two: no operation of the engine runs and no session opens.
  void (*stand_still)();
  void (*go_on)();
  // In a child process: ends its parent's connections without a word to the database.
  void (*abandon_inherited)();
};

}  // namespace zymdb::client

#endif
