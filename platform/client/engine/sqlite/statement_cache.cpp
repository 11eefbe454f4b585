#include "client/engine/sqlite/statement_cache.h"

namespace zymdb::client::sqlite {

Prepared* StatementCache::find(std::string_view key) {
  const auto place = places_.find(key);
  if (place == places_.end()) return nullptr;
  entries_.splice(entries_.begin(), entries_, place->second);
  return &place->second->prepared;
}

Prepared& StatementCache::add(std::string_view key, Prepared prepared) {
  if (places_.size() == capacity_) {
    places_.erase(entries_.back().key);
    entries_.pop_back();
  }
  prepared.number = ++added_;
  entries_.push_front({std::string(key), std::move(prepared)});
  places_.emplace(entries_.front().key, entries_.begin());
  return entries_.front().prepared;
}

void StatementCache::clear() {
  places_.clear();
  entries_.clear();
}

}  // namespace zymdb::client::sqlite
