// What tells texts apart without keeping them: FNV-1a of 64 bits, and how long they are.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_FINGERPRINT_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_FINGERPRINT_H

#include <cstdint>
#include <string_view>

namespace zymdb::client::sqlite {

class Fingerprint {
 public:
  void add(std::string_view text) {
    for (const char c : text) hash_ = (hash_ ^ static_cast<unsigned char>(c)) * 1099511628211U;
    // Where one text ends and the next begins counts, too.
    hash_ = (hash_ ^ 0x100) * 1099511628211U;
    size_ += text.size();
  }

  bool operator==(const Fingerprint&) const = default;

 private:
  uint64_t hash_ = 14695981039346656037U;
  uint64_t size_ = 0;
};

}  // namespace zymdb::client::sqlite

#endif
