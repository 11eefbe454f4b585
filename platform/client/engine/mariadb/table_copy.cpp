#include "client/engine/mariadb/table_copy.h"

#include "client/engine/account.h"
#include "client/engine/mariadb/engine.h"
#include "client/engine/mariadb/journal.h"

namespace zymdb::client::mariadb {
namespace {

class TableRows final : public CopySource {
 public:
  explicit TableRows(Connection& connection) : connection_(connection) {}

  bool read(const Table& table, const TakeRow& row) override {
    std::string sql = "SELECT ";
    std::vector<Class> classes;
    for (const Column& column : table.columns()) {
      sql.append(identifier(column.name)).push_back(',');
      classes.push_back(Class::kInteger);
      if (column.is_text) classes.back() = Class::kText;
      if (column.is_bytes) classes.back() = Class::kBytes;
    }
    sql.pop_back();
    failure =
        connection_.run(sql + " FROM " + identifier(table.name()) + " ORDER BY `_id`", {}, classes, row);
    return !failure;
  }

  Failure failure;

 private:
  Connection& connection_;
};

Failure fill(Connection& connection, const Schema& schema, const Tables& tables, const char* path,
             uint64_t& generation) {
  generation = 0;
  if (tables.catalog.table(kJournalTable) != nullptr) {
    if (Failure failure = read_generation(connection, generation)) return failure;
  }
  TableRows rows(connection);
  std::string error;
  const int status = host().write_copy(path, schema, rows, error);
  if (status == 0) return {};
  return error.empty() && rows.failure ? rows.failure : Failure{status, error};
}

}  // namespace

Failure save_copy(Connection& connection, const Schema& schema, const Tables& tables, const char* path,
                  uint64_t& generation) {
  if (Failure failure = connection.execute("START TRANSACTION WITH CONSISTENT SNAPSHOT, READ ONLY"))
    return failure;
  Failure failure = fill(connection, schema, tables, path, generation);
  if (!failure.ends_connection()) connection.execute("ROLLBACK");
  return failure;
}

}  // namespace zymdb::client::mariadb
