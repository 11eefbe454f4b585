#include "client/engine/sqlite/connection.h"

#include <utility>

#include "client/engine/sqlite/file_copy.h"
#include "client/engine/sqlite/rewinding.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

constexpr size_t kPreparedStatements = 64;

}  // namespace

Connection::Connection(const Limits& limits)
    : limits_(limits), authorizer_(limits), statements_(kPreparedStatements) {}

Connection::~Connection() {
  authorizer_.stand_aside();
  statements_.clear();
  journal_.reset();
  if (in_transaction()) sqlite3_exec(database(), "ROLLBACK", nullptr, nullptr, nullptr);
  if (database_ != nullptr) watch_.keeps_its_files();
  database_.reset();
  if (in_transaction()) writer_->leave();
}

Failure Connection::open(const DataSource& source, const std::function<void()>& connected,
                         bool may_be_alone) {
  Opening opening(source, limits_, authorizer_, connected, may_be_alone);
  if (Failure failure = opening.run()) return failure;
  if (limits_.kept != 0 && opening.has_log()) kept_.emplace(limits_.kept);
  database_ = std::move(opening.database);
  catalog_ = std::move(opening.catalog);
  if (const int code = gathering_.attach(database()); code != SQLITE_OK) return failure(code);
  if (opening.access == Access::kShared) wal_index_.emplace(database());
  watch_.begin(database(), opening.access, std::move(opening.names), opening.files);
  return open_journal(source, opening.access);
}

Failure Connection::open_journal(const DataSource& source, Access access) {
  const bool has_one = access == Access::kShared || access == Access::kAlone;
  if (!has_one || catalog_->table(kJournalTable) == nullptr) return {};
  HistoryBounds bounds;
  std::string error;
  if (!configured_history_bounds(bounds, error)) return {ZYM_DB_STATUS_ERROR, error};
  journal_.emplace(database(), *catalog_, source.schema->sql, bounds, wal_index_ ? &*wal_index_ : nullptr);
  return {};
}

KeptResults* Connection::kept_results() {
  WalHeader header;
  if (!kept_ || in_transaction() || !wal_index_->read(header)) return nullptr;
  // Whoever writes into the file past the log, or cuts it short, leaves the log's header as it was.
  if (watch_.was_rewritten()) kept_->clear();
  kept_->look(header);
  return &*kept_;
}

void Connection::shrink_kept_results() {
  if (kept_) kept_->shrink();
}

Failure Connection::prepare(Statement& statement, Prepared*& prepared) {
  authorizer_.watch(statement.kind(),
                    statement.table() != nullptr ? statement.table()->name() : std::string_view());
  prepared = statements_.find(statement.key());
  if (prepared != nullptr) return {};
  if (!statement.sql(sql_)) return {ZYM_DB_STATUS_ERROR, std::string(statement.reason())};
  if (Failure failure = compile(statement.key(), sql_, statement.take_column_names(), prepared))
    return failure;
  prepared->is_gathered = statement.is_gathered();
  return {};
}

Failure Connection::prepare_probe(Statement& statement, Prepared*& prepared) {
  authorizer_.watch(Request::Kind::kQuery, {});
  prepared = statements_.find(statement.probe_key());
  if (prepared != nullptr) return {};
  return compile(statement.probe_key(), statement.probe_sql(), {}, prepared);
}

Failure Connection::compile(std::string_view key, const std::string& sql, std::vector<std::string> names,
                            Prepared*& prepared) {
  sqlite3_stmt* raw = nullptr;
  const int code = sqlite3_prepare_v3(database(), sql.data(), static_cast<int>(sql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &raw, nullptr);
  Prepared fresh{StatementPtr(raw), nullptr, {}, false, 0};
  if (code != SQLITE_OK) return failure(code);
  const bool named = !names.empty();
  for (int column = 0; column < sqlite3_column_count(raw); ++column) {
    if (!named) names.emplace_back(sqlite3_column_name(raw, column));
    fresh.expressions.push_back(sqlite3_column_decltype(raw, column) == nullptr);
  }
  fresh.names = std::make_shared<const NamedColumns>(std::move(names));
  prepared = &statements_.add(key, std::move(fresh));
  return {};
}

Failure Connection::execute(const char* sql) {
  authorizer_.stand_aside();
  const int code = sqlite3_exec(database(), sql, nullptr, nullptr, nullptr);
  return code == SQLITE_OK ? Failure{} : failure(code);
}

Failure Connection::failure(int code) {
  Failure failure = failure_of(database(), code);
  if (is_of_files(failure.status)) failure.reason.insert(0, watch_.path() + ": ");
  if (is_lasting(status_of(code))) watch_.give_up();
  return failure;
}

Failure Connection::begin() {
  return execute("BEGIN IMMEDIATE");
}

Failure Connection::commit() {
  const End end(*this);
  if (Failure failure = record()) return failure;
  return execute("COMMIT");
}

Failure Connection::rollback() {
  const End end(*this);
  return execute("ROLLBACK");
}

Failure Connection::record() {
  authorizer_.stand_aside();
  return journal_ ? journal_->record() : Failure{};
}

// Some failures have ended it already.
Connection::End::~End() {
  sqlite3* const database = connection_.database();
  if (sqlite3_get_autocommit(database) == 0) {
    connection_.authorizer_.stand_aside();
    sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
  }
  if (connection_.journal_) connection_.journal_->forget();
}

Failure Connection::generation(uint64_t& generation) {
  authorizer_.stand_aside();
  if (!journal_) return {ZYM_DB_STATUS_ERROR, "the database has no generation"};
  return journal_->generation(generation);
}

Failure Connection::save_copy(const std::string& path, uint64_t& generation) {
  authorizer_.stand_aside();
  return sqlite::save_copy(database(), path, has_journal() ? &generation : nullptr);
}

Failure Connection::overtaken() const {
  return watch_.is_overtaken() ? Failure{kStatusBusy, "others write it meanwhile"} : Failure{};
}

// The journal does not account for its own rewinding.
Failure Connection::rewind(uint64_t generation) {
  if (!journal_) return {ZYM_DB_STATUS_ERROR, "the database has no journal"};
  if (Failure failure = begin()) return failure;
  const End end(*this);
  if (Failure failure = Rewinding(database(), *catalog_).run(generation)) return failure;
  return execute("COMMIT");
}

}  // namespace zymdb::client::sqlite
