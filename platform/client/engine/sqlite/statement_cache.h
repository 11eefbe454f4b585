// The prepared statements of one connection, by shape; the least recently used give way.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_STATEMENT_CACHE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_STATEMENT_CACHE_H

#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "client/engine/sqlite/handles.h"
#include "client/result/result.h"

namespace zymdb::client::sqlite {

struct Prepared {
  StatementPtr statement;
  ColumnNames names;
  std::vector<bool> expressions;  // columns that are no table's column
  bool is_gathered = false;       // its rows go where the connection's gathering puts them
  uint64_t number = 0;            // no other of the cache, now or before, has the same
};

class StatementCache {
 public:
  explicit StatementCache(size_t capacity) : capacity_(capacity) {}

  // Null when the shape has not been prepared, or gave way.
  Prepared* find(std::string_view key);

  Prepared& add(std::string_view key, Prepared prepared);

  void clear();
  size_t size() const { return places_.size(); }

 private:
  struct Entry {
    std::string key;
    Prepared prepared;
  };
  using Entries = std::list<Entry>;

  size_t capacity_;
  uint64_t added_ = 0;
  Entries entries_;                                                 // the most recently used first
  std::unordered_map<std::string_view, Entries::iterator> places_;  // keys are views of the entries' own
};

}  // namespace zymdb::client::sqlite

#endif
