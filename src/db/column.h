// Which column of a table fills which field of a record. Such a table gives a query its column list, a record
// its values and a value set the record's. It knows its record: with another one it does not compile.
#ifndef ZYMDB_SRC_DB_COLUMN_H
#define ZYMDB_SRC_DB_COLUMN_H

#include <cstddef>
#include <cstdint>
#include <span>
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
  uint8_t unreadable;        // what a number is when the column cannot be read
  uint16_t offset;           // of the field in its record
  uint16_t size;             // of the field, or the bound of a text
  bool is_signed = false;    // the field is a signed number: written as one, read without its sign
  bool is_required = false;  // a row where it cannot be read is no row
};

template <class Record>
struct ColumnOf {
  Column column;
};

// A column that fills no field belongs to any record.
struct OwnColumn {
  Column column;

  template <class Record>
  constexpr operator ColumnOf<Record>() const {
    return {column};
  }
};

template <class Field>
constexpr Reading reading_of() {
  return std::is_array_v<Field> ? Reading::kText : Reading::kNumber;
}

// The most that a query takes.
inline constexpr size_t kMaxColumns = 48;

template <class Record, size_t N>
struct ColumnTable {
  Column columns[N];

  constexpr const Column* begin() const { return columns; }
  constexpr const Column* end() const { return columns + N; }
  static constexpr size_t size() { return N; }

  // Where a column stands. A name that the table lacks does not compile.
  consteval int place_of(std::string_view name) const {
    int place = 0;
    while (columns[place].name != name) ++place;
    return place;
  }
};

// `columns_of<Record>({ZYMDB_FIELD(Record, SlotNo), …})`.
template <class Record, size_t N>
consteval ColumnTable<Record, N> columns_of(const ColumnOf<Record> (&list)[N]) {
  ColumnTable<Record, N> table{};
  for (size_t i = 0; i < N; ++i) table.columns[i] = list[i].column;
  return table;
}

// The columns of a table of any length, or some neighbours among them.
template <class Record>
class Columns {
 public:
  template <size_t N>
  requires(N <= kMaxColumns) constexpr Columns(const ColumnTable<Record, N>& table)
      : columns_(table.columns) {}
  // A table that goes away is not looked at.
  template <size_t N>
  Columns(const ColumnTable<Record, N>&& table) = delete;

  constexpr std::span<const Column> all() const { return columns_; }

  // Those from one place up to another, which is not among them.
  constexpr Columns part(int first, int end) const {
    return Columns(columns_.subspan(static_cast<size_t>(first), static_cast<size_t>(end - first)));
  }

 private:
  constexpr explicit Columns(std::span<const Column> columns) : columns_(columns) {}

  std::span<const Column> columns_;
};

// The same table with another bound for one text.
template <class Record, size_t N>
consteval ColumnTable<Record, N> with_text_size(ColumnTable<Record, N> table, std::string_view name,
                                                uint16_t size) {
  table.columns[table.place_of(name)].size = size;
  return table;
}

// The named columns of a table, in the order of their names. A name that the table lacks does not compile.
template <class Record, size_t N, size_t M>
consteval ColumnTable<Record, M> in_order(const ColumnTable<Record, N>& table,
                                          const std::string_view (&names)[M]) {
  ColumnTable<Record, M> ordered{};
  for (size_t i = 0; i < M; ++i) ordered.columns[i] = table.columns[table.place_of(names[i])];
  return ordered;
}

// How the fields of a record are put into a value set.
enum class Puts : uint8_t {
  kWide,        // numbers 32 bits wide, whatever the field's width; texts as they are
  kWideOrNull,  // the same, but empty texts as NULL
  kAsFields,    // numbers as wide as their fields; texts as they are
};

template <class Record, size_t N>
struct WrittenTable {
  ColumnTable<Record, N> table;
  Puts puts;
};

// A table as writers put it. A column without a field, and a field that no put takes whole, do not compile.
template <class Record, size_t N>
consteval WrittenTable<Record, N> written(const ColumnTable<Record, N>& table, Puts puts) {
  for (const Column& column : table) {
    if (column.reading == Reading::kOwn) throw "no field to put";
    if (column.reading == Reading::kText) continue;
    if (column.size > sizeof(uint32_t)) throw "a put would cut this field";
    if (column.is_signed && column.size != sizeof(int32_t)) throw "no put for a narrow signed number";
  }
  return {table, puts};
}

// A written table of any length.
template <class Record>
class WrittenColumns {
 public:
  constexpr WrittenColumns() = default;
  template <size_t N>
  constexpr WrittenColumns(const WrittenTable<Record, N>& written)
      : columns_(written.table.columns), puts_(written.puts) {}
  template <size_t N>
  WrittenColumns(const WrittenTable<Record, N>&& written) = delete;

  constexpr std::span<const Column> all() const { return columns_; }
  constexpr Puts puts() const { return puts_; }

 private:
  std::span<const Column> columns_;
  Puts puts_ = Puts::kWide;
};

}  // namespace zymdb

// The column COLUMN fills FIELD of RECORD; a number that cannot be read is UNREADABLE.
#define ZYMDB_COLUMN(COLUMN, RECORD, FIELD, UNREADABLE)                                          \
  zymdb::ColumnOf<RECORD> {                                                                      \
    {                                                                                            \
      COLUMN, zymdb::reading_of<decltype(RECORD::FIELD)>(), UNREADABLE, offsetof(RECORD, FIELD), \
          sizeof(RECORD::FIELD), std::is_signed_v<decltype(RECORD::FIELD)>                       \
    }                                                                                            \
  }

// A field that bears its column's name; a number that cannot be read is 0.
#define ZYMDB_FIELD(RECORD, FIELD) ZYMDB_COLUMN(#FIELD, RECORD, FIELD, 0)

// The column COLUMN fills FIELD of RECORD in its own width; without it there is no record.
#define ZYMDB_REQUIRED_COLUMN(COLUMN, RECORD, FIELD)                                    \
  zymdb::ColumnOf<RECORD> {                                                             \
    {                                                                                   \
      COLUMN, zymdb::reading_of<decltype(RECORD::FIELD)>(), 0, offsetof(RECORD, FIELD), \
          sizeof(RECORD::FIELD), std::is_signed_v<decltype(RECORD::FIELD)>, true        \
    }                                                                                   \
  }

// The same for a field that bears its column's name.
#define ZYMDB_REQUIRED(RECORD, FIELD) ZYMDB_REQUIRED_COLUMN(#FIELD, RECORD, FIELD)

// A field for a number that COLUMN holds as text.
#define ZYMDB_NUMBER_IN_TEXT(COLUMN, RECORD, FIELD, UNREADABLE)                                           \
  zymdb::ColumnOf<RECORD> {                                                                               \
    { COLUMN, zymdb::Reading::kNumberInText, UNREADABLE, offsetof(RECORD, FIELD), sizeof(RECORD::FIELD) } \
  }

// A column that has its place in the column list and is read by the operation itself.
#define ZYMDB_OWN_COLUMN(COLUMN)              \
  zymdb::OwnColumn {                          \
    { COLUMN, zymdb::Reading::kOwn, 0, 0, 0 } \
  }

#endif
