#include "service/redfish/cache.h"

namespace zymdb::service::redfish {

std::optional<Body> Cache::find(const std::string& key) {
  const std::lock_guard lock(mutex_);
  const auto found = by_key_.find(key);
  if (found == by_key_.end()) return {};
  entries_.splice(entries_.begin(), entries_, found->second);
  return found->second->body;
}

void Cache::keep(const std::string& key, const Body& body) {
  constexpr size_t kOfEntry = 256;  // about what keeping one takes
  const size_t bytes = 2 * key.size() + body.text->size() + kOfEntry;
  // One large answer is not worth all the others.
  if (bytes > most_bytes_ / 4) return;
  const std::lock_guard lock(mutex_);
  if (by_key_.contains(key)) return;
  entries_.push_front({key, body, bytes});
  by_key_.emplace(entries_.front().key, entries_.begin());
  bytes_ += bytes;
  while (bytes_ > most_bytes_) {
    bytes_ -= entries_.back().bytes;
    by_key_.erase(entries_.back().key);
    entries_.pop_back();
  }
}

size_t Cache::bytes() const {
  const std::lock_guard lock(mutex_);
  return bytes_;
}

}  // namespace zymdb::service::redfish
