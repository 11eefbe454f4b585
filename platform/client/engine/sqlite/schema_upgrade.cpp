#include "client/engine/sqlite/schema_upgrade.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "client/engine/creation.h"
#include "client/engine/sqlite/own_statements.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

constexpr std::chrono::milliseconds kJournalWait{5};
constexpr std::chrono::seconds kJournalLimit{5};

enum class State { kReady, kNew, kOlder, kForeign, kNewer };

struct Found {
  State state = State::kReady;
  int64_t version = 0;
};

State state_of(int64_t application, int64_t version, int64_t tables, const Schema& schema) {
  const bool is_ours = static_cast<uint32_t>(application) == schema.application_id && version > 0;
  if (!is_ours) return application == 0 && version == 0 && tables == 0 ? State::kNew : State::kForeign;
  if (version == schema.version) return State::kReady;
  return version < schema.version ? State::kOlder : State::kNewer;
}

Failure examine(sqlite3* database, const Schema& schema, Found& found) {
  int64_t application = 0;
  int64_t tables = 0;
  if (Failure failure = read_number(database, "PRAGMA application_id", application)) return failure;
  if (Failure failure = read_number(database, "PRAGMA user_version", found.version)) return failure;
  if (Failure failure = read_number(database, "SELECT count(*) FROM sqlite_schema", tables)) return failure;
  found.state = state_of(application, found.version, tables, schema);
  return {};
}

Failure refuse(const Found& found, const Schema& schema) {
  if (found.state == State::kForeign) return {kStatusCorrupt, "it is not a database of this kind"};
  if (found.state == State::kNew && !creation_is_allowed()) return {kStatusIo, kEmpty};
  if (found.state != State::kNewer) return {};
  return {ZYM_DB_STATUS_ERROR, "its version " + std::to_string(found.version) +
                                   " is newer than this program's " + std::to_string(schema.version)};
}

// Readers and writers do not wait for each other with a write-ahead log. The switch waits for some locks by
// itself and not for others, so that time is what ends it.
Failure write_ahead(sqlite3* database) {
  const auto deadline = std::chrono::steady_clock::now() + kJournalLimit;
  do {
    std::string mode;
    const Failure failure =
        read_rows(database, "PRAGMA journal_mode=WAL", [&](sqlite3_stmt* row) { mode = text_of(row, 0); });
    if (failure && failure.status != kStatusBusy) return failure;
    if (mode == "wal") return {};
    std::this_thread::sleep_for(kJournalWait);
  } while (std::chrono::steady_clock::now() < deadline);
  return {kStatusBusy, "another process holds it"};
}

Failure take_steps(sqlite3* database, const Schema& schema, int64_t version) {
  for (; version < schema.version; ++version) {
    const auto step = std::find_if(schema.steps.begin(), schema.steps.end(),
                                   [&](const UpgradeStep& each) { return each.from == version; });
    if (step == schema.steps.end()) return {ZYM_DB_STATUS_ERROR, "its version is too old"};
    if (Failure failure = execute(database, step->sql)) return failure;
  }
  return {};
}

// In one transaction: what was cut off is as if it had not begun.
Failure upgrade(sqlite3* database, const Schema& schema) {
  Found found;
  if (Failure failure = execute(database, "BEGIN IMMEDIATE")) return failure;
  // Another process may have been first.
  if (Failure failure = examine(database, schema, found)) return failure;
  if (Failure refusal = refuse(found, schema)) return refusal;
  Failure failure;
  if (found.state == State::kNew) failure = execute(database, schema.sql);
  if (found.state == State::kOlder) failure = take_steps(database, schema, found.version);
  if (failure) return failure;
  return execute(database, "PRAGMA application_id=" + std::to_string(schema.application_id) +
                               ";PRAGMA user_version=" + std::to_string(schema.version) + ";COMMIT");
}

}  // namespace

Failure bring_up_to_date(sqlite3* database, const Schema& schema) {
  Found found;
  // As one: between its looks another process may create the database.
  if (Failure failure = execute(database, "BEGIN")) return failure;
  if (Failure failure = examine(database, schema, found)) return failure;
  if (Failure failure = execute(database, "END")) return failure;
  if (Failure refusal = refuse(found, schema)) return refusal;
  const bool is_ready = found.state == State::kReady;
  if (sqlite3_db_readonly(database, "main") == 1)
    return is_ready ? Failure{} : Failure{kStatusReadOnly, "it cannot be written"};
  if (Failure failure = write_ahead(database)) return failure;
  return is_ready ? Failure{} : upgrade(database, schema);
}

}  // namespace zymdb::client::sqlite
