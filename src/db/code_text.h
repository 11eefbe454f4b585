// Code tables: the display texts of numeric codes.
#ifndef ZYMDB_SRC_DB_CODE_TEXT_H
#define ZYMDB_SRC_DB_CODE_TEXT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace zymdb {

// Holds its text inline: a table of them then needs no relocation. Tables stand in the order of their codes.
struct CodeText {
  uint16_t code;
  char text[56];
};

// The text of a code, or `other` when the table has none for it.
inline const char* text_of(std::span<const CodeText> table, uint32_t code, const char* other = "Unknown") {
  const auto entry = std::ranges::lower_bound(table, code, {}, &CodeText::code);
  return entry != table.end() && entry->code == code ? entry->text : other;
}

// Copies a text into a field, cut to fit; the rest of the field becomes NUL.
template <size_t N>
void copy_text(char (&field)[N], const char* text) {
  const size_t length = strnlen(text, N - 1);
  std::memcpy(field, text, length);
  std::memset(field + length, 0, N - length);
}

}  // namespace zymdb

#endif
