#include "client/engine/sqlite/session.h"

#include <sys/stat.h>
#include <unistd.h>

#include <new>

#include "client/coarse_clock.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

constexpr size_t kPreparedStatements = 64;

constexpr char kWriterLasts[] = "another thread's transaction lasts";

// A reader looks this often whether the file was replaced or removed; a writer does before each write.
constexpr int64_t kCheckInterval = 250'000'000;

// One run of a prepared statement. Its end, however it comes, ends the statement's own transaction.
class Run {
 public:
  explicit Run(sqlite3_stmt* statement) : statement_(statement) {}
  ~Run() { sqlite3_reset(statement_); }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  sqlite3_stmt* statement() const { return statement_; }
  int step() const { return sqlite3_step(statement_); }

 private:
  sqlite3_stmt* statement_;
};

// A value looked up once and then read as it is costs half of asking the statement for its type and content
// one after the other. SQLite leaves such a value unlocked; the connection is this thread's alone.
bool read_cell(const Prepared& prepared, sqlite3_stmt* row, int column, Result& result) {
  sqlite3_value* const value = sqlite3_column_value(row, column);
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      result.add_integer(sqlite3_value_int64(value));
      return true;
    case SQLITE_TEXT: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
      if (text == nullptr) throw std::bad_alloc();
      return result.add_text({text, static_cast<size_t>(sqlite3_value_bytes(value))});
    }
    case SQLITE_FLOAT:
      result.add_real(sqlite3_value_double(value));
      return true;
    case SQLITE_BLOB: {
      const auto* data = static_cast<const char*>(sqlite3_value_blob(value));
      return result.add_blob({data, static_cast<size_t>(sqlite3_value_bytes(value))});
    }
    default:
      if (prepared.expressions[static_cast<size_t>(column)])
        result.add_empty_aggregate();
      else
        result.add_null();
      return true;
  }
}

bool read_row(const Prepared& prepared, Result& result) {
  if (!result.begin_row()) return false;
  sqlite3_stmt* const row = prepared.statement.get();
  const int columns = static_cast<int>(prepared.names->size());
  for (int column = 0; column < columns; ++column) {
    if (!read_cell(prepared, row, column, result)) return false;
  }
  result.end_row();
  return true;
}

}  // namespace

SqliteSession::SqliteSession(const DataSource& source, WriterQueue& writers, const Limits& limits)
    : source_(source),
      writers_(writers),
      limits_(limits),
      authorizer_(limits),
      statements_(kPreparedStatements) {}

SqliteSession::~SqliteSession() {
  authorizer_.stand_aside();
  statements_.clear();
  if (in_transaction_) sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  if (database_ != nullptr) keeps_its_files();
  database_.reset();
  if (in_transaction_) writers_.leave();
}

int SqliteSession::open(const std::function<void()>& connected) {
  Opening opening(source_, authorizer_, connected);
  if (Failure failure = opening.run()) return fail(failure.status, std::move(failure.reason));
  access_ = opening.access;
  database_ = std::move(opening.database);
  catalog_ = std::move(opening.catalog);
  names_ = std::move(opening.names);
  files_ = opening.files;
  checked_at_ = coarse_now();
  return 0;
}

int SqliteSession::query(Statement& statement, Result& result) {
  Prepared* prepared = nullptr;
  if (const int status = prepare(statement, prepared)) return status;
  const Run run(prepared->statement.get());
  if (const int status = bind(run.statement(), statement.arguments())) return status;
  result.start(prepared->names, limits_.result);
  int code = SQLITE_OK;
  while ((code = run.step()) == SQLITE_ROW) {
    if (!read_row(*prepared, result)) return fail(kStatusTooLarge, "the result is too large");
  }
  return outcome(code);
}

int SqliteSession::would_change(Statement& statement, bool& would) {
  would = true;
  if (in_transaction_ || !statement.has_probe()) return 0;
  Prepared* prepared = nullptr;
  if (const int status = prepare_probe(statement, prepared)) return status;
  const Run run(prepared->statement.get());
  if (const int status = bind(run.statement(), statement.probe_arguments())) return status;
  const int code = run.step();
  would = code == SQLITE_ROW;
  return would ? 0 : outcome(code);
}

int SqliteSession::change(Statement& statement, Change& change) {
  if (in_transaction_) return write(statement, change);
  const WriterTurn turn(writers_, limits_.writer);
  return turn ? write(statement, change) : fail(kStatusBusy, kWriterLasts);
}

int SqliteSession::write(Statement& statement, Change& change) {
  if (in_transaction_ && sqlite3_get_autocommit(database_.get()) != 0) {
    return fail(ZYM_DB_STATUS_ERROR, "an earlier failure ended the transaction");
  }
  Prepared* prepared = nullptr;
  if (const int status = prepare(statement, prepared)) return status;
  const Run run(prepared->statement.get());
  if (const int status = bind(run.statement(), statement.arguments())) return status;
  const int code = run.step();
  change.rows = sqlite3_changes64(database_.get());
  change.id = sqlite3_last_insert_rowid(database_.get());
  return outcome(code);
}

int SqliteSession::begin() {
  if (in_transaction_) return fail(ZYM_DB_STATUS_ERROR, "a transaction is open on this thread already");
  WriterTurn turn(writers_, limits_.writer);
  if (!turn) return fail(kStatusBusy, kWriterLasts);
  if (const int status = execute("BEGIN IMMEDIATE")) return status;
  in_transaction_ = true;
  turn.keep();
  return 0;
}

int SqliteSession::commit() {
  if (!in_transaction_ || must_stay()) return end_transaction("COMMIT");
  end_transaction("ROLLBACK");
  keeps_its_files();
  return fail(kStatusIo, source_.path + " " + loss_ + " during the transaction");
}

int SqliteSession::rollback() {
  return end_transaction("ROLLBACK");
}

int SqliteSession::end_transaction(const char* sql) {
  if (!in_transaction_) return fail(ZYM_DB_STATUS_ERROR, "no transaction is open on this thread");
  const int status = execute(sql);
  if (sqlite3_get_autocommit(database_.get()) == 0) {
    sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
  in_transaction_ = false;
  writers_.leave();
  return status;
}

bool SqliteSession::is_usable(bool now) {
  if (in_transaction_) return true;
  const int64_t time = coarse_now();
  if (!unusable_ && !now && time - checked_at_ < kCheckInterval) return true;
  checked_at_ = time;
  if (now && may_be_written_by_now()) unusable_ = true;
  return keeps_its_files() && !unusable_;
}

bool SqliteSession::may_be_written_by_now() const {
  if (access_ == Access::kImmutable) return may_write_folder_of(names_.wal);
  return sqlite3_db_readonly(database_.get(), "main") == 1 && may_write(source_.path);
}

bool SqliteSession::must_stay() const {
  return in_transaction_ && names_.identify() == files_;
}

bool SqliteSession::may_rest() const {
  struct stat wal {};
  return !in_transaction_ && !unusable_ && stat(names_.wal.c_str(), &wal) == 0 && wal.st_size == 0;
}

bool SqliteSession::keeps_its_files() {
  if (loss_ != nullptr) return false;
  if (disowned_) return true;
  const Files found = names_.identify();
  const bool is_rewritten = access_ == Access::kImmutable && found.written != files_.written;
  if (found == files_ && !is_rewritten) {
    files_.written = found.written;
    return true;
  }
  if (access_ == Access::kShared)
    abandon(found);
  else
    leave(found);
  return false;
}

// Without files of its own beside the database there is nothing to save or to tidy up.
void SqliteSession::leave(const Files& found) {
  if (access_ == Access::kImmutable && found.database != files_.database) loss_ = kReplaced;
  unusable_ = true;
}

// What lies at the path now is not this connection's to tidy up, but for what its own database left there:
// SQLite would apply that log to whatever database stands beside it.
void SqliteSession::abandon(const Files& found) {
  const bool own_wal = found.wal == files_.wal;
  if (found.database != files_.database) {
    loss_ = found.database == FileId{} ? "was removed or emptied" : kReplaced;
    if (own_wal) unlink(names_.wal.c_str());
  } else {
    loss_ = "lost its write-ahead log";
    // What only the lost one holds can still reach the database, unless that was written meanwhile, by
    // whomever: somebody may have copied another one over it.
    if (found.wal == FileId{} && found.written == files_.written)
      sqlite3_wal_checkpoint_v2(database_.get(), nullptr, SQLITE_CHECKPOINT_FULL, nullptr, nullptr);
  }
  // A shared-memory file without its log would hide the next one's content.
  if (found.shm == files_.shm) unlink(names_.shm.c_str());
  unusable_ = true;
  leave_wal(database_.get());
}

void SqliteSession::disown() {
  disowned_ = true;
  unusable_ = true;
  leave_wal(database_.get());
}

int SqliteSession::prepare(Statement& statement, Prepared*& prepared) {
  authorizer_.watch(statement.kind(),
                    statement.table() != nullptr ? statement.table()->name() : std::string_view());
  prepared = statements_.find(statement.key());
  if (prepared != nullptr) return 0;
  if (!statement.sql(sql_)) return fail(ZYM_DB_STATUS_ERROR, std::string(statement.reason()));
  return compile(statement.key(), sql_, statement.take_column_names(), prepared);
}

int SqliteSession::prepare_probe(Statement& statement, Prepared*& prepared) {
  authorizer_.watch(Request::Kind::kQuery, {});
  prepared = statements_.find(statement.probe_key());
  if (prepared != nullptr) return 0;
  return compile(statement.probe_key(), statement.probe_sql(), {}, prepared);
}

int SqliteSession::compile(std::string_view key, const std::string& sql, std::vector<std::string> names,
                           Prepared*& prepared) {
  sqlite3_stmt* raw = nullptr;
  const char* rest = nullptr;
  const int code = sqlite3_prepare_v3(database_.get(), sql.data(), static_cast<int>(sql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &raw, &rest);
  Prepared fresh{StatementPtr(raw), nullptr, {}};
  if (code != SQLITE_OK) return fail_as_engine(code);
  const bool named = !names.empty();
  for (int column = 0; column < sqlite3_column_count(raw); ++column) {
    if (!named) names.emplace_back(sqlite3_column_name(raw, column));
    fresh.expressions.push_back(sqlite3_column_decltype(raw, column) == nullptr);
  }
  fresh.names = std::make_shared<const std::vector<std::string>>(std::move(names));
  prepared = &statements_.add(key, std::move(fresh));
  return 0;
}

// Texts are bound in place: they outlive the statement's run.
int SqliteSession::bind(sqlite3_stmt* statement, std::span<const Argument> arguments) {
  int place = 0;
  for (const Argument& argument : arguments) {
    int code = SQLITE_OK;
    ++place;
    switch (argument.type) {
      case Argument::Type::kInteger:
        code = sqlite3_bind_int64(statement, place, argument.integer);
        break;
      case Argument::Type::kReal:
        code = sqlite3_bind_double(statement, place, argument.real);
        break;
      case Argument::Type::kText:
        code = sqlite3_bind_text64(statement, place, argument.text.data(), argument.text.size(),
                                   SQLITE_STATIC, SQLITE_UTF8);
        break;
      case Argument::Type::kBlob:
        code =
            sqlite3_bind_blob64(statement, place, argument.text.data(), argument.text.size(), SQLITE_STATIC);
        break;
      default:
        code = sqlite3_bind_null(statement, place);
    }
    if (code != SQLITE_OK) return fail_as_engine(code);
  }
  return 0;
}

int SqliteSession::execute(const char* sql) {
  authorizer_.stand_aside();
  const int code = sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
  return code == SQLITE_OK ? 0 : fail_as_engine(code);
}

int SqliteSession::fail(int status, std::string why) {
  error_ = std::move(why);
  return status;
}

int SqliteSession::fail_as_engine(int code) {
  Failure failure = failure_of(database_.get(), code);
  if (is_of_files(failure.status)) failure.reason = source_.path + ": " + failure.reason;
  if (is_lasting(status_of(code))) unusable_ = true;
  return fail(failure.status, std::move(failure.reason));
}

}  // namespace zymdb::client::sqlite

namespace zymdb::client {

Opened open_session(const DataSource& source, WriterQueue& writers, const Limits& limits,
                    const std::function<void()>& connected) {
  auto session = std::make_unique<sqlite::SqliteSession>(source, writers, limits);
  const int status = session->open(connected);
  if (status != 0) return {nullptr, status, session->error()};
  return {std::move(session), 0, {}};
}

uint64_t file_at(const std::string& path) {
  return sqlite::file_id(path).inode;
}

}  // namespace zymdb::client
