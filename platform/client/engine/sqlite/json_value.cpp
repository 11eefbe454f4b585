#include "client/engine/sqlite/json_value.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <new>

namespace zymdb::client::sqlite {
namespace {

constexpr char kHexadecimal[] = "0123456789abcdef";

struct Sequence {
  unsigned char mask, lead;
  uint32_t smallest;
};

// By length, from two bytes on: what the first byte looks like and what a shorter form could not say.
constexpr Sequence kSequences[] = {{0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};

// The length of the UTF-8 sequence that the text begins with; 0 for what is none.
size_t sequence_length(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x80) return 1;
  for (size_t length = 2; length <= 4; ++length) {
    const Sequence& form = kSequences[length - 2];
    if ((byte(0) & form.mask) != form.lead) continue;
    if (text.size() < length) return 0;
    uint32_t code = byte(0) & static_cast<unsigned char>(~form.mask);
    for (size_t i = 1; i < length; ++i) {
      if ((byte(i) & 0xC0) != 0x80) return 0;
      code = code << 6 | (byte(i) & 0x3F);
    }
    const bool is_surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code >= form.smallest && code <= 0x10FFFF && !is_surrogate ? length : 0;
  }
  return 0;
}

bool is_utf8(std::string_view text) {
  while (!text.empty()) {
    const size_t length = sequence_length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string in_hexadecimal(const char* kind, std::string_view bytes) {
  std::string json = std::string("{\"") + kind + "\":\"";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    json.append({kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]});
  }
  return json + "\"}";
}

std::string json_of_real(double value) {
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%.17g", value);
  return std::string("{\"real\":\"") + digits.data() + "\"}";
}

std::string_view bytes_of(sqlite3_value* value) {
  const auto* const bytes = static_cast<const char*>(sqlite3_value_blob(value));
  const auto size = static_cast<size_t>(sqlite3_value_bytes(value));
  if (bytes == nullptr && size != 0) throw std::bad_alloc();
  return {bytes, size};
}

void append_escaped(std::string& json, char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (c == '"' || c == '\\') {
    json.append({'\\', c});
  } else if (byte < 0x20) {
    json.append("\\u00").append({kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]});
  } else {
    json.push_back(c);
  }
}

}  // namespace

std::string json_text(std::string_view text) {
  std::string json = "\"";
  for (const char c : text) append_escaped(json, c);
  return json + "\"";
}

std::string json_of(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return std::to_string(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
      return json_of_real(sqlite3_value_double(value));
    case SQLITE_TEXT: {
      const std::string_view text = bytes_of(value);
      return is_utf8(text) ? json_text(text) : in_hexadecimal("bytes", text);
    }
    case SQLITE_BLOB:
      return in_hexadecimal("blob", bytes_of(value));
    default:
      return "null";
  }
}

bool same_value(sqlite3_value* a, sqlite3_value* b) {
  const int type = sqlite3_value_type(a);
  if (type != sqlite3_value_type(b)) return false;
  if (type == SQLITE_NULL) return true;
  if (type == SQLITE_INTEGER) return sqlite3_value_int64(a) == sqlite3_value_int64(b);
  if (type == SQLITE_FLOAT) return sqlite3_value_double(a) == sqlite3_value_double(b);
  return bytes_of(a) == bytes_of(b);
}

}  // namespace zymdb::client::sqlite
