// Bodies as gzip has them.
#ifndef ZYMDB_SERVICE_HTTP_COMPRESSION_H
#define ZYMDB_SERVICE_HTTP_COMPRESSION_H

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace zymdb::service {

using Text = std::shared_ptr<const std::string>;

// Throws std::bad_alloc.
std::string gzip(std::string_view content);

// What was compressed so. Throws std::bad_alloc, also where it was not.
std::string gunzip(std::string_view compressed);

// What an Accept-Encoding header allows: gzip named, or "*", and not with a weight of 0.
bool accepts_gzip(std::string_view header);

// Whether bodies of that Content-Type shrink.
bool is_compressible(std::string_view type);

// What was compressed lately, by the text itself: answers that are sent again and again share theirs. Bounded
// in number and size; forgets the one that was not asked for the longest. For any thread.
class CompressedTexts {
 public:
  explicit CompressedTexts(size_t most_bytes = 2 << 20) : most_bytes_(most_bytes) {}

  // Null where compressing it gains nothing.
  Text of(const Text& text);

  size_t bytes() const;

 private:
  struct Entry {
    // Keeps no text alive, and recognises one that took the address of another.
    std::weak_ptr<const std::string> text;
    Text compressed;
  };

  static constexpr size_t kMostEntries = 64;

  const size_t most_bytes_;
  mutable std::mutex mutex_;
  std::list<Entry> entries_;  // the last used first
  size_t bytes_ = 0;
};

}  // namespace zymdb::service

#endif
