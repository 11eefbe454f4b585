// Resources that were written down once, until the inventory changes.
#ifndef ZYMDB_SERVICE_REDFISH_CACHE_H
#define ZYMDB_SERVICE_REDFISH_CACHE_H

#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zymdb::service::redfish {

// A resource as it is sent.
struct Body {
  std::shared_ptr<const std::string> text;
  std::string etag;
};

// For any thread. Holds so many bytes at most: what nobody asked for the longest goes first.
class Cache {
 public:
  explicit Cache(size_t most_bytes) : most_bytes_(most_bytes) {}

  std::optional<Body> find(const std::string& key);
  void keep(const std::string& key, const Body& body);

  size_t bytes() const;

 private:
  struct Entry {
    std::string key;
    Body body;
    size_t bytes;
  };
  using Entries = std::list<Entry>;

  const size_t most_bytes_;
  mutable std::mutex mutex_;
  Entries entries_;  // the newest first
  std::unordered_map<std::string_view, Entries::iterator> by_key_;
  size_t bytes_ = 0;
};

}  // namespace zymdb::service::redfish

#endif
