// A thread's connection to a SQLite database.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_SESSION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_SESSION_H

#include <span>
#include <string>

#include "client/engine/engine.h"
#include "client/engine/sqlite/authorizer.h"
#include "client/engine/sqlite/opening.h"
#include "client/engine/sqlite/statement_cache.h"

namespace zymdb::client::sqlite {

class SqliteSession final : public Session {
 public:
  SqliteSession(const DataSource& source, WriterQueue& writers, const Limits& limits);
  ~SqliteSession() override;

  int open(const std::function<void()>& connected);

  const Catalog& catalog() const override { return catalog_; }
  int query(Statement& statement, Result& result) override;
  int would_change(Statement& statement, bool& would) override;
  int change(Statement& statement, Change& change) override;
  int begin() override;
  int commit() override;
  int rollback() override;
  bool is_usable(bool now) override;
  uint64_t file() const override { return files_.database.inode; }
  const char* loss() const override { return loss_; }
  bool must_stay() const override;
  bool may_rest() const override;
  void disown() override;
  const std::string& error() const override { return error_; }

 private:
  int prepare(Statement& statement, Prepared*& prepared);
  int prepare_probe(Statement& statement, Prepared*& prepared);
  int compile(std::string_view key, const std::string& sql, std::vector<std::string> names,
              Prepared*& prepared);
  int bind(sqlite3_stmt* statement, std::span<const Argument> arguments);
  int write(Statement& statement, Change& change);
  int end_transaction(const char* sql);
  bool keeps_its_files();
  bool may_be_written_by_now() const;
  void leave(const Files& found);
  void abandon(const Files& found);
  int execute(const char* sql);
  int fail(int status, std::string why);
  int fail_as_engine(int code);
  int outcome(int code) { return code == SQLITE_DONE ? 0 : fail_as_engine(code); }

  DataSource source_;
  WriterQueue& writers_;
  Limits limits_;
  Authorizer authorizer_;
  Access access_ = Access::kShared;
  Catalog catalog_;
  FileNames names_;
  Files files_;
  DatabasePtr database_;
  StatementCache statements_;  // after the database: statements go first
  std::string sql_;
  std::string error_;
  int64_t checked_at_ = 0;
  bool in_transaction_ = false;
  bool unusable_ = false;
  bool disowned_ = false;
  const char* loss_ = nullptr;
};

}  // namespace zymdb::client::sqlite

#endif
