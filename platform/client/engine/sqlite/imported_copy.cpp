#include "client/engine/sqlite/imported_copy.h"

#include <unistd.h>

#include "client/engine/sqlite/file_copy.h"
#include "client/engine/sqlite/opening.h"
#include "client/engine/sqlite/own_statements.h"
#include "client/engine/sqlite/rows.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

constexpr char kTables[] =
    "SELECT name FROM sqlite_schema WHERE type='table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'";

std::string insertion_into(const Table& table) {
  std::string names;
  std::string places;
  for (const Column& column : table.columns()) {
    names.append(names.empty() ? "\"" : ",\"").append(column.name).push_back('"');
    places.append(places.empty() ? "?" : ",?");
  }
  return "INSERT INTO \"" + table.name() + "\" (" + names + ") VALUES (" + places + ")";
}

Failure copy_table(sqlite3* database, const Table& table, CopySource& source) {
  sqlite3_stmt* raw = nullptr;
  const int code = sqlite3_prepare_v2(database, insertion_into(table).c_str(), -1, &raw, nullptr);
  const StatementPtr statement(raw);
  if (code != SQLITE_OK) return failure_of(database, code);
  Failure failure;
  const bool is_whole = source.read(table, [&](std::span<const Argument> row) {
    const Run run(raw);
    int result = run.bind(row);
    if (result == SQLITE_OK) result = run.step();
    if (result != SQLITE_DONE) failure = failure_of(database, result);
    return !failure;
  });
  // What the source lacks it tells by itself.
  if (!failure && !is_whole) failure.status = kStatusIo;
  return failure;
}

Failure fill(const std::string& path, const Schema& schema, CopySource& source) {
  sqlite3* opened = nullptr;
  const int code =
      sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_READWRITE, nullptr);
  const DatabasePtr to(opened);
  if (code != SQLITE_OK) return failure_of(opened, code);
  if (Failure failure = execute(opened, kNewDatabase)) return failure;
  if (Failure failure = execute(opened, std::string("BEGIN;") + schema.sql)) return failure;
  Catalog catalog;
  if (Failure failure = read_catalog(opened, catalog)) return failure;
  std::vector<std::string> names;
  const auto add = [&](sqlite3_stmt* row) { names.push_back(text_of(row, 0)); };
  if (Failure failure = read_rows(opened, kTables, add)) return failure;
  for (const std::string& name : names) {
    if (Failure failure = copy_table(opened, *catalog.table(name), source)) return failure;
  }
  return execute(opened, "PRAGMA application_id=" + std::to_string(schema.application_id) +
                             ";PRAGMA user_version=" + std::to_string(schema.version) + ";COMMIT");
}

}  // namespace

int write_copy(const std::string& path, const Schema& schema, CopySource& source, std::string& error) {
  Failure failure = make_file(path);
  if (!failure) {
    failure = fill(path, schema, source);
    if (failure) unlink(path.c_str());
  }
  if (!failure.reason.empty()) error = path + ": " + failure.reason;
  return failure.status;
}

}  // namespace zymdb::client::sqlite
