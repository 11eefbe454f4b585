#include "client/engine/mariadb/marks.h"

#include <mysqld_error.h>

#include <optional>

#include "client/status.h"

namespace zymdb::client::mariadb {
namespace {

// A row for each schema, with which its writers queue: what they change beside it they change in this row
// too, so that two nodes of a cluster never take changes of the same moment for changes of different things.
constexpr const char* kMarks[] = {
    "CREATE TABLE IF NOT EXISTS `zymdb_schemas` (`Name` VARBINARY(64) NOT NULL PRIMARY KEY,`Kind` BIGINT NOT "
    "NULL,"
    "`Version` BIGINT NOT NULL,`Changes` BIGINT NOT NULL DEFAULT 0) ENGINE=InnoDB ROW_FORMAT=DYNAMIC",
    "CREATE TABLE IF NOT EXISTS `zymdb_sequences` (`Name` VARBINARY(64) NOT NULL PRIMARY KEY,`Last` BIGINT "
    "NOT NULL)"
    " ENGINE=InnoDB ROW_FORMAT=DYNAMIC"};

constexpr char kFind[] = "SELECT `Kind`,`Version` FROM `zymdb_schemas` WHERE `Name`=?";
constexpr char kMark[] =
    "INSERT INTO `zymdb_schemas` (`Name`,`Kind`,`Version`) VALUES (?,?,?) "
    "ON DUPLICATE KEY UPDATE `Version`=VALUES(`Version`)";

// Whoever makes tables at the same time on the same server waits for the other; on others of a cluster it
// does no harm.
constexpr char kAlone[] = "DO GET_LOCK(CONCAT('zymdb.',DATABASE()),30)";
constexpr char kNoLongerAlone[] = "DO RELEASE_LOCK(CONCAT('zymdb.',DATABASE()))";

constexpr int kMostTries = 10;

struct Found {
  int64_t kind = 0;
  int64_t version = 0;  // 0: there is none
};

Failure examine(Connection& connection, const Schema& schema, Found& found) {
  static constexpr Class kNumbers[] = {Class::kInteger, Class::kInteger};
  const Argument name[] = {Argument::of(std::string_view(schema.name))};
  Failure failure = connection.run(kFind, name, kNumbers, [&](Row row) {
    found = {row[0].integer, row[1].integer};
    return true;
  });
  return failure.code == ER_NO_SUCH_TABLE ? Failure{} : failure;
}

Failure refuse(const Found& found, const Schema& schema) {
  if (found.version == 0) return {};
  if (found.kind != static_cast<int64_t>(schema.application_id))
    return {kStatusCorrupt, "it is not a database of this kind"};
  if (found.version <= schema.version) return {};
  return {ZYM_DB_STATUS_ERROR, "its version " + std::to_string(found.version) +
                                   " is newer than this program's " + std::to_string(schema.version)};
}

Failure run_all(Connection& connection, std::span<const std::string> statements) {
  for (const std::string& statement : statements) {
    if (Failure failure = connection.execute(statement)) return failure;
  }
  return {};
}

// What was cut off goes on where it ended: the mark is made last.
Failure make(Connection& connection, const Schema& schema, const Tables& tables) {
  for (const char* const statement : kMarks) {
    if (Failure failure = connection.execute(statement)) return failure;
  }
  Found found;
  if (Failure failure = examine(connection, schema, found)) return failure;
  if (Failure refusal = refuse(found, schema)) return refusal;
  if (found.version == schema.version) return {};
  if (Failure failure = run_all(connection, tables.statements)) return failure;
  if (found.version != 0) {
    if (Failure failure = run_all(connection, tables.additions)) return failure;
  }
  const Argument mark[] = {Argument::of(std::string_view(schema.name)),
                           Argument::of(static_cast<int64_t>(schema.application_id)),
                           Argument::of(static_cast<int64_t>(schema.version))};
  return connection.run(kMark, mark);
}

Failure stand_in(Connection& connection, const Tables& tables) {
  constexpr std::string_view kCreate = "CREATE TABLE IF NOT EXISTS";
  for (const std::string& statement : tables.statements) {
    const std::string temporary = "CREATE TEMPORARY TABLE" + statement.substr(kCreate.size());
    if (Failure failure = connection.execute(temporary)) return failure;
  }
  return {};
}

Failure try_to_bring_up_to_date(Connection& connection, const Schema& schema, const Tables& tables,
                                bool may_create, bool& is_absent) {
  Found found;
  if (Failure failure = examine(connection, schema, found)) return failure;
  if (Failure refusal = refuse(found, schema)) return refusal;
  if (found.version == schema.version) return {};
  if (found.version == 0 && !may_create) {
    if (!schema.may_be_absent) return {kStatusIo, "it is empty"};
    is_absent = true;
    return stand_in(connection, tables);
  }
  if (Failure failure = connection.execute(kAlone)) return failure;
  Failure failure = make(connection, schema, tables);
  connection.execute(kNoLongerAlone);
  return failure;
}

}  // namespace

// Each step may be made twice: it is where another node makes the same at the same time and was first.
Failure bring_up_to_date(Connection& connection, const Schema& schema, const Tables& tables, bool may_create,
                         bool& is_absent) {
  Failure failure;
  for (int tried = 0; tried < kMostTries; ++tried) {
    failure = try_to_bring_up_to_date(connection, schema, tables, may_create, is_absent);
    if (!failure.ends_transaction() || failure.ends_connection()) break;
  }
  return failure;
}

}  // namespace zymdb::client::mariadb
