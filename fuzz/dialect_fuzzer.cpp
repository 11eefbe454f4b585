// Whatever text stands for a filter, a column, a value or a statement: what the dialect lets through is one
// statement of the kind that was asked for. It writes the table it was made for and no other, reads tables of
// the inventory, and others than its own only where the text says SELECT. No value is left in its SQL.
//
// Two judges other than the client's own tell so: SQLite, of what the statement does; and a reader of quotes,
// of which parts of the text are values.
//
// An input's first line names the table; when it is empty, the rest is a complete statement.
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "checks.h"
#include "client/dialect/dialect.h"
#include "client/dialect/statement.h"
#include "client/engine/schema.h"
#include "client/engine/sqlite/engine.h"
#include "client/engine/sqlite/gathering.h"

namespace {

using namespace zymdb::client;
using zymdb::fuzz::require;
using Kind = Request::Kind;
using Names = std::set<std::string, std::less<>>;

std::string_view view(const char* text) {
  return text != nullptr ? text : "";
}

std::string lower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

// A text taken apart by its quotes.
struct Apart {
  explicit Apart(std::string_view text) {
    char quote = 0;
    for (size_t i = 0; i < text.size(); ++i) {
      const char c = text[i];
      if (quote == 0 && (c == '"' || c == '\'')) {
        quote = c;
        quoted.emplace_back();
        outside += ' ';
      } else if (quote == 0) {
        outside += c;
      } else if (c != quote) {
        quoted.back() += c;
      } else if (i + 1 < text.size() && text[i + 1] == quote) {
        quoted.back() += text[++i];
      } else {
        quote = 0;
      }
    }
    closed = quote == 0;
  }

  bool selects() const { return lower(outside).find("select") != std::string::npos; }

  std::vector<std::string> quoted;
  std::string outside;
  bool closed = true;
};

// What a statement may do, and what it did.
struct Judge {
  Kind kind;
  std::string_view table;
  bool selects;
  const Catalog& catalog;

  bool changes(Kind wanted, std::string_view name) const { return kind == wanted && name == table; }

  static int judge(void* self, int action, const char* first, const char* second, const char*, const char*) {
    static_cast<const Judge*>(self)->judge(action, view(first), view(second));
    return SQLITE_OK;
  }

  void judge(int action, std::string_view first, std::string_view second) const {
    switch (action) {
      case SQLITE_SELECT:
        return;
      case SQLITE_READ:
        require(catalog.table(first) != nullptr, "reads what is no table of the inventory", first);
        require(selects || first == table, "reads another table", first);
        return;
      case SQLITE_FUNCTION:
        return require(second == "like" || second == sqlite::kGathering || is_function(second),
                       "calls a function", second);
      case SQLITE_INSERT:
        return require(changes(Kind::kInsert, first), "inserts", first);
      case SQLITE_UPDATE:
        return require(changes(Kind::kUpdate, first), "updates", first);
      case SQLITE_DELETE:
        return require(changes(Kind::kDelete, first), "deletes", first);
      default:
        require(false, "does something else", std::to_string(action));
    }
  }
};

class Database {
 public:
  Database() {
    sqlite3_open(":memory:", &database_);
    gathering_.attach(database_);
    sqlite3_exec(database_, kInventorySchema.sql, nullptr, nullptr, nullptr);
    sqlite3_exec(database_, kPropertiesSchema.sql, nullptr, nullptr, nullptr);
    const auto add_column = [](void* self, int, char** names, char**) {
      static_cast<Database*>(self)->add(names[0], names[1], view(names[2]) == "TEXT");
      return 0;
    };
    sqlite3_exec(database_,
                 "SELECT t.name, c.name, c.type FROM sqlite_schema t, pragma_table_info(t.name) c "
                 "WHERE t.type='table' AND t.name NOT LIKE 'sqlite%'",
                 add_column, this, nullptr);
  }

  const Catalog& catalog() const { return catalog_; }
  const Names& names() const { return names_; }

  void check(const std::string& sql, size_t arguments, Judge judge) {
    sqlite3_set_authorizer(database_, Judge::judge, &judge);
    sqlite3_stmt* statement = nullptr;
    const char* rest = "";
    if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, &rest) == SQLITE_OK) {
      require(*rest == 0, "leaves text behind", sql);
      const bool reads = judge.kind == Kind::kQuery || judge.kind == Kind::kRaw;
      require((sqlite3_stmt_readonly(statement) != 0) == reads, "is of another kind", sql);
      require(sqlite3_bind_parameter_count(statement) == static_cast<int>(arguments), "miscounts values",
              sql);
    }
    sqlite3_finalize(statement);
  }

 private:
  void add(const char* table, const char* column, bool is_text) {
    catalog_.add_column(table, column, is_text);
    names_.insert({table, column});
  }

  sqlite3* database_ = nullptr;
  sqlite::Gathering gathering_;
  Catalog catalog_{sqlite::kFlavour};
  Names names_;  // of all tables and columns
};

// All that may stand in the SQL beside names, numbers and signs.
const Names kWords = {"SELECT", "FROM",     "WHERE",  "GROUP",   "HAVING", "ORDER",  "BY",     "LIMIT",
                      "OFFSET", "DISTINCT", "ASC",    "DESC",    "AND",    "OR",     "NOT",    "IN",
                      "IS",     "NULL",     "ISNULL", "NOTNULL", "LIKE",   "ESCAPE", "EXISTS", "INSERT",
                      "INTO",   "BETWEEN",  "VALUES", "DEFAULT", "UPDATE", "SET",    "DELETE", "count",
                      "sum",    "min",      "max",    "avg",     "total",  "lower",  "upper",  "length",
                      "abs",    "trim",     "ltrim",  "rtrim",   "substr", "ifnull", "nullif", "coalesce"};

// Begins a statement whose rows are not to come back; no text calls it.
constexpr std::string_view kGatheringBegin = "SELECT gathered(";

void check_words(std::string_view outside, const std::string& sql) {
  const auto belongs = [](unsigned char c) {
    return std::isalnum(c) != 0 || c == '_' || c == '.' || c >= 0x80;
  };
  for (auto begin = outside.begin(); begin != outside.end();) {
    begin = std::find_if(begin, outside.end(), belongs);
    const auto end = std::find_if_not(begin, outside.end(), belongs);
    const bool is_number = begin != end && *begin >= '0' && *begin <= '9';
    require(begin == end || is_number || kWords.contains(std::string(begin, end)), "leaves a word behind",
            sql);
    begin = end;
  }
}

// In the SQL only names are quoted, and what stands between quotes in the text is found among the values.
void check_texts(const Names& names, const Statement& statement, const std::string& sql, const Apart& text) {
  const Apart made(sql);
  require(made.closed && sql.find('\'') == std::string::npos, "leaves a quote behind", sql);
  for (const std::string& name : made.quoted) require(names.contains(name), "names what there is not", name);
  for (const char* sign : {";", "--", "/*", "`", "[", "@", ":", "$", "#", "\\"})
    require(made.outside.find(sign) == std::string::npos, "leaves a sign behind", sql);
  std::string_view words = made.outside;
  if (statement.is_gathered()) {
    require(words.starts_with(kGatheringBegin), "is not gathered", sql);
    words.remove_prefix(kGatheringBegin.size());
  }
  check_words(words, sql);

  require(text.closed, "lets an open quote through", sql);
  const auto arguments = statement.arguments();
  auto next = arguments.begin();
  for (const std::string& quoted : text.quoted) {
    next = std::find_if(next, arguments.end(), [&](const Argument& argument) {
      return argument.type == Argument::Type::kText && argument.text == quoted;
    });
    require(next != arguments.end(), "loses a value", quoted);
    ++next;
  }
}

void check_request(Database& database, const Request& request, std::string_view text) {
  static Statement statement;
  const Catalog& catalog = database.catalog();
  if (statement.compose(catalog, request) != 0) return;
  std::string sql;
  if (!statement.sql(sql)) return;
  const Apart apart(text);
  check_texts(database.names(), statement, sql, apart);
  const std::string_view table =
      statement.table() != nullptr ? statement.table()->name() : std::string_view();
  database.check(sql, statement.arguments().size(), {request.kind, table, apart.selects(), catalog});
  if (statement.has_probe())
    database.check(statement.probe_sql(), statement.probe_arguments().size(),
                   {Kind::kQuery, table, apart.selects(), catalog});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Database database;
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t line = std::min(input.find('\n'), input.size());
  const std::string table = input.substr(0, line);
  // The client takes texts that end with a NUL.
  const std::string text = line < input.size() ? input.c_str() + line + 1 : "";

  const _zym_db_param_t params[] = {{3, 0, 1, 1}, {2, 0, 1, 2}, {3, 0, 1, 3}};
  Request request;
  request.params = params;
  if (table.empty()) {
    request.kind = Kind::kRaw;
    request.sql = text;
    check_request(database, request, text);
    return 0;
  }
  request.table = table;
  request.where = text.c_str();
  check_request(database, request, text);
  request.kind = Kind::kDelete;
  check_request(database, request, text);
  ContentValues values;
  values.put_integer("_id", 1);
  request.values = &values;
  request.kind = Kind::kUpdate;
  check_request(database, request, text);

  // The same text where a column's name stands.
  request.where = nullptr;
  values.clear();
  values.put_text(text, text);
  request.kind = Kind::kInsert;
  check_request(database, request, "");
  const char* const column = text.c_str();
  request.values = nullptr;
  request.columns = {&column, 1};
  request.kind = Kind::kQuery;
  check_request(database, request, "");
  return 0;
}
