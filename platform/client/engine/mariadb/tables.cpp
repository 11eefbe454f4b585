#include "client/engine/mariadb/tables.h"

#include <algorithm>
#include <utility>

#include "client/engine/mariadb/emitter.h"

namespace zymdb::client::mariadb {
namespace {

// Of texts that are unique: a key takes no more.
constexpr char kKeyText[] = "VARBINARY(2048)";
// What an index keeps of a text.
constexpr char kIndexedText[] = "(255)";

struct Unknown {};

std::string_view trimmed(std::string_view text) {
  const size_t begin = text.find_first_not_of(" \n");
  return begin == text.npos ? std::string_view()
                            : text.substr(begin, text.find_last_not_of(" \n") - begin + 1);
}

std::string without_comments(std::string_view sql) {
  std::string text;
  while (!sql.empty()) {
    const std::string_view line = sql.substr(0, std::min(sql.size(), sql.find('\n')));
    text.append(line.substr(0, line.find("--"))).push_back('\n');
    sql.remove_prefix(std::min(sql.size(), line.size() + 1));
  }
  return text;
}

// One statement, word by word; names in double quotes.
class Words {
 public:
  explicit Words(std::string_view text) : rest_(trimmed(text)) {}

  bool accept(std::string_view words) {
    if (!rest_.starts_with(words)) return false;
    rest_ = trimmed(rest_.substr(words.size()));
    return true;
  }
  void expect(std::string_view words) {
    if (!accept(words)) throw Unknown{};
  }
  std::string name() {
    expect("\"");
    const size_t end = rest_.find('"');
    if (end == rest_.npos) throw Unknown{};
    std::string name(rest_.substr(0, end));
    rest_ = trimmed(rest_.substr(end + 1));
    return name;
  }
  std::string number() {
    const size_t end = rest_.find_first_not_of("-0123456789");
    if (end == 0) throw Unknown{};
    std::string number(rest_.substr(0, end));
    rest_ = trimmed(rest_.substr(number.size()));
    return number;
  }
  bool at_end() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

class Reader {
 public:
  explicit Reader(Tables& tables) : tables_(tables) {}

  void read(std::string_view statement) {
    Words words(statement);
    if (words.accept("CREATE TABLE "))
      table(words);
    else if (words.accept("CREATE INDEX "))
      index(words);
    else
      throw Unknown{};
    if (!words.at_end()) throw Unknown{};
  }

 private:
  void table(Words& words) {
    const std::string name = words.name();
    tables_.names.push_back(name);
    std::string sql = "CREATE TABLE IF NOT EXISTS " + identifier(name) + " (";
    words.expect("(");
    do {
      const std::string definition = column(words, name);
      tables_.additions.push_back("ALTER TABLE " + identifier(name) + " ADD COLUMN IF NOT EXISTS " +
                                  definition);
      sql += definition + ",";
    } while (words.accept(","));
    words.expect(")");
    tables_.statements.push_back(sql);
  }
  // In the table's definition.
  std::string column(Words& words, const std::string& table) {
    const std::string name = words.name();
    const bool is_text = words.accept("TEXT");
    const bool is_bytes = !is_text && words.accept("BLOB");
    if (!is_text && !is_bytes) words.expect("INTEGER");
    tables_.catalog.add_column(table, name, is_text, is_bytes);
    if (!is_text && words.accept("PRIMARY KEY")) {
      if (words.accept("AUTOINCREMENT")) tables_.lasting_ids.insert(table);
      return identifier(name) + " BIGINT NOT NULL PRIMARY KEY";
    }
    const bool is_needed = words.accept("NOT NULL");
    const bool is_unique = words.accept("UNIQUE");
    const char* type = is_text || is_bytes ? "LONGBLOB" : "BIGINT";
    if (is_unique && is_text) type = kKeyText;
    std::string sql = identifier(name) + " " + type + (is_needed ? " NOT NULL" : " NULL");
    if (is_unique) sql += " UNIQUE";
    if (words.accept("DEFAULT")) sql += " DEFAULT " + words.number();
    return sql;
  }
  void index(Words& words) {
    const std::string name = words.name();
    words.expect("ON");
    const std::string table = words.name();
    std::string columns;
    words.expect("(");
    do {
      const std::string column = words.name();
      const Table* const owner = tables_.catalog.table(table);
      const Column* const found = owner != nullptr ? owner->column(column) : nullptr;
      columns += (columns.empty() ? "" : ",") + identifier(column);
      if (found != nullptr && found->is_text) columns += kIndexedText;
    } while (words.accept(","));
    words.expect(")");
    tables_.additions.push_back("CREATE INDEX IF NOT EXISTS " + identifier(name) + " ON " +
                                identifier(table) + " (" + columns + ")");
    creation_of(table) += "KEY " + identifier(name) + " (" + columns + "),";
  }
  // An index is made with its table, whose definition is not closed until all of them are there.
  std::string& creation_of(const std::string& table) {
    const auto found = std::ranges::find(tables_.names, table);
    if (found == tables_.names.end()) throw Unknown{};
    return tables_.statements[static_cast<size_t>(found - tables_.names.begin())];
  }

  Tables& tables_;
};

}  // namespace

bool read_tables(std::string_view schema, Tables& tables, std::string& error) {
  constexpr char kEnd[] = ") ENGINE=InnoDB DEFAULT CHARACTER SET=binary ROW_FORMAT=DYNAMIC";
  const std::string text = without_comments(schema);
  Reader reader(tables);
  for (std::string_view rest = text; !trimmed(rest).empty();) {
    const std::string_view statement = rest.substr(0, rest.find(';'));
    rest.remove_prefix(std::min(rest.size(), statement.size() + 1));
    try {
      reader.read(statement);
    } catch (const Unknown&) {
      error = "a schema that MariaDB has no words for: " + std::string(trimmed(statement));
      return false;
    }
  }
  for (std::string& statement : tables.statements) {
    statement.pop_back();
    statement += kEnd;
  }
  return true;
}

}  // namespace zymdb::client::mariadb
