// A connection to a SQLite database, with what was prepared on it.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_CONNECTION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_CONNECTION_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "client/engine/engine.h"
#include "client/engine/sqlite/authorizer.h"
#include "client/engine/sqlite/file_watch.h"
#include "client/engine/sqlite/gathering.h"
#include "client/engine/sqlite/journal.h"
#include "client/engine/sqlite/kept_results.h"
#include "client/engine/sqlite/statement_cache.h"
#include "client/engine/sqlite/wal_index.h"

namespace zymdb::client::sqlite {

class Connection {
 public:
  explicit Connection(const Limits& limits);
  // Ends a transaction that is open, and leaves files that are not its own any more.
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // `connected` is called once the file is open, before anything in it or beside it is used. One that
  // `may_be_alone` reads a database that nobody else has open without making a file.
  Failure open(const DataSource& source, const std::function<void()>& connected, bool may_be_alone = false);

  const Catalog& catalog() const { return *catalog_; }
  FileWatch& watch() { return watch_; }
  SessionState state(Look look) { return writer_ != nullptr ? SessionState{} : watch_.state(look); }

  // Null where what is asked now cannot be known to be what was answered before.
  KeptResults* kept_results();
  void shrink_kept_results();

  // A failure that the connection cannot outlive makes it unusable.
  Failure prepare(Statement& statement, Prepared*& prepared);
  Failure prepare_probe(Statement& statement, Prepared*& prepared);
  Failure execute(const char* sql);
  Failure failure(int code);

  sqlite3* database() const { return database_.get(); }
  Gathering& gathering() { return gathering_; }

  // A transaction of SQLite's. Its commit accounts for what changed. However the two others come out, it has
  // ended.
  Failure begin();
  Failure commit();
  Failure rollback();

  // Where one has to end: takes it back unless it was committed.
  class End {
   public:
    explicit End(Connection& connection) : connection_(connection) {}
    ~End();
    End(const End&) = delete;
    End& operator=(const End&) = delete;

   private:
    Connection& connection_;
  };

  // Whether changes are accounted for, each within a transaction.
  bool has_journal() const { return journal_.has_value(); }
  Failure generation(uint64_t& generation);
  Failure save_copy(const std::string& path, uint64_t& generation);
  Failure rewind(uint64_t generation);

  // What came of a read is good unless others were writing what it read as it stood.
  Failure overtaken() const;

  // A caller's transaction has a stay in the queue of writers.
  bool in_transaction() const { return writer_ != nullptr; }
  void hold_transaction(WriterQueue& writers) { writer_ = &writers; }
  void release_transaction() { std::exchange(writer_, nullptr)->leave(); }
  // Whether it has one that can still be committed.
  bool must_stay() const { return in_transaction() && watch_.is_unchanged(); }

 private:
  Failure open_journal(const DataSource& source, Access access);
  Failure record();
  Failure compile(std::string_view key, const std::string& sql, std::vector<std::string> names,
                  Prepared*& prepared);

  Limits limits_;
  Authorizer authorizer_;
  Gathering gathering_;
  std::shared_ptr<const Catalog> catalog_;
  FileWatch watch_;
  DatabasePtr database_;
  StatementCache statements_;          // after the database: statements go first
  std::optional<WalIndex> wal_index_;  // where others write the log, too
  std::optional<Journal> journal_;
  std::optional<KeptResults> kept_;
  std::string sql_;
  WriterQueue* writer_ = nullptr;
};

}  // namespace zymdb::client::sqlite

#endif
