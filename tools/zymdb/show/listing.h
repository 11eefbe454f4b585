// What `zymdb show` can list, described once: the same columns make the table, the names that --columns
// takes, the JSON output, the help text and the shell completion.
//
// A listing is an array of Column<Record> and a function that reads the records; make_listing() hides the
// record's type, so that all that prints is compiled once.
#ifndef ZYMDB_TOOL_SHOW_LISTING_H
#define ZYMDB_TOOL_SHOW_LISTING_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace zymdb::tool {

using Value = std::variant<uint64_t, int64_t, std::string>;

enum class Tone : uint8_t { kPlain, kFaint, kWarning };

// Numbers stand to the right; long texts are cut where the terminal is too narrow for all.
enum class Kind : uint8_t { kNumber, kText, kLongText };

// Whether a table has the column when --columns does not say.
enum class Shown : uint8_t { kNo, kByDefault };

struct ColumnInfo {
  const char* field;    // the record's field, and so the key in JSON; null: derived, for tables only
  const char* heading;  // heading of the table and name for --columns
  const char* help;
  Shown shown;
  Kind kind;
  unsigned hex_digits;  // 0: a table shows the number in decimal
};

template <class Record>
struct Column {
  ColumnInfo info;
  Value (*read)(const Record&);
  Tone (*tone)(const Record&) = nullptr;
};

template <auto Member, class Record>
Value read_field(const Record& record) {
  const auto& field = record.*Member;
  if constexpr (std::is_array_v<std::remove_reference_t<decltype(field)>>) {
    return std::string(field, strnlen(field, sizeof field));
  } else {
    return uint64_t{field};
  }
}

// A field of the record. The type of the field decides between text and number.
template <class Record, auto Member, unsigned HexDigits = 0>
constexpr Column<Record> field(const char* name, const char* heading, const char* help,
                               Shown shown = Shown::kNo, Tone (*tone)(const Record&) = nullptr) {
  using Field = std::remove_reference_t<decltype(std::declval<Record>().*Member)>;
  constexpr Kind kKind = std::is_array_v<Field> ? Kind::kText : Kind::kNumber;
  return {{name, heading, help, shown, kKind, HexDigits}, &read_field<Member, Record>, tone};
}

// A text made of the record for people to read.
template <class Record>
constexpr Column<Record> derived(const char* heading, const char* help, Shown shown,
                                 Value (*read)(const Record&), Tone (*tone)(const Record&) = nullptr) {
  return {{nullptr, heading, help, shown, Kind::kText, 0}, read, tone};
}

// The same column as the one that gives way on a narrow terminal.
template <class Record>
constexpr Column<Record> long_text(Column<Record> column) {
  column.info.kind = Kind::kLongText;
  return column;
}

struct Cell {
  Value value;
  Tone tone = Tone::kPlain;
};

struct Sheet {
  std::vector<ColumnInfo> columns;
  std::vector<std::vector<Cell>> rows;
};

template <class Record>
Sheet make_sheet(std::span<const Column<Record>> columns, std::span<const Record> records) {
  Sheet sheet;
  for (const auto& column : columns) sheet.columns.push_back(column.info);
  for (const auto& record : records) {
    auto& row = sheet.rows.emplace_back();
    for (const auto& column : columns) {
      row.push_back({column.read(record), column.tone ? column.tone(record) : Tone::kPlain});
    }
  }
  return sheet;
}

// Which of a listing's columns, by index, in the order wanted.
using Selection = std::vector<size_t>;

struct Listing {
  std::string name;  // plural: the subcommand, and the array's key in JSON
  std::string description;
  std::vector<ColumnInfo> columns;
  std::function<Sheet(const Selection&)> read;  // reads the records, and of them only what is selected
  bool is_stored = true;                        // in the inventory; else it is read without one
  std::string command = name;                   // the subcommand, where it has another name
};

// `columns` must outlive the listing.
template <class Record, size_t N>
Listing make_listing(std::string name, std::string description, const Column<Record> (&columns)[N],
                     std::function<std::vector<Record>()> read_records) {
  Listing listing{.name = std::move(name), .description = std::move(description), .columns = {}, .read = {}};
  for (const auto& column : columns) listing.columns.push_back(column.info);
  listing.read = [&columns, read_records = std::move(read_records)](const Selection& selection) {
    std::vector<Column<Record>> selected;
    for (const size_t index : selection) selected.push_back(columns[index]);
    return make_sheet<Record>(selected, read_records());
  };
  return listing;
}

Selection default_columns(const Listing& listing);
Selection record_fields(const Listing& listing);

// Columns by their headings or fields, in any case, separated by commas; "all" stands for every column.
// Throws CLI::ValidationError, which lists the names, for any other.
Selection parse_columns(const Listing& listing, std::string_view names);

// The object that --json prints: "format_version" and, under `name`, one object per row. An empty text is
// null; bytes that are not UTF-8 become U+FFFD.
std::string render_json(std::string_view name, const Sheet& sheet);

}  // namespace zymdb::tool

#endif
