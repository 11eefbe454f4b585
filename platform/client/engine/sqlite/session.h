// A thread's session with a SQLite database.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_SESSION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_SESSION_H

#include <memory>
#include <string>

#include "client/engine/engine.h"
#include "client/engine/sqlite/connections.h"

namespace zymdb::client::sqlite {

class IdleConnection;

class SqliteSession final : public Session {
 public:
  SqliteSession(const DataSource& source, WriterQueue& writers, const Limits& limits);
  ~SqliteSession() override { close(); }

  std::mutex& lock() override { return slot_->lock; }
  Opened open(std::unique_lock<std::mutex>& held) override;
  void close() override;
  SessionState state(Look look) override;
  const Catalog& catalog() const override { return slot_->connection->catalog(); }
  int query(Statement& statement, Result& result) override;
  int would_change(Statement& statement, bool& would) override;
  int change(Statement& statement, Change& change) override;
  int begin() override;
  int commit() override;
  int rollback() override;
  int generation(uint64_t& generation) override;
  int save_copy(const char* path, uint64_t& generation) override;
  int rewind(uint64_t generation) override;
  const std::string& error() const override { return error_; }

 private:
  Connection& connection() { return *slot_->connection; }
  bool reads_first() const;
  bool may_be_idle();
  void settle();
  int confirmed(Failure failure);
  int read(const Prepared& prepared, const Statement& statement, Result& result);
  int write(Statement& statement, Change& change);
  int write_alone(Statement& statement, Change& change);
  int end_transaction(Failure (Connection::*end)());
  int outcome(int code);
  int fail(Failure failure);

  DataSource source_;
  WriterQueue& writers_;
  Limits limits_;
  std::shared_ptr<Slot> slot_;
  IdleConnection* const idle_;  // of the session's thread, where the database is opened often
  std::string error_;
  Result unchanged_;  // what a report of nothing new finds: no rows
};

}  // namespace zymdb::client::sqlite

#endif
