#include "records/value.h"

namespace zymdb::records {
namespace {

constexpr size_t kLongestCharacter = 4;

bool continues(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The length of the character that a first byte announces; 1 for what starts none.
size_t announced_length(char first) {
  const auto byte = static_cast<unsigned char>(first);
  return byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC2 ? 2 : 1;
}

}  // namespace

std::string_view whole_characters(std::string_view text) {
  size_t tail = 0;
  while (tail < text.size() && tail < kLongestCharacter && continues(text[text.size() - 1 - tail])) ++tail;
  if (tail == text.size()) return text;
  const size_t first = text.size() - 1 - tail;
  return announced_length(text[first]) > tail + 1 ? text.substr(0, first) : text;
}

}  // namespace zymdb::records
