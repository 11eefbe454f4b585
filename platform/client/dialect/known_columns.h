// The columns of a call as its statement's key has them.
//
// Callers ask for the same columns again and again: to compare them with those of a call before costs half of
// putting them together anew.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_KNOWN_COLUMNS_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_KNOWN_COLUMNS_H

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zymdb::client {

class KnownColumns {
 public:
  // The names one behind the other, each with its NUL; until the next call.
  std::string_view text(std::span<const char* const> columns);

 private:
  static constexpr size_t kPlaces = 16;

  struct Known {
    std::string text;
    std::vector<size_t> begins;  // of the names

    bool are(std::span<const char* const> columns) const;
    void note(std::span<const char* const> columns);
  };

  std::array<Known, kPlaces> places_;
};

}  // namespace zymdb::client

#endif
