// How much of an inventory's past is kept.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_HISTORY_BOUNDS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_HISTORY_BOUNDS_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace zymdb::client {

struct HistoryBounds {
  int64_t bytes = 1 << 20;  // of accounts; 0: none is kept
  std::chrono::days age{730};

  bool keeps_any() const { return bytes != 0; }
};

// "off", or a size ("256K", "4M") and an age in days ("90d"), each or both with a comma between them.
// False for anything else; `error` then tells.
bool parse_history_bounds(std::string_view text, HistoryBounds& bounds, std::string& error);

// As ZYMDB_HISTORY says, read with each opening. False as above.
bool configured_history_bounds(HistoryBounds& bounds, std::string& error);

}  // namespace zymdb::client

#endif
