#include "terminal/moment.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <ctime>
#include <iterator>

namespace zymdb::tool {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::system_clock;

constexpr int64_t kSecond = 1000;
constexpr const char* kForms[] = {"%Y-%m-%d", "%Y-%m-%d %H:%M", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%MZ",
                                  "%Y-%m-%dT%H:%M:%SZ"};

struct Unit {
  char letter;
  int64_t milliseconds;
};
constexpr Unit kUnits[] = {
    {'s', kSecond}, {'m', 60 * kSecond}, {'h', 3600 * kSecond}, {'d', 86400 * kSecond}};

std::optional<int64_t> parse_ago(const std::string& text) {
  constexpr uint64_t kMost = 1'000'000'000;
  if (text.empty()) return std::nullopt;
  const auto number = parse_number(text.substr(0, text.size() - 1));
  const auto unit = std::ranges::find(kUnits, text.back(), &Unit::letter);
  if (!number || *number > kMost || unit == std::end(kUnits)) return std::nullopt;
  const int64_t now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  return now - static_cast<int64_t>(*number) * unit->milliseconds;
}

// strptime() takes a 31st of February; the calendar then tells another day.
bool is_in_calendar(const tm& parts, const tm& calendar) {
  return calendar.tm_mday == parts.tm_mday && calendar.tm_mon == parts.tm_mon;
}

}  // namespace

std::optional<uint64_t> parse_number(const std::string& text) {
  uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

std::optional<int64_t> parse_time(const std::string& text) {
  for (const char* const form : kForms) {
    tm parts{};
    const char* const rest = strptime(text.c_str(), form, &parts);
    if (rest == nullptr || *rest != '\0') continue;
    tm calendar = parts;
    const time_t seconds = timegm(&calendar);
    if (is_in_calendar(parts, calendar)) return static_cast<int64_t>(seconds) * kSecond;
  }
  return parse_ago(text);
}

std::string objection_to_time(const std::string& text) {
  return parse_time(text) ? "" : "'" + text + "' is no time";
}

std::string objection_to_moment(const std::string& text) {
  return parse_number(text) || parse_time(text) ? "" : "'" + text + "' is neither a generation nor a time";
}

}  // namespace zymdb::tool
