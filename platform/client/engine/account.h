// What a transaction changes: the journal's account of what was there before.
//
// The account is JSON: {"Table": {"added": [[first id, last id], …], "before": {"id": {"Column": value,
// …}}}}. A row that was deleted is there with all its columns, a changed one with those that changed. What
// its new values are, the next account tells or else the table. Values are as json_text.h has them.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_ACCOUNT_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_ACCOUNT_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace zymdb::client {

// The table of the accounts, which none is kept of.
inline constexpr std::string_view kJournalTable = "Journal";

using FormerCells = std::map<std::string_view, std::string>;  // columns and their former values, in JSON

class TableChanges {
 public:
  // A row that comes back after its deletion has its former values recorded already.
  void add(int64_t id) {
    if (!before_.contains(id)) added_.insert(id);
  }
  // Null for a row that the transaction itself added: that it goes leaves nothing to tell.
  FormerCells* remove(int64_t id) { return added_.erase(id) != 0 ? nullptr : &before_[id]; }
  bool has_added(int64_t id) const { return added_.contains(id); }
  FormerCells& former(int64_t id) { return before_[id]; }

  std::string text() const;  // empty when there is nothing to tell

 private:
  std::set<int64_t> added_;
  std::map<int64_t, FormerCells> before_;
};

class Account {
 public:
  TableChanges& of(const std::string& table) { return tables_[table]; }
  void clear() { tables_.clear(); }
  std::string text() const;  // as above

 private:
  std::map<std::string, TableChanges, std::less<>> tables_;
};

}  // namespace zymdb::client

#endif
