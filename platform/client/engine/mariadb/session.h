// A thread's session with a MariaDB database.
//
// It goes on by itself where a host is lost: a read is repeated on another one, and so is a change that
// certainly left nothing. Whether a commit that got no answer was heard, nobody knows: that is a failure of
// its own and is never repeated.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_SESSION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_SESSION_H

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "client/engine/engine.h"
#include "client/engine/mariadb/address.h"
#include "client/engine/mariadb/connection.h"
#include "client/engine/mariadb/shapes.h"
#include "client/engine/mariadb/transaction.h"

namespace zymdb::client::mariadb {

class MariadbSession final : public Session {
 public:
  MariadbSession(const DataSource& source, WriterQueue& writers, const Limits& limits);
  ~MariadbSession() override;

  std::mutex& lock() override { return lock_; }
  Opened open(std::unique_lock<std::mutex>& held) override;
  void close() override;
  SessionState state(Look look) override;
  const Catalog& catalog() const override { return tables_->catalog; }
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

  static void stand_still();
  static void go_on();
  static void abandon_inherited();

 private:
  using Deadline = std::chrono::steady_clock::time_point;

  Failure connect();
  Failure try_to_connect();
  Failure go_on_after(const Failure& failure, Deadline deadline);
  bool is_over(const Failure& failure, Deadline deadline, size_t& lost) const;
  template <class Read>
  Failure read(Read read);
  template <class Work>
  Failure write(Work work);
  template <class Work>
  Failure write_once(Work work, bool& may_repeat);
  Failure shape_of(std::string_view key, Request::Kind kind, const std::string& sql,
                   std::vector<std::string> names, Shape*& shape);
  Failure make_change(Transaction& transaction, Statement& statement, Change& change);
  Failure end_transaction(bool commits);
  void forget_transaction();
  void note(const Failure& failure);
  int outcome(Failure failure);

  DataSource source_;
  WriterQueue& writers_;
  Limits limits_;
  std::mutex lock_;
  Address address_;
  const Tables* tables_ = nullptr;
  VolatileColumns volatiles_;
  HistoryBounds bounds_;
  Subject subject_;
  size_t host_ = 0;
  std::unique_ptr<Connection> connection_;
  bool is_absent_ = false;
  bool is_lost_ = false;
  Shapes shapes_;
  std::optional<Transaction> transaction_;  // of the caller's
  Failure broken_;                          // why that one cannot be committed
  std::string error_;
};

}  // namespace zymdb::client::mariadb

#endif
