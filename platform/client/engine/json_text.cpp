#include "client/engine/json_text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace zymdb::client {
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

std::string json_of_real(double value) {
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%.17g", value);
  return std::string("{\"real\":\"") + digits.data() + "\"}";
}

std::string json_of_blob(std::string_view bytes) {
  return in_hexadecimal("blob", bytes);
}

std::string json_of_text(std::string_view text) {
  return is_utf8(text) ? json_text(text) : in_hexadecimal("bytes", text);
}

}  // namespace zymdb::client
