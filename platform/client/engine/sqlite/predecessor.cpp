#include "client/engine/sqlite/predecessor.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "client/engine/sqlite/database_files.h"
#include "client/engine/sqlite/own_statements.h"
#include "client/engine/sqlite/process.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

constexpr std::chrono::milliseconds kWait{5};
constexpr std::chrono::seconds kLimit{5};

constexpr int kOpenFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;

bool is_to_be_taken_over(const DataSource& source) {
  return !source.predecessor.empty() && file_id(source.address) == FileId{} &&
         file_id(source.predecessor) != FileId{};
}

Failure read_mode(sqlite3* database, const char* sql, std::string& mode) {
  return read_rows(database, sql, [&](sqlite3_stmt* row) { mode = text_of(row, 0); });
}

// Without a write-ahead log the database is one file, and with the lock nobody else opens it: another process
// that takes it over waits here, and finds it gone.
Failure rename_alone(sqlite3* database, const DataSource& source) {
  std::string mode;
  if (Failure failure = read_mode(database, "PRAGMA journal_mode=DELETE", mode)) return failure;
  if (Failure failure = execute(database, "BEGIN EXCLUSIVE")) return failure;
  if (Failure failure = read_mode(database, "PRAGMA journal_mode", mode)) return failure;
  Failure failure;
  if (mode != "delete")
    failure = {kStatusBusy, "another process uses it"};
  else if (is_to_be_taken_over(source) && rename(source.predecessor.c_str(), source.address.c_str()) != 0)
    failure = {kStatusIo, std::strerror(errno)};
  execute(database, "ROLLBACK");
  return failure;
}

Failure take_over(const DataSource& source) {
  configure_process();
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(source.predecessor.c_str(), &opened, kOpenFlags, nullptr);
  const DatabasePtr database(opened);
  if (code != SQLITE_OK) return failure_of(opened, code);
  int64_t application = 0;
  if (Failure failure = read_number(opened, "PRAGMA application_id", application)) return failure;
  if (static_cast<uint32_t>(application) != source.schema->application_id) return {};
  return rename_alone(opened, source);
}

}  // namespace

Failure take_over_predecessor(const DataSource& source) {
  const auto deadline = std::chrono::steady_clock::now() + kLimit;
  Failure failure;
  while (is_to_be_taken_over(source)) {
    failure = take_over(source);
    if (failure.status != kStatusBusy || std::chrono::steady_clock::now() > deadline) break;
    std::this_thread::sleep_for(kWait);
  }
  if (failure && is_to_be_taken_over(source)) {
    failure.reason = source.predecessor + " cannot take its place: " + failure.reason;
    return failure;
  }
  return {};
}

}  // namespace zymdb::client::sqlite
