#include "client/engine/mariadb/rewinding.h"

#include <nlohmann/json.hpp>

#include "client/status.h"

namespace zymdb::client::mariadb {
namespace {

using Json = nlohmann::json;

constexpr char kBounds[] = "SELECT IFNULL(MIN(`_id`),0),IFNULL(MAX(`_id`),0) FROM `Journal`";
constexpr char kAccounts[] =
    "SELECT `Changes` FROM `Journal` WHERE `Changes` IS NOT NULL AND `_id`>? ORDER BY `_id` DESC";
constexpr char kForget[] = "DELETE FROM `Journal` WHERE `_id`>?";
// Generations without an account have no row of their own, the newest has.
constexpr char kNewest[] =
    "INSERT INTO `Journal` (`_id`,`Time`,`Size`) SELECT ?,MAX(`Time`),IFNULL(MAX(`Size`),0) FROM `Journal` "
    "HAVING IFNULL(MAX(`_id`),0)<?";

Failure failed(std::string reason) {
  return {ZYM_DB_STATUS_ERROR, std::move(reason)};
}

std::string from_hexadecimal(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  return bytes;
}

// What a former value was. `storage` holds the bytes.
Argument value_of(const Json& json, std::string& storage) {
  Argument value;
  if (json.is_number_integer()) return Argument::of(json.get<int64_t>());
  if (json.is_string()) {
    storage = json.get<std::string>();
    return Argument::of(std::string_view(storage));
  }
  if (!json.is_object() || json.empty()) return value;
  const auto form = json.begin();
  if (form.key() == "real") {
    value.type = Argument::Type::kReal;
    value.real = std::stod(form.value().get<std::string>());
    return value;
  }
  storage = from_hexadecimal(form.value().get<std::string>());
  value = Argument::of(std::string_view(storage));
  if (form.key() == "blob") value.type = Argument::Type::kBlob;
  return value;
}

class Rewinding {
 public:
  Rewinding(Connection& connection, const Catalog& catalog) : connection_(connection), catalog_(catalog) {}

  Failure take_back(const std::string& text) {
    const Json account = Json::parse(text, nullptr, false);
    if (!account.is_object()) return failed("malformed JSON in the journal");
    for (const auto& [name, changes] : account.items()) {
      const Table* const table = catalog_.table(name);
      if (table == nullptr) return of_another_version(name);
      if (Failure failure = take_back(*table, changes)) return failure;
    }
    return {};
  }

 private:
  // No row is both.
  Failure take_back(const Table& table, const Json& changes) {
    const std::string name = identifier(table.name());
    for (const Json& range : changes.value("added", Json::array())) {
      const Argument ids[] = {Argument::of(range.at(0).get<int64_t>()),
                              Argument::of(range.at(1).get<int64_t>())};
      if (Failure failure = connection_.run("DELETE FROM " + name + " WHERE `_id` BETWEEN ? AND ?", ids))
        return failure;
    }
    const Json before = changes.value("before", Json::object());
    for (const auto& [id, cells] : before.items()) {
      if (Failure failure = restore(table, std::stoll(id), cells)) return failure;
    }
    return {};
  }

  // A row that is gone comes back with its first column.
  Failure restore(const Table& table, int64_t id, const Json& cells) {
    const std::string name = identifier(table.name());
    const Argument row[] = {Argument::of(id)};
    if (Failure failure = connection_.run("INSERT IGNORE INTO " + name + " (`_id`) VALUES (?)", row))
      return failure;
    for (const auto& [key, cell] : cells.items()) {
      const Column* const column = table.column(key);
      if (column == nullptr) return of_another_version(table.name() + "." + key);
      std::string storage;
      const Argument values[] = {value_of(cell, storage), Argument::of(id)};
      if (Failure failure = connection_.run(
              "UPDATE " + name + " SET " + identifier(column->name) + "=? WHERE `_id`=?", values))
        return failure;
    }
    return {};
  }

  static Failure of_another_version(const std::string& what) {
    return failed("the journal tells of \"" + what + "\", which this version does not know");
  }

  Connection& connection_;
  const Catalog& catalog_;
};

Failure check(Connection& connection, int64_t generation) {
  static constexpr Class kNumbers[] = {Class::kInteger, Class::kInteger};
  int64_t oldest = 0;
  int64_t newest = 0;
  Failure failure = connection.run(kBounds, {}, kNumbers, [&](Row row) {
    oldest = row[0].integer;
    newest = row[1].integer;
    return true;
  });
  if (failure) return failure;
  if (generation < oldest - 1)
    return failed("the journal reaches back to generation " + std::to_string(oldest - 1));
  if (generation > newest) return failed("the newest generation is " + std::to_string(newest));
  return {};
}

}  // namespace

Failure take_back(Connection& connection, const Catalog& catalog, uint64_t generation) {
  const auto target = static_cast<int64_t>(generation);
  if (Failure failure = check(connection, target)) return failure;
  static constexpr Class kText[] = {Class::kText};
  const Argument bound[] = {Argument::of(target), Argument::of(target)};
  std::vector<std::string> accounts;
  Failure failure = connection.run(kAccounts, std::span(bound).first(1), kText, [&](Row row) {
    accounts.emplace_back(row[0].text);
    return true;
  });
  if (failure) return failure;
  Rewinding rewinding(connection, catalog);
  try {
    for (const std::string& account : accounts) {
      if (Failure refusal = rewinding.take_back(account)) return refusal;
    }
  } catch (const std::exception&) {
    return failed("malformed JSON in the journal");
  }
  if (Failure refusal = connection.run(kForget, std::span(bound).first(1))) return refusal;
  return connection.run(kNewest, bound);
}

}  // namespace zymdb::client::mariadb
