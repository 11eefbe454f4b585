#include "client/engine/mariadb/session.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "client/engine/mariadb/engine.h"
#include "client/engine/mariadb/journal.h"
#include "client/engine/mariadb/marks.h"
#include "client/engine/mariadb/rewinding.h"
#include "client/engine/mariadb/table_copy.h"
#include "client/status.h"

namespace zymdb::client::mariadb {
namespace {

constexpr char kTransactionLasts[] = "a transaction is open on this thread already";
constexpr char kWriterLasts[] = "another thread's transaction lasts";
constexpr char kLost[] = "lost its server";
constexpr char kOutcomeUnknown[] = "; whether the change was written is not known";
constexpr std::chrono::milliseconds kPause{5};
constexpr std::chrono::milliseconds kPauseOfCluster{100};

// Those of the process, for forks.
struct Sessions {
  std::mutex mutex;
  std::vector<MariadbSession*> all;

  // Never destroyed: threads may outlive the statics of the process.
  static Sessions& instance() {
    static Sessions* const sessions = new Sessions;
    return *sessions;
  }
};

// One for each schema, for as long as the process lives: what statements name are its columns.
const Tables& tables_of(const Schema& schema) {
  static std::mutex mutex;
  static std::map<const Schema*, std::unique_ptr<const Tables>> known;
  const std::lock_guard lock(mutex);
  std::unique_ptr<const Tables>& tables = known[&schema];
  if (tables == nullptr) {
    auto read = std::make_unique<Tables>();
    std::string error;
    if (!read_tables(schema.sql, *read, error)) {
      host().warn(error.c_str());
      read = std::make_unique<Tables>();
    }
    tables = std::move(read);
  }
  return *tables;
}

void add_cell(Result& result, const Argument& cell, bool is_expression, bool& fits) {
  switch (cell.type) {
    case Argument::Type::kInteger:
      return result.add_integer(cell.integer);
    case Argument::Type::kReal:
      return result.add_real(cell.real);
    case Argument::Type::kText:
      fits = fits && result.add_text(cell.text);
      return;
    case Argument::Type::kBlob:
      fits = fits && result.add_blob(cell.text);
      return;
    default:
      return is_expression ? result.add_empty_aggregate() : result.add_null();
  }
}

bool add_row(Result& result, Row row, const std::vector<bool>& expressions) {
  if (!result.begin_row()) return false;
  bool fits = true;
  for (size_t i = 0; i < row.size() && fits; ++i) add_cell(result, row[i], expressions[i], fits);
  if (fits) result.end_row();
  return fits;
}

}  // namespace

MariadbSession::MariadbSession(const DataSource& source, WriterQueue& writers, const Limits& limits)
    : source_(source),
      writers_(writers),
      limits_(limits),
      tables_(&tables_of(*source.schema)),
      volatiles_(source.schema->sql),
      subject_{*source.schema, *tables_, volatiles_, bounds_} {
  Sessions& sessions = Sessions::instance();
  const std::lock_guard lock(sessions.mutex);
  sessions.all.push_back(this);
}

MariadbSession::~MariadbSession() {
  close();
  Sessions& sessions = Sessions::instance();
  const std::lock_guard lock(sessions.mutex);
  std::erase(sessions.all, this);
}

void MariadbSession::stand_still() {
  Sessions& sessions = Sessions::instance();
  sessions.mutex.lock();
  for (MariadbSession* const session : sessions.all) session->lock_.lock();
}

void MariadbSession::go_on() {
  Sessions& sessions = Sessions::instance();
  for (MariadbSession* const session : sessions.all) session->lock_.unlock();
  sessions.mutex.unlock();
}

// A transaction stays with the parent, and so does its place among the writers.
void MariadbSession::abandon_inherited() {
  Sessions& sessions = Sessions::instance();
  const std::lock_guard lock(sessions.mutex);
  for (MariadbSession* const session : sessions.all) {
    const std::lock_guard held(session->lock_);
    if (session->connection_ == nullptr) continue;
    session->connection_->abandon();
    session->connection_.reset();
    session->transaction_.reset();
    session->broken_ = {};
  }
}

Opened MariadbSession::open(std::unique_lock<std::mutex>&) {
  std::string error;
  if (!parse_address(source_.address, address_, error) || !configured_history_bounds(bounds_, error))
    return {outcome({ZYM_DB_STATUS_ERROR, error}), nullptr};
  const bool was_lost = std::exchange(is_lost_, false);
  if (const int status = outcome(connect())) return {status, nullptr};
  return {0, was_lost ? kLost : nullptr};
}

// A host that is lost once it is open is passed by, as one that does not open is.
Failure MariadbSession::connect() {
  Failure failure;
  for (size_t tried = 0; tried < address_.hosts.size(); ++tried) {
    failure = try_to_connect();
    if (!failure.ends_connection()) break;
    host_ += 1;
  }
  return failure;
}

Failure MariadbSession::try_to_connect() {
  forget_transaction();
  connection_.reset();
  auto fresh = std::make_unique<Connection>(limits_);
  if (Failure failure = fresh->open(address_, host_)) {
    failure.reason.insert(0, "cannot open the " + std::string(source_.schema->name) + " database: ");
    return failure;
  }
  is_absent_ = false;
  if (tables_->names.empty()) return {ZYM_DB_STATUS_ERROR, "the schema is not understood"};
  Failure failure =
      bring_up_to_date(*fresh, *source_.schema, *tables_, host().creation_is_allowed(), is_absent_);
  if (failure) {
    failure.reason.insert(
        0, "cannot open the " + std::string(source_.schema->name) + " database " + address_.database + ": ");
    return failure;
  }
  connection_ = std::move(fresh);
  return {};
}

void MariadbSession::close() {
  const std::lock_guard lock(lock_);
  forget_transaction();
  connection_.reset();
}

void MariadbSession::forget_transaction() {
  if (!transaction_) return;
  transaction_.reset();
  broken_ = {};
  writers_.leave();
}

// What a transaction's connection became its commit tells.
SessionState MariadbSession::state(Look) {
  if (connection_ == nullptr) return {SessionState::Kind::kStale, nullptr};
  if (is_lost_ && !transaction_) return {SessionState::Kind::kLost, kLost};
  return {};
}

// A read leaves nothing: it is repeated, on another host where this one is lost.
template <class Read>
Failure MariadbSession::read(Read read) {
  const auto deadline = std::chrono::steady_clock::now() + limits_.writer;
  size_t lost_hosts = 0;
  for (;;) {
    Failure failure = broken_ ? broken_ : read();
    if (!failure.ends_transaction()) return failure;
    note(failure);
    if (transaction_) broken_ = failure;
    if (transaction_ || is_over(failure, deadline, lost_hosts)) return failure;
    if (Failure lost = go_on_after(failure, deadline)) return lost;
  }
}

// A host that is silent is lost later than others are waited for: each of the others is still asked once.
bool MariadbSession::is_over(const Failure& failure, Deadline deadline, size_t& lost) const {
  if (std::chrono::steady_clock::now() <= deadline) return false;
  return !failure.ends_connection() || ++lost >= address_.hosts.size();
}

// On another host where this one is lost. Nodes of a cluster that has lost one answer nobody for a moment.
Failure MariadbSession::go_on_after(const Failure& failure, Deadline deadline) {
  std::this_thread::sleep_for(kPause);
  if (!failure.ends_connection()) return {};
  host().warn(failure.reason.c_str());
  host_ += 1;
  while (Failure lost = connect()) {
    if (address_.hosts.size() == 1 || std::chrono::steady_clock::now() > deadline) return lost;
    std::this_thread::sleep_for(kPauseOfCluster);
  }
  is_lost_ = false;
  return {};
}

Failure MariadbSession::shape_of(std::string_view key, Request::Kind kind, const std::string& sql,
                                 std::vector<std::string> names, Shape*& shape) {
  Shape fresh;
  std::string reason;
  if (!fresh.read(catalog(), kind, sql, std::move(names), reason)) return {ZYM_DB_STATUS_ERROR, reason};
  shape = &shapes_.add(key, std::move(fresh));
  return {};
}

int MariadbSession::query(Statement& statement, Result& result) {
  return outcome(read([&]() -> Failure {
    if (transaction_) {
      if (Failure failure = transaction_->send_rows()) return failure;
    }
    Shape* shape = shapes_.find(statement.key());
    if (shape == nullptr) {
      std::string sql;
      if (!statement.sql(sql)) return {ZYM_DB_STATUS_ERROR, std::string(statement.reason())};
      if (Failure failure =
              shape_of(statement.key(), Request::Kind::kQuery, sql, statement.take_column_names(), shape))
        return failure;
    }
    std::vector<Argument> arguments(statement.arguments().begin(), statement.arguments().end());
    std::string reason;
    const Variant* const variant = shape->reading(arguments, reason);
    if (variant == nullptr) return {ZYM_DB_STATUS_ERROR, reason};
    result.start(variant->names, limits_.result);
    return connection_->run(variant->sql, variant->arguments_of(arguments), variant->classes,
                            [&](Row row) { return add_row(result, row, variant->expressions); });
  }));
}

int MariadbSession::would_change(Statement& statement, bool& would) {
  would = true;
  if (transaction_ || !statement.has_probe()) return 0;
  return outcome(read([&]() -> Failure {
    const std::string key(statement.probe_key());
    Shape* shape = shapes_.find(key);
    if (shape == nullptr) {
      if (Failure failure = shape_of(key, Request::Kind::kQuery, statement.probe_sql(), {}, shape))
        return failure;
    }
    const std::span<const Argument> given = statement.probe_arguments();
    std::vector<Argument> arguments(given.begin(), given.end());
    std::string reason;
    const Variant* const variant = shape->reading(arguments, reason);
    if (variant == nullptr) return {ZYM_DB_STATUS_ERROR, reason};
    would = false;
    return connection_->run(variant->sql, variant->arguments_of(arguments), variant->classes, [&](Row) {
      would = true;
      return true;
    });
  }));
}

Failure MariadbSession::make_change(Transaction& transaction, Statement& statement, Change& change) {
  Shape* shape = shapes_.find(statement.key());
  if (shape == nullptr) {
    std::string sql;
    if (!statement.sql(sql)) return {ZYM_DB_STATUS_ERROR, std::string(statement.reason())};
    if (Failure failure = shape_of(statement.key(), statement.kind(), sql, {}, shape)) return failure;
  }
  return transaction.change(statement, *shape, change);
}

int MariadbSession::change(Statement& statement, Change& change) {
  if (is_absent_) return outcome({kStatusReadOnly, "there is no such database, and none may be made"});
  if (transaction_) {
    Failure failure = broken_ ? broken_ : make_change(*transaction_, statement, change);
    if (failure.ends_transaction()) broken_ = failure;
    return outcome(std::move(failure));
  }
  return outcome(write([&](Transaction& transaction) {
    change = {};
    return make_change(transaction, statement, change);
  }));
}

// A transaction of the session's own. It is tried again where nothing of it is left: another writer, perhaps
// of another node, was first, or the host was lost before the commit.
template <class Work>
Failure MariadbSession::write(Work work) {
  const WriterTurn turn(writers_, limits_.writer);
  if (!turn) return {kStatusBusy, kWriterLasts};
  const auto deadline = std::chrono::steady_clock::now() + limits_.writer;
  size_t lost_hosts = 0;
  for (;;) {
    bool may_repeat = true;
    Failure failure = write_once(work, may_repeat);
    if (!failure.ends_transaction()) return failure;
    note(failure);
    if (!may_repeat || is_over(failure, deadline, lost_hosts)) return failure;
    if (Failure lost = go_on_after(failure, deadline)) return lost;
  }
}

template <class Work>
Failure MariadbSession::write_once(Work work, bool& may_repeat) {
  Transaction transaction(*connection_, subject_);
  if (Failure failure = transaction.begin()) return failure;
  Failure failure = work(transaction);
  if (!failure) failure = transaction.record();
  if (failure) {
    if (!failure.ends_connection()) transaction.rollback();
    return failure;
  }
  failure = transaction.commit();
  if (failure.ends_connection()) {
    may_repeat = false;
    failure.reason += kOutcomeUnknown;
  }
  return failure;
}

int MariadbSession::begin() {
  if (transaction_) return outcome({ZYM_DB_STATUS_ERROR, kTransactionLasts});
  if (is_absent_) return outcome({kStatusReadOnly, "there is no such database, and none may be made"});
  WriterTurn turn(writers_, limits_.writer);
  if (!turn) return outcome({kStatusBusy, kWriterLasts});
  Failure failure = read([&] { return Transaction(*connection_, subject_).begin(); });
  if (failure) return outcome(std::move(failure));
  transaction_.emplace(*connection_, subject_, NewRows::kGathered);
  turn.keep();
  return 0;
}

int MariadbSession::commit() {
  return outcome(end_transaction(true));
}

int MariadbSession::rollback() {
  return outcome(end_transaction(false));
}

Failure MariadbSession::end_transaction(bool commits) {
  if (!transaction_) return {ZYM_DB_STATUS_ERROR, "no transaction is open on this thread"};
  Failure failure = commits ? broken_ : Failure{};
  if (commits && !failure) failure = transaction_->record();
  const bool reaches_commit = commits && !failure;
  if (reaches_commit) failure = transaction_->commit();
  if (reaches_commit && failure.ends_connection()) failure.reason += kOutcomeUnknown;
  if ((!reaches_commit || failure) && !failure.ends_connection() && !broken_.ends_connection())
    transaction_->rollback();
  note(failure);
  forget_transaction();
  return failure;
}

int MariadbSession::generation(uint64_t& generation) {
  if (tables_->catalog.table(kJournalTable) == nullptr)
    return outcome({ZYM_DB_STATUS_ERROR, "the database has no generation"});
  return outcome(read([&] { return read_generation(*connection_, generation); }));
}

int MariadbSession::save_copy(const char* path, uint64_t& generation) {
  if (transaction_) return outcome({ZYM_DB_STATUS_ERROR, kTransactionLasts});
  return outcome(
      read([&] { return mariadb::save_copy(*connection_, *source_.schema, *tables_, path, generation); }));
}

int MariadbSession::rewind(uint64_t generation) {
  if (transaction_) return outcome({ZYM_DB_STATUS_ERROR, kTransactionLasts});
  if (tables_->catalog.table(kJournalTable) == nullptr)
    return outcome({ZYM_DB_STATUS_ERROR, "the database has no journal"});
  return outcome(write([&](Transaction&) { return take_back(*connection_, tables_->catalog, generation); }));
}

void MariadbSession::note(const Failure& failure) {
  if (failure.ends_connection()) is_lost_ = true;
}

int MariadbSession::outcome(Failure failure) {
  error_ = std::move(failure.reason);
  return failure.status;
}

}  // namespace zymdb::client::mariadb
