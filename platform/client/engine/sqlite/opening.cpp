#include "client/engine/sqlite/opening.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "client/engine/sqlite/process.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

// Kept from everybody but the owner and its group; the log and index files beside it take the same mode.
constexpr mode_t kFileMode = 0640;
constexpr mode_t kPermissions = 0777;

constexpr char kLogSuffix[] = "-wal";
constexpr char kIndexSuffix[] = "-shm";

constexpr int kOpenFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;

struct EngineLimit {
  int id;
  int value;
};

constexpr EngineLimit kEngineLimits[] = {
    {SQLITE_LIMIT_LENGTH, 64 << 20},
    {SQLITE_LIMIT_SQL_LENGTH, 4 << 20},
    {SQLITE_LIMIT_ATTACHED, 0},
    {SQLITE_LIMIT_COMPOUND_SELECT, 1},
    {SQLITE_LIMIT_TRIGGER_DEPTH, 1},
    {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 5000},
    {SQLITE_LIMIT_VARIABLE_NUMBER, 32766},
    {SQLITE_LIMIT_WORKER_THREADS, 0},
};

struct EngineOption {
  int id;
  int value;
};

constexpr EngineOption kEngineOptions[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},
    {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
    {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
    {SQLITE_DBCONFIG_DQS_DML, 0},
    {SQLITE_DBCONFIG_DQS_DDL, 0},
    {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
};

// cache_spill: a transaction reaches the files at its commit and not before, so a child process that drops
// its parent's connections has nothing of it to undo.
constexpr char kSettings[] =
    "PRAGMA synchronous=FULL;"
    "PRAGMA case_sensitive_like=ON;"
    "PRAGMA cache_spill=OFF;"
    "PRAGMA temp_store=MEMORY;"
    "PRAGMA journal_size_limit=4194304;";

constexpr int kMostAttempts = 20;

constexpr std::chrono::milliseconds kJournalWait{5};
constexpr std::chrono::seconds kJournalLimit{5};

}  // namespace

FileId file_id(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? FileId{status.st_dev, status.st_ino} : FileId{};
}

Files FileNames::identify() const {
  Files files;
  struct stat status {};
  if (stat(database.c_str(), &status) == 0 && status.st_size != 0) {
    files.database = {status.st_dev, status.st_ino};
    files.written = int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
  }
  files.log = file_id(log);
  files.index = file_id(index);
  return files;
}

// What came of an opening is about the file that was found first: somebody may have put another one in its
// place meanwhile, and the log and the index beside it are that one's.
int Opening::run() {
  for (int attempt = 1;; ++attempt) {
    const int status = try_once();
    if (attempt == kMostAttempts || !is_replaced()) return status;
    let_go();
  }
}

bool Opening::is_replaced() const {
  return connected_to_ != FileId{} && file_id(source_.path) != connected_to_;
}

// Nothing of what lies at the path is this connection's to tidy up.
void Opening::let_go() {
  leave_log(database.get());
  database.reset();
  catalog = {};
  connected_to_ = {};
}

int Opening::try_once() {
  using Step = int (Opening::*)();
  constexpr Step kSteps[] = {&Opening::create_file,      &Opening::connect,      &Opening::configure,
                             &Opening::bring_up_to_date, &Opening::read_catalog, &Opening::note_files};
  for (const Step step : kSteps) {
    if (const int status = (this->*step)()) return status;
  }
  return 0;
}

// Only a file that did not exist is opened outside SQLite: closing a descriptor of one that is in use would
// drop the locks that this process holds on it.
int Opening::create_file() {
  struct stat status {};
  if (stat(source_.path.c_str(), &status) == 0) {
    return S_ISREG(status.st_mode) ? 0 : fail(kStatusIo, "it is not a file");
  }
  const int descriptor = open(source_.path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
  if (descriptor >= 0) {
    close(descriptor);
    return 0;
  }
  return errno == EEXIST ? 0 : fail(kStatusIo, std::strerror(errno));
}

int Opening::connect() {
  if (faccessat(AT_FDCWD, source_.path.c_str(), R_OK, AT_EACCESS) != 0)
    return fail(kStatusIo, std::strerror(errno));
  share_permissions();
  configure_process();
  connected_to_ = file_id(source_.path);
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(source_.path.c_str(), &opened, kOpenFlags, nullptr);
  database.reset(opened);
  if (code != SQLITE_OK) return fail_as_engine(code);
  if (is_replaced()) return fail(kStatusIo, "it was replaced again and again");
  connected_();
  return 0;
}

// SQLite makes log and index with the mode of the file. What was made while that could not be written would
// keep it so.
void Opening::share_permissions() const {
  struct stat status {};
  if (stat(source_.path.c_str(), &status) != 0) return;
  for (const char* suffix : {kLogSuffix, kIndexSuffix}) {
    const std::string path = source_.path + suffix;
    if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0 && errno == EACCES)
      chmod(path.c_str(), status.st_mode & kPermissions);
  }
}

int Opening::configure() {
  for (const EngineLimit& limit : kEngineLimits) sqlite3_limit(database.get(), limit.id, limit.value);
  for (const EngineOption& option : kEngineOptions) {
    sqlite3_db_config(database.get(), option.id, option.value, nullptr);
  }
  guard_.attach(database.get());
  return execute(kSettings);
}

int Opening::bring_up_to_date() {
  State state = State::kReady;
  // As one: between its looks another process may create the database.
  if (const int status = execute("BEGIN")) return status;
  if (const int status = examine(state)) return status;
  if (const int status = execute("END")) return status;
  if (state == State::kForeign || state == State::kNewer) return refuse(state);
  if (sqlite3_db_readonly(database.get(), "main") == 1) {
    return state == State::kReady ? 0 : fail(kStatusReadOnly, "it cannot be written");
  }
  if (const int status = write_ahead()) return status;
  return state == State::kReady ? 0 : upgrade(state);
}

int Opening::examine(State& state) {
  int64_t application = 0;
  int64_t tables = 0;
  if (const int status = read_number("PRAGMA application_id", application)) return status;
  if (const int status = read_number("PRAGMA user_version", version_)) return status;
  if (const int status = read_number("SELECT count(*) FROM sqlite_schema", tables)) return status;
  const bool ours = static_cast<uint32_t>(application) == source_.schema->application_id && version_ > 0;
  if (!ours) {
    state = application == 0 && version_ == 0 && tables == 0 ? State::kNew : State::kForeign;
  } else if (version_ == source_.schema->version) {
    state = State::kReady;
  } else {
    state = version_ < source_.schema->version ? State::kOlder : State::kNewer;
  }
  return 0;
}

// Readers and writers do not wait for each other with a write-ahead log. The switch waits for some locks by
// itself and not for others, so that time is what ends it.
int Opening::write_ahead() {
  const auto deadline = std::chrono::steady_clock::now() + kJournalLimit;
  int code = SQLITE_OK;
  do {
    sqlite3_stmt* raw = nullptr;
    code = sqlite3_prepare_v2(database.get(), "PRAGMA journal_mode=WAL", -1, &raw, nullptr);
    const StatementPtr statement(raw);
    if (code == SQLITE_OK) code = sqlite3_step(raw);
    if (code == SQLITE_ROW) {
      const auto* mode = reinterpret_cast<const char*>(sqlite3_column_text(raw, 0));
      if (mode != nullptr && std::strcmp(mode, "wal") == 0) return 0;
    } else if ((code & 0xFF) != SQLITE_BUSY) {
      return fail_as_engine(code);
    }
    std::this_thread::sleep_for(kJournalWait);
  } while (std::chrono::steady_clock::now() < deadline);
  return fail(kStatusBusy, "another process holds it");
}

int Opening::upgrade(State state) {
  if (const int status = execute("BEGIN IMMEDIATE")) return status;
  // Another process may have been first.
  if (const int status = examine(state)) return status;
  const Schema& schema = *source_.schema;
  if (state == State::kForeign || state == State::kNewer) return refuse(state);
  if (state == State::kNew) {
    if (const int status = execute(schema.sql)) return status;
  }
  while (state == State::kOlder && version_ < schema.version) {
    const auto step = std::find_if(schema.steps.begin(), schema.steps.end(),
                                   [&](const UpgradeStep& each) { return each.from == version_; });
    if (step == schema.steps.end()) return fail(ZYM_DB_STATUS_ERROR, "its version is too old");
    if (const int status = execute(step->sql)) return status;
    ++version_;
  }
  const std::string marks = "PRAGMA application_id=" + std::to_string(schema.application_id) +
                            ";PRAGMA user_version=" + std::to_string(schema.version) + ";COMMIT";
  return execute(marks.c_str());
}

int Opening::read_catalog() {
  constexpr char kSql[] =
      "SELECT t.name, c.name FROM sqlite_schema t, pragma_table_info(t.name) c "
      "WHERE t.type='table' AND t.name NOT LIKE 'sqlite\\_%' ESCAPE '\\'";
  sqlite3_stmt* raw = nullptr;
  int code = sqlite3_prepare_v2(database.get(), kSql, -1, &raw, nullptr);
  const StatementPtr statement(raw);
  if (code != SQLITE_OK) return fail_as_engine(code);
  while ((code = sqlite3_step(raw)) == SQLITE_ROW) {
    const auto* table = reinterpret_cast<const char*>(sqlite3_column_text(raw, 0));
    const auto* column = reinterpret_cast<const char*>(sqlite3_column_text(raw, 1));
    if (table == nullptr || column == nullptr) return fail_as_engine(SQLITE_NOMEM);
    catalog.add_column(table, column);
  }
  return code == SQLITE_DONE ? 0 : fail_as_engine(code);
}

// The log lies beside the file that a link leads to.
int Opening::note_files() {
  const std::string file = sqlite3_db_filename(database.get(), "main");
  names = {source_.path, file + kLogSuffix, file + kIndexSuffix};
  files = names.identify();
  files.database = connected_to_;
  return 0;
}

int Opening::execute(const char* sql) {
  const int code = sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr);
  return code == SQLITE_OK ? 0 : fail_as_engine(code);
}

int Opening::read_number(const char* sql, int64_t& value) {
  sqlite3_stmt* raw = nullptr;
  int code = sqlite3_prepare_v2(database.get(), sql, -1, &raw, nullptr);
  const StatementPtr statement(raw);
  if (code == SQLITE_OK) code = sqlite3_step(raw);
  if (code != SQLITE_ROW) return fail_as_engine(code);
  value = sqlite3_column_int64(raw, 0);
  return 0;
}

int Opening::refuse(State state) {
  if (state == State::kForeign) return fail(kStatusCorrupt, "it is not a database of this kind");
  return fail(ZYM_DB_STATUS_ERROR, "its version " + std::to_string(version_) +
                                       " is newer than this program's " +
                                       std::to_string(source_.schema->version));
}

int Opening::fail(int status, std::string why) {
  error_ = "cannot open the " + std::string(source_.schema->name) + " database " + source_.path + ": " + why;
  return status;
}

int Opening::fail_as_engine(int code) {
  Failure failure = failure_of(database.get(), code);
  return fail(failure.status, std::move(failure.reason));
}

}  // namespace zymdb::client::sqlite
