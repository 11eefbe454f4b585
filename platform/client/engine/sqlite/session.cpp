#include "client/engine/sqlite/session.h"

#include <unistd.h>

#include <new>
#include <utility>

#include "client/engine/creation.h"
#include "client/engine/sqlite/idle_connection.h"
#include "client/engine/sqlite/rows.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

constexpr char kTransactionLasts[] = "a transaction is open on this thread already";
constexpr char kWriterLasts[] = "another thread's transaction lasts";

// The end of a transaction gives back its stay in the queue of writers.
class TransactionRelease {
 public:
  explicit TransactionRelease(Connection& connection) : connection_(connection) {}
  ~TransactionRelease() { connection_.release_transaction(); }
  TransactionRelease(const TransactionRelease&) = delete;
  TransactionRelease& operator=(const TransactionRelease&) = delete;

 private:
  Connection& connection_;
};

}  // namespace

SqliteSession::SqliteSession(const DataSource& source, WriterQueue& writers, const Limits& limits)
    : source_(source),
      writers_(writers),
      limits_(limits),
      slot_(Connections::instance().add_slot()),
      idle_(source.schema->is_opened_often ? IdleConnection::of_thread() : nullptr) {}

// Who makes no databases makes no files where reading needs none, and properties are read above all.
bool SqliteSession::reads_first() const {
  return source_.schema->is_opened_often || !creation_is_allowed();
}

Opened SqliteSession::open(std::unique_lock<std::mutex>& held) {
  Connections& all = Connections::instance();
  const bool was_open = slot_->connection != nullptr;
  const char* loss = was_open ? connection().watch().loss() : nullptr;
  held.unlock();
  const std::lock_guard opening(all.opening);
  if (was_open) all.end(source_.address);
  if (!was_open && idle_ != nullptr && idle_->give(source_.address, *slot_)) {
    held.lock();
    return {};
  }
  auto fresh = std::make_unique<Connection>(limits_);
  const auto connected = [&] {
    if (all.end_those_to_other_files(source_.address)) loss = kReplaced;
  };
  // What was open may be on its way to write.
  Failure failure = fresh->open(source_, connected, !was_open && reads_first());
  held.lock();
  if (failure) return {fail(std::move(failure)), nullptr};
  slot_->set(std::move(fresh));
  return {0, loss};
}

void SqliteSession::close() {
  if (may_be_idle()) return idle_->keep(*slot_);
  std::unique_lock lock(slot_->lock);
  const bool was_overtaken = slot_->connection != nullptr && connection().watch().is_overtaken();
  slot_->set(nullptr);
  lock.unlock();
  if (was_overtaken) settle();
}

// A writer that ended before left its log to who was still reading: the last one puts it into the database.
void SqliteSession::settle() {
  try {
    Connections& all = Connections::instance();
    const std::lock_guard opening(all.opening);
    Connection last(limits_);
    last.open(source_, [&] { all.end_those_to_other_files(source_.address); });
  } catch (const std::bad_alloc&) {
    // The next one to open the database does it.
  }
}

// For the thread that opened it alone, and where the file alone, as it may be copied, is all of the database.
bool SqliteSession::may_be_idle() {
  if (idle_ == nullptr || idle_ != IdleConnection::known()) return false;
  const std::lock_guard lock(slot_->lock);
  return slot_->connection != nullptr && !connection().in_transaction() && connection().watch().is_whole() &&
         Connections::instance().is_alone(*slot_);
}

SessionState SqliteSession::state(Look look) {
  IdleConnection::expire();
  if (slot_->connection == nullptr) return {SessionState::Kind::kStale, nullptr};
  return connection().state(look);
}

int SqliteSession::query(Statement& statement, Result& result) {
  Prepared* prepared = nullptr;
  if (Failure failure = connection().prepare(statement, prepared)) return fail(std::move(failure));
  KeptResults* const kept = connection().kept_results();
  if (kept != nullptr && kept->find(prepared->number, statement.arguments(), result)) return 0;
  int status = read(*prepared, statement, result);
  if (status == 0) status = confirmed({});
  if (status == 0 && kept != nullptr && !kept->offer(result)) Connections::instance().share_out_room(*slot_);
  return status;
}

int SqliteSession::read(const Prepared& prepared, const Statement& statement, Result& result) {
  const Run run(prepared.statement.get());
  if (const int code = run.bind(statement.arguments()); code != SQLITE_OK) return outcome(code);
  result.start(prepared.names, limits_.result);
  if (prepared.is_gathered) {
    connection().gathering().begin(result);
    const int code = run.step();
    return code == SQLITE_ROW ? 0 : outcome(code);
  }
  int code = SQLITE_OK;
  while ((code = run.step()) == SQLITE_ROW) {
    if (!read_row(prepared, result)) return fail({kStatusTooLarge, kTooLarge});
  }
  return outcome(code);
}

int SqliteSession::would_change(Statement& statement, bool& would) {
  would = true;
  if (connection().in_transaction() || !statement.has_probe()) return 0;
  Prepared* prepared = nullptr;
  if (Failure failure = connection().prepare_probe(statement, prepared)) return fail(std::move(failure));
  KeptResults* const kept = connection().kept_results();
  would = kept == nullptr || !kept->find(prepared->number, statement.probe_arguments(), unchanged_);
  if (!would) return 0;
  const Run run(prepared->statement.get());
  if (const int code = run.bind(statement.probe_arguments()); code != SQLITE_OK) return outcome(code);
  const int code = run.step();
  would = code == SQLITE_ROW;
  int status = would ? 0 : outcome(code);
  if (status == 0) status = confirmed({});
  // What would change something will soon have done it.
  if (status == 0 && !would && kept != nullptr) {
    unchanged_.start(prepared->names, limits_.result);
    if (!kept->offer(unchanged_)) Connections::instance().share_out_room(*slot_);
  }
  return status;
}

int SqliteSession::change(Statement& statement, Change& change) {
  if (connection().in_transaction()) return write(statement, change);
  const WriterTurn turn(writers_, limits_.writer);
  if (!turn) return fail({kStatusBusy, kWriterLasts});
  return connection().has_journal() ? write_alone(statement, change) : write(statement, change);
}

// The change and the account of it are one transaction.
int SqliteSession::write_alone(Statement& statement, Change& change) {
  if (Failure failure = connection().begin()) return fail(std::move(failure));
  const Connection::End end(connection());
  if (const int status = write(statement, change)) return status;
  Failure failure = connection().commit();
  return failure ? fail(std::move(failure)) : 0;
}

int SqliteSession::write(Statement& statement, Change& change) {
  sqlite3* const database = connection().database();
  if (connection().in_transaction() && sqlite3_get_autocommit(database) != 0)
    return fail({ZYM_DB_STATUS_ERROR, "an earlier failure ended the transaction"});
  Prepared* prepared = nullptr;
  if (Failure failure = connection().prepare(statement, prepared)) return fail(std::move(failure));
  const Run run(prepared->statement.get());
  if (const int code = run.bind(statement.arguments()); code != SQLITE_OK) return outcome(code);
  const int code = run.step();
  change.rows = sqlite3_changes64(database);
  change.id = sqlite3_last_insert_rowid(database);
  return outcome(code);
}

int SqliteSession::begin() {
  if (connection().in_transaction()) return fail({ZYM_DB_STATUS_ERROR, kTransactionLasts});
  WriterTurn turn(writers_, limits_.writer);
  if (!turn) return fail({kStatusBusy, kWriterLasts});
  if (Failure failure = connection().begin()) return fail(std::move(failure));
  connection().hold_transaction(writers_);
  turn.keep();
  return 0;
}

int SqliteSession::commit() {
  if (!connection().in_transaction() || connection().must_stay()) return end_transaction(&Connection::commit);
  end_transaction(&Connection::rollback);
  FileWatch& watch = connection().watch();
  watch.keeps_its_files();
  const char* const loss = watch.loss() != nullptr ? watch.loss() : "changed";
  return fail({kStatusIo, source_.address + " " + loss + " during the transaction"});
}

int SqliteSession::rollback() {
  return end_transaction(&Connection::rollback);
}

int SqliteSession::generation(uint64_t& generation) {
  return confirmed(connection().generation(generation));
}

int SqliteSession::save_copy(const char* path, uint64_t& generation) {
  if (connection().in_transaction()) return fail({ZYM_DB_STATUS_ERROR, kTransactionLasts});
  Failure failure = connection().save_copy(path, generation);
  if (failure) return fail(std::move(failure));
  const int status = confirmed({});
  if (status != 0) unlink(path);
  return status;
}

int SqliteSession::rewind(uint64_t generation) {
  if (connection().in_transaction()) return fail({ZYM_DB_STATUS_ERROR, kTransactionLasts});
  const WriterTurn turn(writers_, limits_.writer);
  if (!turn) return fail({kStatusBusy, kWriterLasts});
  Failure failure = connection().rewind(generation);
  return failure ? fail(std::move(failure)) : 0;
}

int SqliteSession::end_transaction(Failure (Connection::*end)()) {
  if (!connection().in_transaction())
    return fail({ZYM_DB_STATUS_ERROR, "no transaction is open on this thread"});
  const TransactionRelease release(connection());
  Failure failure = (connection().*end)();
  return failure ? fail(std::move(failure)) : 0;
}

int SqliteSession::confirmed(Failure failure) {
  if (!failure) failure = connection().overtaken();
  return failure ? fail(std::move(failure)) : 0;
}

int SqliteSession::outcome(int code) {
  return code == SQLITE_DONE ? 0 : fail(connection().failure(code));
}

int SqliteSession::fail(Failure failure) {
  error_ = std::move(failure.reason);
  return failure.status;
}

}  // namespace zymdb::client::sqlite
