#include "client/engine/mariadb/table_copy.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "client/engine/account.h"
#include "client/engine/mariadb/journal.h"
#include "client/status.h"

namespace zymdb::client::mariadb {
namespace {

constexpr mode_t kFileMode = 0640;

struct CloseFile {
  void operator()(sqlite3* file) const { sqlite3_close(file); }
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

Failure failure_of(sqlite3* file) {
  const int code = sqlite3_errcode(file);
  return {code == SQLITE_FULL ? kStatusFull : kStatusIo, sqlite3_errmsg(file)};
}

Failure make_file(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
  if (descriptor < 0) return {errno == ENOSPC ? kStatusFull : kStatusIo, std::strerror(errno)};
  close(descriptor);
  return {};
}

Failure execute(sqlite3* file, const std::string& sql) {
  return sqlite3_exec(file, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK ? Failure{}
                                                                                 : failure_of(file);
}

bool insert(sqlite3_stmt* statement, Row row) {
  int place = 0;
  for (const Argument& value : row) {
    ++place;
    if (value.type == Argument::Type::kInteger)
      sqlite3_bind_int64(statement, place, value.integer);
    else if (value.type == Argument::Type::kText)
      sqlite3_bind_text64(statement, place, value.text.data(), value.text.size(), SQLITE_STATIC, SQLITE_UTF8);
    else if (value.type == Argument::Type::kBlob)
      sqlite3_bind_blob64(statement, place, value.text.data(), value.text.size(), SQLITE_STATIC);
    else
      sqlite3_bind_null(statement, place);
  }
  const bool is_there = sqlite3_step(statement) == SQLITE_DONE;
  sqlite3_reset(statement);
  return is_there;
}

Failure copy_table(Connection& connection, sqlite3* file, const Table& table) {
  std::string names;
  std::string columns;
  std::string places;
  std::vector<Class> classes;
  for (const Column& column : table.columns()) {
    names += identifier(column.name) + ",";
    columns += "\"" + column.name + "\",";
    places += "?,";
    classes.push_back(Class::kInteger);
    if (column.is_text) classes.back() = Class::kText;
    if (column.is_bytes) classes.back() = Class::kBytes;
  }
  for (std::string* const list : {&names, &columns, &places}) list->pop_back();
  const std::string insertion =
      "INSERT INTO \"" + table.name() + "\" (" + columns + ") VALUES (" + places + ")";
  sqlite3_stmt* raw = nullptr;
  sqlite3_prepare_v2(file, insertion.c_str(), -1, &raw, nullptr);
  const std::unique_ptr<sqlite3_stmt, FinalizeStatement> statement(raw);
  if (raw == nullptr) return failure_of(file);
  Failure failure;
  const Failure read = connection.run(
      "SELECT " + names + " FROM " + identifier(table.name()) + " ORDER BY `_id`", {}, classes, [&](Row row) {
        if (!insert(raw, row)) failure = failure_of(file);
        return !failure;
      });
  return failure ? failure : read;
}

Failure fill(Connection& connection, const Schema& schema, const Tables& tables, const std::string& path) {
  sqlite3* opened = nullptr;
  sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_READWRITE, nullptr);
  const std::unique_ptr<sqlite3, CloseFile> file(opened);
  if (opened == nullptr) return {ZYM_DB_STATUS_NO_MEMORY, "out of memory"};
  if (Failure failure = execute(opened, "PRAGMA page_size=1024;BEGIN;" + std::string(schema.sql)))
    return failure;
  for (const std::string& name : tables.names) {
    if (Failure failure = copy_table(connection, opened, *tables.catalog.table(name))) return failure;
  }
  return execute(opened, "PRAGMA application_id=" + std::to_string(schema.application_id) +
                             ";PRAGMA user_version=" + std::to_string(schema.version) + ";COMMIT");
}

Failure copy(Connection& connection, const Schema& schema, const Tables& tables, const std::string& path,
             uint64_t& generation) {
  if (tables.catalog.table(kJournalTable) != nullptr) {
    if (Failure failure = read_generation(connection, generation)) return failure;
  }
  Failure failure = make_file(path);
  if (!failure) {
    failure = fill(connection, schema, tables, path);
    if (failure) unlink(path.c_str());
  }
  if (failure && failure.code == 0) failure.reason.insert(0, path + ": ");
  return failure;
}

}  // namespace

Failure save_copy(Connection& connection, const Schema& schema, const Tables& tables, const char* path,
                  uint64_t& generation) {
  generation = 0;
  if (Failure failure = connection.execute("START TRANSACTION WITH CONSISTENT SNAPSHOT, READ ONLY"))
    return failure;
  Failure failure = copy(connection, schema, tables, path, generation);
  if (!failure.ends_connection()) connection.execute("ROLLBACK");
  return failure;
}

}  // namespace zymdb::client::mariadb
