// Whatever text stands for a filter or statement: what the dialect lets through is one statement that reads
// the tables of the inventory, and has as many values as it has places for them.
//
// An input's first line names the table; when it is empty, the rest is a complete statement.
#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "client/dialect.h"
#include "client/schema.h"
#include "client/statement.h"

namespace {

using namespace zymdb::client;

void require(bool holds, const char* what, std::string_view text) {
  if (holds) return;
  std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(text.size()), text.data());
  std::abort();
}

std::string_view view(const char* text) {
  return text != nullptr ? text : "";
}

// Not the client's own judge: a second, simpler one.
int judge(void*, int action, const char* first, const char* second, const char*, const char*) {
  const std::string_view name = view(first);
  switch (action) {
    case SQLITE_SELECT:
      return SQLITE_OK;
    case SQLITE_READ:
      require(!name.starts_with("sqlite_") && !name.starts_with("pragma_"), "reads an internal table", name);
      return SQLITE_OK;
    case SQLITE_FUNCTION:
      require(view(second) == "like" || is_function(view(second)), "calls a function", view(second));
      return SQLITE_OK;
    default:
      require(false, "does more than read", std::to_string(action));
      return SQLITE_DENY;
  }
}

class Database {
 public:
  Database() {
    sqlite3_open(":memory:", &database_);
    sqlite3_exec(database_, kInventorySchema.sql, nullptr, nullptr, nullptr);
    sqlite3_exec(database_, kPropertiesSchema.sql, nullptr, nullptr, nullptr);
    const auto add = [](void* catalog, int, char** names, char**) {
      static_cast<Catalog*>(catalog)->add_column(names[0], names[1]);
      return 0;
    };
    sqlite3_exec(database_,
                 "SELECT t.name, c.name FROM sqlite_schema t, pragma_table_info(t.name) c "
                 "WHERE t.type='table' AND t.name NOT LIKE 'sqlite%'",
                 add, &catalog_, nullptr);
    sqlite3_set_authorizer(database_, judge, nullptr);
  }

  const Catalog& catalog() const { return catalog_; }

  void check(const std::string& sql, size_t arguments) {
    sqlite3_stmt* statement = nullptr;
    const char* rest = "";
    if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, &rest) == SQLITE_OK) {
      require(*rest == 0, "leaves text behind", sql);
      require(sqlite3_stmt_readonly(statement) != 0, "writes", sql);
      require(sqlite3_bind_parameter_count(statement) == static_cast<int>(arguments), "miscounts values",
              sql);
    }
    sqlite3_finalize(statement);
  }

 private:
  sqlite3* database_ = nullptr;
  Catalog catalog_;
};

void check_request(Database& database, const Request& request) {
  static Statement statement;
  if (statement.compose(database.catalog(), request) != 0) return;
  std::string sql;
  if (statement.sql(sql)) database.check(sql, statement.arguments().size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Database database;
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t line = std::min(input.find('\n'), input.size());
  const std::string table = input.substr(0, line);
  const std::string text = line < input.size() ? input.substr(line + 1) : "";

  const _zym_db_param_t params[] = {{3, 0, 1, 1}, {2, 0, 1, 2}, {3, 0, 1, 3}};
  Request request;
  request.params = params;
  if (table.empty()) {
    request.kind = Request::Kind::kRaw;
    request.sql = text;
    check_request(database, request);
    return 0;
  }
  request.table = table;
  request.where = text.c_str();
  check_request(database, request);
  // The same text where a column's name stands.
  const char* const column = text.c_str();
  request.columns = {&column, 1};
  request.where = nullptr;
  check_request(database, request);
  return 0;
}
