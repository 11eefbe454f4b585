// Which column of a table fills which field of a record. Such a table gives a query its column list and a
// record its values.
#ifndef ZYMDB_SRC_DB_COLUMN_H
#define ZYMDB_SRC_DB_COLUMN_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace zymdb {

enum class Reading : uint8_t {
  kNumber,        // an unsigned number, cut to the field's width
  kNumberInText,  // the same, stored as text
  kText,          // a text, cut to `size` bytes with its NUL
  kOwn,           // the operation reads this column itself
};

// Holds its name inline: a table of columns then needs no relocation.
struct Column {
  char name[32];
  Reading reading;
  uint8_t unreadable;      // what a number is when the column cannot be read
  uint16_t offset;         // of the field in its record
  uint16_t size;           // of the field, or the bound of a text
  bool is_signed = false;  // the field is a signed number: written as one, read without its sign
};

template <class Field>
constexpr Reading reading_of() {
  return std::is_array_v<Field> ? Reading::kText : Reading::kNumber;
}

// The same table with another bound for one text.
template <size_t N>
constexpr std::array<Column, N> with_text_size(const Column (&columns)[N], std::string_view name,
                                               uint16_t size) {
  std::array<Column, N> changed = std::to_array(columns);
  for (Column& column : changed)
    if (column.name == name) column.size = size;
  return changed;
}

// The named columns of a table, in the order of their names. A name that the table lacks does not compile.
template <size_t N, size_t M>
consteval std::array<Column, M> in_order(const Column (&columns)[N], const std::string_view (&names)[M]) {
  std::array<Column, M> ordered{};
  for (size_t i = 0; i < M; ++i) {
    size_t place = 0;
    while (columns[place].name != names[i]) ++place;
    ordered[i] = columns[place];
  }
  return ordered;
}

}  // namespace zymdb

// The column COLUMN fills FIELD of RECORD; a number that cannot be read is UNREADABLE.
#define ZYMDB_COLUMN(COLUMN, RECORD, FIELD, UNREADABLE)                                        \
  {                                                                                            \
    COLUMN, zymdb::reading_of<decltype(RECORD::FIELD)>(), UNREADABLE, offsetof(RECORD, FIELD), \
        sizeof(RECORD::FIELD), std::is_signed_v<decltype(RECORD::FIELD)>                       \
  }

// A field that bears its column's name; a number that cannot be read is 0.
#define ZYMDB_FIELD(RECORD, FIELD) ZYMDB_COLUMN(#FIELD, RECORD, FIELD, 0)

// The same for a number that COLUMN holds as text.
#define ZYMDB_NUMBER_IN_TEXT(COLUMN, RECORD, FIELD, UNREADABLE) \
  { COLUMN, zymdb::Reading::kNumberInText, UNREADABLE, offsetof(RECORD, FIELD), sizeof(RECORD::FIELD) }

// A column that has its place in the column list and is read by the operation itself.
#define ZYMDB_OWN_COLUMN(COLUMN) \
  { COLUMN, zymdb::Reading::kOwn, 0, 0, 0 }

#endif
