// The value of a field, as every reader of records is given it.
#ifndef ZYMDB_RECORDS_VALUE_H
#define ZYMDB_RECORDS_VALUE_H

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <variant>

namespace zymdb::records {

// Nothing: nobody knows.
using Value = std::variant<std::monostate, uint64_t, int64_t, std::string>;

inline bool is_known(const Value& value) {
  return !std::holds_alternative<std::monostate>(value);
}

// The text without what is left of a UTF-8 character that was cut at its end.
std::string_view whole_characters(std::string_view text);

// An empty text says nothing. One that fills its field may have been cut there, inside a character too.
template <size_t N>
Value value_of(const char (&text)[N]) {
  const std::string_view whole(text, strnlen(text, N));
  if (whole.empty()) return {};
  return std::string(whole.size() + 1 < N ? whole : whole_characters(whole));
}
inline Value value_of(const std::string& text) {
  return text.empty() ? Value() : Value(text);
}
inline Value value_of(uint8_t number) {
  return uint64_t{number};
}
inline Value value_of(uint16_t number) {
  return uint64_t{number};
}
inline Value value_of(uint32_t number) {
  return uint64_t{number};
}
inline Value value_of(uint64_t number) {
  return number;
}
inline Value value_of(int32_t number) {
  return int64_t{number};
}

}  // namespace zymdb::records

#endif
