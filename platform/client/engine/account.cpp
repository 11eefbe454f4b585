#include "client/engine/account.h"

#include "client/engine/json_text.h"

namespace zymdb::client {
namespace {

// "[[1,4],[9,9]]"
std::string ranges_of(const std::set<int64_t>& ids) {
  std::string json = "[";
  for (auto at = ids.begin(); at != ids.end();) {
    const int64_t first = *at;
    int64_t last = first;
    for (++at; at != ids.end() && *at == last + 1; ++at) last = *at;
    if (json.size() > 1) json += ",";
    json += "[" + std::to_string(first) + "," + std::to_string(last) + "]";
  }
  return json + "]";
}

// A JSON object in the making.
class Object {
 public:
  void add(std::string_view name, std::string_view value) {
    json_.append(json_.empty() ? "{" : ",").append(json_text(name)).append(":").append(value);
  }
  bool is_empty() const { return json_.empty(); }
  std::string text() const { return json_ + "}"; }

 private:
  std::string json_;
};

std::string text_of(const std::map<int64_t, FormerCells>& before) {
  Object rows;
  for (const auto& [id, cells] : before) {
    Object row;
    for (const auto& [column, value] : cells) row.add(column, value);
    rows.add(std::to_string(id), row.text());
  }
  return rows.text();
}

}  // namespace

std::string TableChanges::text() const {
  Object table;
  if (!added_.empty()) table.add("added", ranges_of(added_));
  if (!before_.empty()) table.add("before", text_of(before_));
  return table.is_empty() ? std::string() : table.text();
}

std::string Account::text() const {
  Object account;
  for (const auto& [name, changes] : tables_) {
    const std::string table = changes.text();
    if (!table.empty()) account.add(name, table);
  }
  return account.is_empty() ? std::string() : account.text();
}

}  // namespace zymdb::client
