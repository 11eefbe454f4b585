#include "client/engine/history_bounds.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace zymdb::client {
namespace {

constexpr char kVariable[] = "ZYMDB_HISTORY";
constexpr int64_t kMost = 1 << 20;  // of any unit

// A number from 1 on, and the letter of its unit.
bool parse_quantity(std::string_view text, int64_t& number, char& unit) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || number < 1 || number > kMost) return false;
  const std::string_view rest(end, static_cast<size_t>(text.data() + text.size() - end));
  unit = rest.size() == 1 ? rest.front() : '\0';
  return unit != '\0';
}

bool take(std::string_view word, HistoryBounds& bounds) {
  int64_t number = 0;
  char unit = '\0';
  if (!parse_quantity(word, number, unit)) return false;
  if (unit == 'd') bounds.age = std::chrono::days(number);
  if (unit == 'K') bounds.bytes = number << 10;
  if (unit == 'M') bounds.bytes = number << 20;
  return unit == 'd' || unit == 'K' || unit == 'M';
}

}  // namespace

bool parse_history_bounds(std::string_view text, HistoryBounds& bounds, std::string& error) {
  bounds = {};
  if (text == "off") {
    bounds.bytes = 0;
    return true;
  }
  const size_t comma = text.find(',');
  if (take(text.substr(0, comma), bounds) &&
      (comma == std::string_view::npos || take(text.substr(comma + 1), bounds)))
    return true;
  error = std::string(kVariable) + "=" + std::string(text) +
          " is neither \"off\" nor a size and an age such as \"1M,730d\"";
  return false;
}

bool configured_history_bounds(HistoryBounds& bounds, std::string& error) {
  const char* const text = std::getenv(kVariable);
  bounds = {};
  return text == nullptr || *text == '\0' || parse_history_bounds(text, bounds, error);
}

}  // namespace zymdb::client
