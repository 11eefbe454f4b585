#include "client/engine/sqlite/journal.h"

#include "client/engine/sqlite/rows.h"
#include "zymdb_db.h"

namespace zymdb::client::sqlite {
namespace {

#define ZYMDB_ENTRIES R"(SELECT "_id", "Time", "Size", "Changes" IS NOT NULL FROM "Journal" ORDER BY "_id")"
constexpr char kNewest[] = ZYMDB_ENTRIES " DESC LIMIT 1";
constexpr char kOldest[] = ZYMDB_ENTRIES " LIMIT 1";
#undef ZYMDB_ENTRIES
constexpr char kMove[] = R"(UPDATE "Journal" SET "_id"=?1, "Time"=?2 WHERE "_id"=?1-1)";
constexpr char kAdd[] = R"(INSERT INTO "Journal" ("_id", "Time", "Size", "Changes") VALUES (?1, ?2, ?3, ?4))";
constexpr char kDrop[] = R"(DELETE FROM "Journal" WHERE "_id"<?1 AND ("Time"<?2 OR "Size"<=?3))";

}  // namespace

Journal::Journal(sqlite3* database, const Catalog& catalog, const char* schema, const HistoryBounds& bounds,
                 WalIndex* wal_index)
    : database_(database), bounds_(bounds), recorder_(schema), wal_index_(wal_index) {
  recorder_.attach(database, catalog);
}

Failure Journal::record() {
  if (recorder_.has_failed()) return {ZYM_DB_STATUS_NO_MEMORY, "out of memory"};
  if (!recorder_.has_changes()) return {};
  return append(bounds_.keeps_any() ? recorder_.account() : std::string());
}

Failure Journal::append(const std::string& account) {
  JournalEntry newest;
  if (Failure failure = find(newest_, kNewest, newest)) return failure;
  const JournalEntry entry = entry_after(newest, account);
  if (entry.takes_place_of(newest)) return run(move_, kMove, entry);
  if (Failure failure = run(add_, kAdd, entry, account.empty() ? nullptr : &account)) return failure;
  JournalEntry oldest;
  if (Failure failure = find(oldest_, kOldest, oldest)) return failure;
  const JournalEntry dropped = what_to_drop(oldest, entry, bounds_);
  return dropped.id != 0 ? run(drop_, kDrop, dropped) : Failure{};
}

Failure Journal::generation(uint64_t& generation) {
  WalHeader header;
  const bool has_header = wal_index_ != nullptr && wal_index_->read(header);
  if (!has_header || !has_seen_ || header != seen_) {
    JournalEntry newest;
    if (Failure failure = find(newest_, kNewest, newest)) return failure;
    generation_ = static_cast<uint64_t>(newest.id);
    // It may be a later one's by now: the next call then finds another header and reads again.
    seen_ = header;
    has_seen_ = has_header;
  }
  generation = generation_;
  return {};
}

Failure Journal::find(StatementPtr& statement, const char* sql, JournalEntry& entry) {
  if (Failure failure = prepare(statement, sql)) return failure;
  const Run run(statement.get());
  const int code = run.step();
  if (code != SQLITE_ROW) return code == SQLITE_DONE ? Failure{} : failure_of(database_, code);
  sqlite3_stmt* const row = statement.get();
  entry = {sqlite3_column_int64(row, 0), sqlite3_column_int64(row, 1), sqlite3_column_int64(row, 2),
           sqlite3_column_int(row, 3) != 0};
  return {};
}

Failure Journal::run(StatementPtr& statement, const char* sql, const JournalEntry& entry,
                     const std::string* account) {
  if (Failure failure = prepare(statement, sql)) return failure;
  const Run run(statement.get());
  sqlite3_bind_int64(statement.get(), 1, entry.id);
  sqlite3_bind_int64(statement.get(), 2, entry.time);
  sqlite3_bind_int64(statement.get(), 3, entry.size);
  if (account != nullptr)
    sqlite3_bind_text64(statement.get(), 4, account->data(), account->size(), SQLITE_STATIC, SQLITE_UTF8);
  else
    sqlite3_bind_null(statement.get(), 4);
  const int code = run.step();
  return code == SQLITE_DONE ? Failure{} : failure_of(database_, code);
}

Failure Journal::prepare(StatementPtr& statement, const char* sql) {
  if (statement != nullptr) return {};
  sqlite3_stmt* raw = nullptr;
  const int code = sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr);
  statement.reset(raw);
  return code == SQLITE_OK ? Failure{} : failure_of(database_, code);
}

}  // namespace zymdb::client::sqlite
