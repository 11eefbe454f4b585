#include "client/engine/sqlite/opening.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "client/engine/creation.h"
#include "client/engine/sqlite/connections.h"
#include "client/engine/sqlite/own_statements.h"
#include "client/engine/sqlite/predecessor.h"
#include "client/engine/sqlite/process.h"
#include "client/engine/sqlite/schema_upgrade.h"
#include "client/engine/sqlite/table_text.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

// Kept from everybody but the owner and its group; the files beside it take the same mode.
constexpr mode_t kFileMode = 0640;

constexpr int kOpenFlags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;

constexpr char kOwnTables[] = "WHERE t.type='table' AND t.name NOT LIKE 'sqlite\\_%' ESCAPE '\\'";

struct EngineSetting {
  int id;
  int value;
};

constexpr EngineSetting kEngineLimits[] = {
    {SQLITE_LIMIT_LENGTH, 64 << 20},
    {SQLITE_LIMIT_SQL_LENGTH, 4 << 20},
    {SQLITE_LIMIT_ATTACHED, 0},
    {SQLITE_LIMIT_COMPOUND_SELECT, 1},
    {SQLITE_LIMIT_TRIGGER_DEPTH, 1},
    {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 5000},
    {SQLITE_LIMIT_VARIABLE_NUMBER, 32766},
    {SQLITE_LIMIT_WORKER_THREADS, 0},
};

constexpr EngineSetting kEngineOptions[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},
    {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
    {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
    {SQLITE_DBCONFIG_DQS_DML, 0},
    {SQLITE_DBCONFIG_DQS_DDL, 0},
    {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
};

// page_size: of a new database. A change writes whole pages, and few of its bytes are new.
// cache_spill: a transaction reaches the files at its commit and not before, so a child process that drops
// its parent's connections has nothing of it to undo.
constexpr char kSettings[] =
    "PRAGMA page_size=1024;"
    "PRAGMA case_sensitive_like=ON;"
    "PRAGMA cache_spill=OFF;"
    "PRAGMA temp_store=MEMORY;";

constexpr uint64_t kMostPagesOfLog = 1000;

// Without the flush of each commit the log is flushed where it goes into the database.
const char* flushing(const DataSource& source) {
  return source.flushes_commits ? "PRAGMA synchronous=FULL;" : "PRAGMA synchronous=NORMAL;";
}

// What is taken of the disk and of memory.
std::string sizes(const Limits& limits) {
  return "PRAGMA journal_size_limit=" + std::to_string(limits.log) + ";PRAGMA cache_size=-" +
         std::to_string(limits.cache / 1024);
}

constexpr int kMostAttempts = 20;

// Where a database says by which versions it is to be written and read.
constexpr int kVersions = 18;
constexpr unsigned char kWithLog = 2;

int64_t size_of(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? int64_t{status.st_size} : 0;
}

bool has_log_beside(const std::string& path) {
  return file_id(FileNames::of(path, resolved(path)).wal) != FileId{};
}

Failure system_failure(int error) {
  return {kStatusIo, std::strerror(error)};
}

// A URI, in which these characters mean something.
std::string immutable_uri(const std::string& path) {
  constexpr char kHexadecimal[] = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '?' || c == '#' || c == '%')
      uri.append({'%', kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]});
    else
      uri.push_back(c);
  }
  return uri + "?immutable=1";
}

}  // namespace

// What came of an opening is about the file that was found first: somebody may have put another one in its
// place meanwhile, and the files beside it are that one's.
Failure Opening::run() {
  for (int attempt = 1;; ++attempt) {
    Failure failure = try_once();
    if (attempt == kMostAttempts || !is_replaced()) {
      if (failure)
        failure.reason.insert(0, "cannot open the " + std::string(source_.schema->name) + " database " +
                                     source_.address + ": ");
      return failure;
    }
    let_go();
  }
}

// What cannot be written may have been left without one.
bool Opening::has_log() const {
  return access == Access::kShared && sqlite3_db_readonly(database.get(), "main") == 0;
}

bool Opening::is_replaced() const {
  return connected_to_ != FileId{} && file_id(source_.address) != connected_to_;
}

// Nothing of what lies at the path is this connection's to tidy up.
void Opening::let_go() {
  leave_wal(database.get());
  database.reset();
  catalog = nullptr;
  connected_to_ = {};
}

Failure Opening::try_once() {
  access = Access::kShared;
  if (Failure failure = find_file()) return failure;
  if (may_be_alone_ && access == Access::kShared && open_alone()) return {};
  Failure failure = open();
  const bool is_out_of_reach = failure.status == kStatusIo || failure.status == kStatusReadOnly;
  if (!is_out_of_reach || is_replaced() || !nobody_can_be_writing()) return failure;
  let_go();
  access = Access::kImmutable;
  return open();
}

// Whatever keeps it from that, others do, or the file is to be brought up to date.
bool Opening::open_alone() {
  access = Access::kAlone;
  if (!open()) return true;
  let_go();
  access = Access::kShared;
  return false;
}

// A writer makes files beside the database, or finds them there.
bool Opening::nobody_can_be_writing() const {
  struct stat wal {};
  const FileNames beside = FileNames::of(source_.address, resolved(source_.address));
  const bool has_wal = stat(beside.wal.c_str(), &wal) == 0 && wal.st_size != 0;
  return !has_wal && file_id(beside.shm) == FileId{} && !may_write_folder_of(beside.wal);
}

Failure Opening::open() {
  using Step = Failure (Opening::*)();
  constexpr Step kSteps[] = {&Opening::connect,   &Opening::configure,    &Opening::bring_up_to_date,
                             &Opening::limit_log, &Opening::read_catalog, &Opening::note_files};
  for (const Step step : kSteps) {
    if (Failure failure = (this->*step)()) return failure;
  }
  return {};
}

// Only a file that did not exist is opened outside SQLite: closing a descriptor of one that is in use would
// drop the locks that this process holds on it.
Failure Opening::find_file() {
  struct stat status {};
  if (Failure failure = take_over_predecessor(source_)) return failure;
  if (stat(source_.address.c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) return {kStatusIo, "it is not a file"};
    return status.st_size == 0 && !creation_is_allowed() ? find_none() : Failure{};
  }
  if (!creation_is_allowed()) return errno == ENOENT ? find_none() : system_failure(errno);
  const int descriptor = ::open(source_.address.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
  if (descriptor < 0) return errno == EEXIST ? Failure{} : system_failure(errno);
  close(descriptor);
  return {};
}

Failure Opening::find_none() {
  if (!source_.schema->may_be_absent) {
    if (file_id(source_.address) != FileId{}) return {kStatusIo, kEmpty};
    return system_failure(ENOENT);
  }
  access = Access::kAbsent;
  return {};
}

Failure Opening::connect() {
  if (access != Access::kAbsent) {
    if (!may_read(source_.address)) return system_failure(errno);
    share_permissions(source_.address);
  }
  configure_process();
  std::string name = source_.address;
  int flags = kOpenFlags | SQLITE_OPEN_READWRITE;
  if (access == Access::kImmutable || access == Access::kAlone) {
    name = immutable_uri(source_.address);
    flags = kOpenFlags | SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
  } else if (access == Access::kAbsent) {
    name = ":memory:";
  }
  if (access != Access::kAbsent) {
    connected_to_ = file_id(source_.address);
    size_ = size_of(source_.address);
  }
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(name.c_str(), &opened, flags, nullptr);
  database.reset(opened);
  if (code != SQLITE_OK) return failure_of(database.get(), code);
  if (is_replaced()) return {kStatusIo, "it was replaced again and again"};
  connected_();
  return access == Access::kAlone ? hold_still() : Failure{};
}

// With this lock nobody removes a write-ahead log: as long as there is none, nobody has written since.
// Without such a log writers have to wait for who reads.
Failure Opening::hold_still() {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(database.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
  unsigned char versions[2] = {};
  sqlite3_int64 size = 0;
  const bool is_still = file->pMethods->xLock(file, SQLITE_LOCK_SHARED) == SQLITE_OK &&
                        !has_log_beside(source_.address) &&
                        file->pMethods->xFileSize(file, &size) == SQLITE_OK && size == size_ &&
                        file->pMethods->xRead(file, versions, sizeof versions, kVersions) == SQLITE_OK &&
                        versions[0] == kWithLog && versions[1] == kWithLog;
  return is_still ? Failure{} : Failure{kStatusBusy, "others use it"};
}

Failure Opening::configure() {
  for (const EngineSetting& limit : kEngineLimits) sqlite3_limit(database.get(), limit.id, limit.value);
  for (const EngineSetting& option : kEngineOptions) {
    sqlite3_db_config(database.get(), option.id, option.value, nullptr);
  }
  authorizer_.attach(database.get());
  return execute(database.get(), kSettings + (flushing(source_) + sizes(limits_)));
}

Failure Opening::bring_up_to_date() {
  if (access != Access::kAbsent) return sqlite::bring_up_to_date(database.get(), *source_.schema);
  // What was written there would be lost without a word.
  return execute(database.get(), std::string(source_.schema->sql) + ";PRAGMA query_only=ON");
}

// The log goes into the database once it is as long as what may stay of it.
Failure Opening::limit_log() {
  uint64_t page = 0;
  const auto read_size = [&](sqlite3_stmt* row) { page = static_cast<uint64_t>(sqlite3_column_int(row, 0)); };
  if (Failure failure = read_rows(database.get(), "PRAGMA page_size", read_size)) return failure;
  const uint64_t pages = std::clamp<uint64_t>(limits_.log / std::max<uint64_t>(page, 1), 1, kMostPagesOfLog);
  return execute(database.get(), "PRAGMA wal_autocheckpoint=" + std::to_string(pages));
}

Failure Opening::read_catalog() {
  Fingerprint statements;
  const auto failure = read_rows(database.get(), "SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL",
                                 [&](sqlite3_stmt* row) { statements.add(text_of(row, 0)); });
  if (failure) return failure;
  catalog = Connections::instance().catalog_of(statements);
  return catalog != nullptr ? Failure{} : read_new_catalog(statements);
}

Failure Opening::read_new_catalog(const Fingerprint& statements) {
  Catalog read(kEngine.flavour);
  bool is_understood = true;
  if (Failure failure = read_table_texts(read, is_understood)) return failure;
  if (!is_understood) return ask_for_catalog(statements);
  catalog = Connections::instance().share(statements, std::move(read));
  return {};
}

Failure Opening::read_table_texts(Catalog& read, bool& is_understood) {
  const std::string sql = std::string("SELECT t.name, t.sql FROM sqlite_schema t ") + kOwnTables;
  std::vector<ColumnText> columns;
  return read_rows(database.get(), sql.c_str(), [&](sqlite3_stmt* row) {
    columns.clear();
    is_understood = is_understood && read_columns(text_of(row, 1), columns);
    const std::string table = text_of(row, 0);
    for (ColumnText& column : columns) read.add_column(table, std::move(column.name), column.is_text);
  });
}

Failure Opening::ask_for_catalog(const Fingerprint& statements) {
  const std::string sql =
      std::string("SELECT t.name, c.name, c.type FROM sqlite_schema t, pragma_table_info(t.name) c ") +
      kOwnTables;
  Catalog read(kEngine.flavour);
  bool is_torn = false;
  const auto failure = read_rows(database.get(), sql.c_str(), [&](sqlite3_stmt* row) {
    read.add_column(text_of(row, 0), text_of(row, 1), text_of(row, 2) == "TEXT");
    // A text that there was no memory for is empty; other threads' connections shall not share what lacks it.
    is_torn = is_torn || sqlite3_errcode(database.get()) == SQLITE_NOMEM;
  });
  if (is_torn) return {ZYM_DB_STATUS_NO_MEMORY, "out of memory"};
  if (!failure) catalog = Connections::instance().share(statements, std::move(read));
  return failure;
}

Failure Opening::note_files() {
  const char* const file = sqlite3_db_filename(database.get(), "main");
  names = FileNames::of(source_.address, file != nullptr && file[0] != 0 ? file : source_.address);
  files = names.identify();
  if (access != Access::kAbsent) files.database = connected_to_;
  return {};
}

}  // namespace zymdb::client::sqlite
