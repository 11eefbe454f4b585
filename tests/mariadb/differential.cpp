// Two engines, one answer: random filters, changes and transactions run on an embedded inventory and on one
// of a server; every status, row, number, account and generation has to be the same.
//
//   mariadb_differential [--seconds N] [--seed N]
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>
#include <iterator>
#include <random>
#include <sstream>
#include <string_view>
#include <vector>

#include "client/session/handles.h"
#include "common/client_objects.h"
#include "controller/database_client.h"
#include "support/temporary_folder.h"
#include "support/test_database.h"
#include "zymdb_platform.h"

namespace {

using Values = zymdb::ValuesPtr;

struct TableDescription {
  const char* name;
  std::vector<const char*> numbers;
  std::vector<const char*> texts;
};

const TableDescription kTables[] = {
    {"PCIs", {"FunKey", "DevKey", "SlotNo", "Location", "BusNo"}, {"SlotDesignation", "Driver"}},
    {"AimDisks", {"SlotNo", "BayNo", "Temperature", "Presence"}, {"SerialNo", "Location", "Model"}},
    {"PCIAdapter", {"PCIKey", "SlotNo", "HealthStatus"}, {"CardName", "ConnectorType"}},
    {"DPUEvents", {"Slot", "Timestamp"}, {"GenID", "Message"}},
};

const char* const kTexts[] = {"",   "a",   "A",   "b",   "ab",     "a b",  "\xC3\xA9", "\xFF",
                              "1",  "12",  "012", "1.5", "1e1",    " 12 ", "0x1F",     "12abc",
                              "-3", "a%b", "a_b", "\\",  "100000", "1.0",  "zzzzzzzz", "9223372036854775807"};
const char* const kComparisons[] = {"=", "!=", "<", "<=", ">", ">=", "<>", "=="};
const char* const kEscaped[] = {"a!%b", "a!_b", "!%", "a!%%", "%!_%"};
const char* const kReckonings[] = {"+", "-", "*", "&", "|", "/", "%", "<<", ">>"};

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  bool once_in(int count) { return below(count) == 0; }
  template <class List>
  auto one_of(const List& list) -> decltype(list[0]) {
    return list[static_cast<size_t>(below(static_cast<int>(std::size(list))))];
  }

  const TableDescription& table() { return one_of(kTables); }
  std::string text() {
    if (once_in(40)) return std::string(300 + static_cast<size_t>(below(900)), "xy"[below(2)]);
    return one_of(kTexts);
  }
  std::string number() {
    if (once_in(12)) return std::to_string(static_cast<uint32_t>(random_()));
    if (once_in(12)) return "0x" + std::to_string(below(40));
    if (once_in(12)) return "-" + std::to_string(below(9));
    if (once_in(12)) return std::to_string(below(9)) + (once_in(2) ? ".5" : ".0");
    return std::to_string(below(9));
  }
  static std::string quoted(const std::string& value) {
    std::string sql = "'";
    for (const char c : value) sql.append(c == '\'' ? 2 : 1, c);
    return sql + "'";
  }
  std::string literal() { return once_in(2) ? number() : quoted(text()); }
  std::string column(const TableDescription& of) {
    if (once_in(8)) return "_id";
    return once_in(2) ? one_of(of.numbers) : one_of(of.texts);
  }
  std::string reckoning(const TableDescription& of, int depth = 0) {
    if (depth > 1 || once_in(3))
      return once_in(2) ? std::string(one_of(of.numbers)) : std::to_string(1 + below(5));
    const std::string left = reckoning(of, depth + 1);
    const std::string right = reckoning(of, depth + 1);
    if (once_in(6)) return std::string(once_in(2) ? "-" : "~") + "(" + left + ")";
    return "(" + left + one_of(kReckonings) + right + ")";
  }
  std::string call(const TableDescription& of) {
    const std::string text = one_of(of.texts);
    const std::string counted = one_of(of.numbers);
    switch (below(14)) {
      case 6:
        return "length(" + text + ")" + one_of(kComparisons) + std::to_string(below(6));
      case 7:
        return "substr(" + text + "," + std::to_string(below(5) - 1) + "," + std::to_string(below(4)) +
               ")=" + quoted(this->text());
      case 8:
        return "nullif(" + counted + "," + number() + ")" + one_of(kComparisons) + number();
      case 9:
        return "max(" + counted + "," + one_of(of.numbers) + ")" + one_of(kComparisons) + number();
      case 10:
        return "min(" + text + "," + quoted(this->text()) + ")" + one_of(kComparisons) + quoted(this->text());
      case 11:
        return (once_in(2) ? "ltrim(" : "rtrim(") + text + ")=" + quoted(this->text());
      case 12:
        return text + " LIKE " + quoted(one_of(kEscaped)) + " ESCAPE '!'";
      case 13:
        return counted + "||" + text + one_of(kComparisons) + quoted(this->text());
      case 0:
        return "lower(" + text + ")=lower(" + quoted(this->text()) + ")";
      case 1:
        return "upper(" + text + ")=" + quoted(this->text());
      case 2:
        return "abs(" + std::string(one_of(of.numbers)) + ")>" + number();
      case 3:
        return "ifnull(" + std::string(one_of(of.numbers)) + ",0)=" + number();
      case 4:
        return "coalesce(" + text + "," + quoted(this->text()) + ")=" + quoted(this->text());
      default:
        return "trim(" + text + ")=" + quoted(this->text());
    }
  }
  std::string pattern() {
    static const char* const kPatterns[] = {"%", "a%", "%b", "%a%", "a_", "1%", "_", "A", "a%b", "%\\%"};
    return quoted(one_of(kPatterns));
  }
  std::string condition(const TableDescription& of, int depth = 0) {
    const int kind = below(depth > 2 ? 11 : 15);
    const std::string name = column(of);
    const std::string negated = once_in(3) ? " NOT" : "";
    switch (kind) {
      case 0:
      case 1:
      case 2:
        return name + one_of(kComparisons) + literal();
      case 3:
        return literal() + one_of(kComparisons) + name;
      case 4:
        return name + " IS" + negated + (once_in(2) ? " NULL" : " " + literal());
      case 5: {
        std::string list = literal();
        for (int i = below(4); i > 0; --i) list += "," + (once_in(8) ? std::string("NULL") : literal());
        return name + negated + " IN (" + list + ")";
      }
      case 6:
        return name + negated + " BETWEEN " + literal() + " AND " + literal();
      case 7:
        return name + negated + " LIKE " + pattern();
      case 8:
        return reckoning(of) + one_of(kComparisons) + reckoning(of);
      case 9:
        return once_in(2) ? call(of) : name + "||" + quoted("x") + "=" + quoted(text() + "x");
      case 10:
        return column(of) + one_of(kComparisons) + column(of);
      case 11:
        return "NOT (" + condition(of, depth + 1) + ")";
      case 12:
        return sub_select(of, depth);
      default: {
        const char* const word = once_in(2) ? " AND " : " OR ";
        return "(" + condition(of, depth + 1) + word + condition(of, depth + 1) + ")";
      }
    }
  }
  std::string sub_select(const TableDescription& of, int depth) {
    const TableDescription& other = table();
    TableDescription named = other;
    const bool names_around = once_in(3);
    if (names_around) {
      // Of the row around it. A name that both have is the inner one's, whose "Location" is of another type.
      const auto is_of_one_type = [](std::string_view name) { return name != "Location"; };
      std::ranges::copy_if(of.numbers, std::back_inserter(named.numbers), is_of_one_type);
      std::ranges::copy_if(of.texts, std::back_inserter(named.texts), is_of_one_type);
    }
    const std::string where = once_in(2) ? " WHERE " + condition(named, depth + 2) : "";
    // Together the two are refused by one engine.
    const bool has_limit = !names_around && once_in(4);
    const std::string first =
        has_limit ? " ORDER BY " + column(other) + ",_id LIMIT " + std::to_string(below(4)) : "";
    const std::string numbers = std::string(one_of(of.numbers)) + (once_in(2) ? " NOT IN " : " IN ") +
                                "(SELECT " + one_of(other.numbers) + " FROM " + other.name + where + first +
                                ")";
    if (once_in(2)) return numbers;
    if (once_in(2)) return "EXISTS (SELECT _id FROM " + std::string(other.name) + where + ")";
    return std::string(one_of(of.numbers)) + one_of(kComparisons) + "(SELECT max(" + one_of(other.numbers) +
           ") FROM " + other.name + where + ")";
  }
  std::string expression(const TableDescription& of) {
    const std::string text = one_of(of.texts);
    switch (below(8)) {
      case 0:
        return "lower(" + text + ")";
      case 1:
        return "length(" + text + ")";
      case 2:
        return "substr(" + text + "," + std::to_string(below(7) - 3) + ")";
      case 3:
        return std::string(one_of(of.numbers)) + "||" + text;
      case 4:
        return "ifnull(" + std::string(one_of(of.numbers)) + "," + one_of(of.numbers) + ")";
      case 5:
        return column(of) + one_of(kComparisons) + literal();
      default:
        return reckoning(of);
    }
  }
  std::string statement(const TableDescription& of) {
    const std::string from = std::string(" FROM ") + of.name + (once_in(2) ? " WHERE " + condition(of) : "");
    const std::string key = once_in(2) ? one_of(of.numbers) : one_of(of.texts);
    if (once_in(3))
      return "SELECT " + key + ",count(*),total(" + one_of(of.numbers) + "),min(" + expression(of) + ")" +
             from + " GROUP BY " + key + (once_in(2) ? " HAVING count(*)>" + std::to_string(below(3)) : "");
    if (once_in(4)) {
      const TableDescription& other = table();
      const std::string same = std::string(one_of(of.numbers)) + "=" + one_of(other.numbers);
      return "SELECT " + key + "," + one_of(other.texts) + "," + one_of(other.numbers) + " FROM " + of.name +
             "," + other.name + " WHERE " + same +
             (once_in(2) ? " AND " + condition(once_in(2) ? of : other, 1) : "");
    }
    if (once_in(3)) return "SELECT DISTINCT " + key + "," + expression(of) + from;
    return "SELECT " + expression(of) + "," + expression(of) + "," + key + from + " ORDER BY " +
           expression(of) + (once_in(2) ? " DESC" : "") + ",_id";
  }
  std::string filter(const TableDescription& of) {
    std::string text = once_in(6) ? "1" : condition(of);
    if (once_in(2)) return text;
    text += " ORDER BY " + column(of) + (once_in(2) ? " DESC" : "");
    if (once_in(3)) text += "," + column(of);
    // In which order rows come that are alike is no engine's promise.
    text += ",_id";
    if (once_in(2))
      text +=
          " LIMIT " + std::to_string(below(5)) + (once_in(3) ? " OFFSET " + std::to_string(below(3)) : "");
    return text;
  }

  std::mt19937& random() { return random_; }

 private:
  std::mt19937 random_;
};

// A sub-select's order is not that of the rows around it.
bool is_ordered(const std::string& filter) {
  const size_t order = filter.rfind(" BY ");
  return order != filter.npos && filter.find(')', order) == filter.npos;
}

std::string answer_of(int status, zym_db_result_t* raw, size_t columns, bool in_order) {
  const zymdb::ResultPtr rows(raw);
  std::vector<std::string> lines;
  while (rows != nullptr && zym_db_result_step(rows.get()) == ZYM_DB_STATUS_ROW) {
    std::ostringstream text;
    for (size_t i = 0; i < columns; ++i) {
      char cell[2048] = "";
      int64_t number = -77;
      int is_null = 0;
      const int place = static_cast<int>(i);
      zym_db_result_column_text(rows.get(), place, cell, sizeof cell);
      const int is_number = zym_db_result_column_int64(rows.get(), place, &number);
      zym_db_result_column_is_null(rows.get(), place, &is_null);
      text << '|' << cell << '/' << is_number << number << (is_null != 0 ? "N" : "");
    }
    lines.push_back(text.str());
  }
  if (!in_order) std::ranges::sort(lines);
  std::string text = std::to_string(status);
  for (const std::string& line : lines) text += "\n  " + line;
  return text;
}

class Pair {
 public:
  Pair(_zym_db_handle_t* embedded, _zym_db_handle_t* served, Generator& generator)
      : handles_{embedded, served}, generator_(generator) {}

  bool step() {
    const TableDescription& table = generator_.table();
    switch (generator_.below(14)) {
      case 7:
        return raw(table);
      case 0:
        return insert(table);
      case 1:
        return insert(table);
      case 2:
        return update(table);
      case 3:
        return generator_.once_in(2) ? remove(table) : insert(table);
      case 4:
        return transaction();
      case 5:
        return generation();
      case 6:
        return aggregate(table);
      default:
        return query(table);
    }
  }
  bool everything() {
    for (const TableDescription& table : kTables) {
      if (!query(table, "1")) return false;
    }
    const std::vector<const char*> account = {"_id", "Size", "Changes"};
    return in_transaction_ || both("the journal", [&](_zym_db_handle_t* handle) {
             zym_db_result_t* rows = nullptr;
             const int status =
                 zym_db_query(handle, "Journal", account.data(), 3, nullptr, nullptr, 0, 0, &rows);
             return answer_of(status, rows, 3, false);
           });
  }
  bool rewind() {
    uint64_t newest = 0;
    zym_db_generation(handles_[0], &newest);
    const uint64_t target = newest - std::min<uint64_t>(newest, static_cast<uint64_t>(generator_.below(4)));
    return both("rewind to " + std::to_string(target),
                [&](_zym_db_handle_t* handle) { return std::to_string(zym_db_rewind(handle, target)); });
  }
  bool end() { return !in_transaction_ || transaction(); }
  bool in_transaction() const { return in_transaction_; }
  int failures() const { return failures_; }

 private:
  template <class Operation>
  bool both(const std::string& what, Operation operation) {
    const std::string first = operation(handles_[0]);
    const std::string second = operation(handles_[1]);
    if (first[0] != '0') ++failures_;
    if (first == second) return true;
    std::cout << what << "\nembedded: " << first << "\nserved:   " << second << "\n"
              << zym_db_last_error(nullptr) << std::endl;
    return false;
  }
  bool query(const TableDescription& table, std::string filter = {}) {
    if (filter.empty()) filter = generator_.filter(table);
    std::vector<const char*> columns = {"_id"};
    columns.insert(columns.end(), table.numbers.begin(), table.numbers.end());
    columns.insert(columns.end(), table.texts.begin(), table.texts.end());
    return both(std::string("query of ") + table.name + " where " + filter, [&](_zym_db_handle_t* handle) {
      zym_db_result_t* rows = nullptr;
      const int status = zym_db_query(handle, table.name, columns.data(), static_cast<int>(columns.size()),
                                      filter.c_str(), nullptr, 0, 0, &rows);
      return answer_of(status, rows, columns.size(), is_ordered(filter));
    });
  }
  bool raw(const TableDescription& table) {
    const std::string sql = generator_.statement(table);
    return both(sql, [&](_zym_db_handle_t* handle) {
      zym_db_result_t* rows = nullptr;
      const int status = zym_db_raw_query(handle, sql.c_str(), static_cast<int>(sql.size()) + 1, &rows);
      return answer_of(status, rows, sql.starts_with("SELECT DISTINCT") ? 2 : 3, is_ordered(sql));
    });
  }
  bool aggregate(const TableDescription& table) {
    const std::string number = generator_.one_of(table.numbers);
    const std::string text = generator_.one_of(table.texts);
    const std::string names[] = {"count(*)",          "sum(" + number + ")",          "max(" + number + ")",
                                 "min(" + text + ")", "count(DISTINCT " + text + ")", "avg(" + number + ")",
                                 "max(" + text + ")"};
    std::vector<const char*> columns;
    for (const std::string& name : names) columns.push_back(name.c_str());
    std::string filter = generator_.condition(table);
    if (generator_.once_in(3)) filter += " GROUP BY " + number;
    return both(std::string("aggregates of ") + table.name + " where " + filter,
                [&](_zym_db_handle_t* handle) {
                  zym_db_result_t* rows = nullptr;
                  const int status =
                      zym_db_query(handle, table.name, columns.data(), static_cast<int>(columns.size()),
                                   filter.c_str(), nullptr, 0, 0, &rows);
                  return answer_of(status, rows, columns.size(), is_ordered(filter));
                });
  }
  void fill(const TableDescription& table, zym_db_content_values_t* values) {
    for (const char* const column : table.numbers) {
      const int kind = generator_.below(5);
      const int number =
          generator_.once_in(10) ? static_cast<int>(generator_.random()()) : generator_.below(9);
      if (kind == 0) zym_db_content_put_null(values, column);
      if (kind == 1) zym_db_content_put_text(values, column, std::to_string(number).c_str());
      if (kind > 2) zym_db_content_put_int(values, column, number);
    }
    for (const char* const column : table.texts) {
      const int kind = generator_.below(5);
      if (kind == 0) zym_db_content_put_null(values, column);
      if (kind == 1) zym_db_content_put_int(values, column, generator_.below(20));
      if (kind > 2) zym_db_content_put_text(values, column, generator_.text().c_str());
    }
  }
  bool insert(const TableDescription& table) {
    const Values values(zym_db_get_content_values(handles_[0]));
    fill(table, values.get());
    return both(std::string("insert into ") + table.name, [&](_zym_db_handle_t* handle) {
      int64_t id = 0;
      const int status = zym_db_insert(handle, table.name, values.get(), 0, &id);
      return std::to_string(status) + " " + std::to_string(id);
    });
  }
  bool update(const TableDescription& table) {
    const Values values(zym_db_get_content_values(handles_[0]));
    fill(table, values.get());
    const std::string where = generator_.condition(table);
    return both(std::string("update of ") + table.name + " where " + where, [&](_zym_db_handle_t* handle) {
      int64_t rows = -1;
      const int status = zym_db_update(handle, table.name, values.get(), where.c_str(), nullptr, 0, &rows);
      return std::to_string(status) + " " + std::to_string(rows);
    });
  }
  bool remove(const TableDescription& table) {
    const std::string where = generator_.condition(table);
    return both(std::string("delete from ") + table.name + " where " + where, [&](_zym_db_handle_t* handle) {
      int64_t rows = -1;
      const int status = zym_db_delete(handle, table.name, where.c_str(), nullptr, 0, &rows);
      return std::to_string(status) + " " + std::to_string(rows);
    });
  }
  bool transaction() {
    if (!in_transaction_) {
      in_transaction_ = true;
      return both("begin", [](_zym_db_handle_t* handle) { return std::to_string(zym_db_begin(handle)); });
    }
    in_transaction_ = false;
    if (generator_.once_in(3))
      return both("rollback",
                  [](_zym_db_handle_t* handle) { return std::to_string(zym_db_rollback(handle)); });
    return both("commit", [](_zym_db_handle_t* handle) { return std::to_string(zym_db_commit(handle)); });
  }
  bool generation() {
    return both("generation", [](_zym_db_handle_t* handle) {
      uint64_t number = 0;
      const int status = zym_db_generation(handle, &number);
      return std::to_string(status) + " " + std::to_string(number);
    });
  }

  _zym_db_handle_t* handles_[2];
  Generator& generator_;
  bool in_transaction_ = false;
  int failures_ = 0;
};

_zym_db_handle_t* open(const std::string& address) {
  setenv("ZYMDB_INVENTORY", address.c_str(), 1);
  zymdb::client::DataSource source;
  std::string error;
  if (!zymdb::client::locate_inventory(source, error)) throw std::runtime_error(error);
  _zym_db_handle_t* const handle = zymdb::client::open_handle(source);
  if (handle == nullptr) throw std::runtime_error(zym_db_last_error(nullptr));
  return handle;
}

// False where the two differ.
bool run(unsigned seed, int steps, int& failures) {
  const TemporaryFolder folder;
  const TestDatabase database;
  Generator generator(seed);
  _zym_db_handle_t* const embedded = open(folder.file("inventory.db"));
  _zym_db_handle_t* const served = open(database.address());
  Pair pair(embedded, served, generator);
  bool is_same = true;
  for (int i = 0; i < steps && is_same; ++i) {
    is_same = pair.step();
    if (is_same && i % 100 == 99) is_same = pair.everything();
    if (is_same && i % 200 == 199 && !pair.in_transaction()) is_same = pair.rewind() && pair.everything();
  }
  is_same = is_same && pair.end() && pair.everything();
  zym_db_close(embedded);
  zym_db_close(served);
  failures += pair.failures();
  if (!is_same) std::cout << "seed " << seed << std::endl;
  return is_same;
}

}  // namespace

int main(int count, char** words) {
  long seconds = 5;
  unsigned seed = 1;
  for (int i = 1; i + 1 < count; i += 2) {
    if (std::strcmp(words[i], "--seconds") == 0) seconds = std::atol(words[i + 1]);
    if (std::strcmp(words[i], "--seed") == 0) seed = static_cast<unsigned>(std::atol(words[i + 1]));
  }
  setenv("ZYMDB_LOG", "", 1);
  const std::time_t end = std::time(nullptr) + seconds;
  int rounds = 0;
  int failures = 0;
  for (; rounds == 0 || std::time(nullptr) < end; ++rounds) {
    if (!run(seed + static_cast<unsigned>(rounds), 400, failures)) return 1;
  }
  std::cout << rounds << " rounds of 400 steps, " << failures << " of them failures on both" << std::endl;
  return 0;
}
