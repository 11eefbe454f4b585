// The inventory's account of its changes: one row for each transaction that changed anything. The newest
// row's id is the generation.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_JOURNAL_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_JOURNAL_H

#include <cstdint>
#include <string>

#include "client/engine/history_bounds.h"
#include "client/engine/journal_entry.h"
#include "client/engine/sqlite/change_recorder.h"
#include "client/engine/sqlite/handles.h"
#include "client/engine/sqlite/wal_index.h"

namespace zymdb::client::sqlite {

class Journal {
 public:
  // Begins to listen to the connection's changes. What it is given outlives the journal, which goes before
  // the connection does. `wal_index` is null where there is no write-ahead log.
  Journal(sqlite3* database, const Catalog& catalog, const char* schema, const HistoryBounds& bounds,
          WalIndex* wal_index);

  // A transaction begins, or ends without a commit.
  void forget() { recorder_.forget(); }

  // The last statements of a transaction: accounts for what it changed.
  Failure record();

  // A statement is run only when somebody has committed since the last call.
  Failure generation(uint64_t& generation);

 private:
  Failure append(const std::string& account);
  Failure find(StatementPtr& statement, const char* sql, JournalEntry& entry);
  Failure run(StatementPtr& statement, const char* sql, const JournalEntry& entry,
              const std::string* account = nullptr);
  Failure prepare(StatementPtr& statement, const char* sql);

  sqlite3* database_;
  HistoryBounds bounds_;
  ChangeRecorder recorder_;
  StatementPtr newest_, oldest_, move_, add_, drop_;
  WalIndex* wal_index_;
  WalHeader seen_{};  // the header under which the generation was read
  bool has_seen_ = false;
  uint64_t generation_ = 0;
};

}  // namespace zymdb::client::sqlite

#endif
