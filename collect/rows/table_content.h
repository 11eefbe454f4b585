// The rows that tables of the inventory ought to have.
#ifndef ZYMDB_COLLECT_ROWS_TABLE_CONTENT_H
#define ZYMDB_COLLECT_ROWS_TABLE_CONTENT_H

#include <algorithm>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "common/pci_address.h"

namespace zymdb::collect {

struct TableSummary;

// What a column holds: a number, a text, or NULL where nobody knows.
class Value {
 public:
  Value() = default;

  // The database's numbers are signed and have 64 bits; a larger one keeps its bits.
  template <class Number>
  requires std::integral<Number> || std::is_enum_v<Number>
  static Value number(Number number) { return Value(static_cast<int64_t>(number)); }
  static Value number(FunctionKey key) { return number(key.value); }
  static Value text(std::string text) { return Value(std::move(text)); }

  bool is_null() const { return std::holds_alternative<std::monostate>(content_); }

  // Null where it is something else.
  const int64_t* as_number() const { return std::get_if<int64_t>(&content_); }
  const std::string* as_text() const {
    const auto* text = std::get_if<Text>(&content_);
    return text == nullptr ? nullptr : text->get();
  }

  // Nothing comes first, then numbers, then texts.
  std::strong_ordering operator<=>(const Value& other) const {
    if (as_text() != nullptr && other.as_text() != nullptr) return *as_text() <=> *other.as_text();
    return content_ <=> other.content_;
  }
  bool operator==(const Value& other) const { return (*this <=> other) == 0; }

 private:
  // Rows are held by the ten thousand, most of their values are numbers.
  using Text = std::shared_ptr<const std::string>;

  explicit Value(int64_t number) : content_(number) {}
  explicit Value(std::string text) : content_(std::make_shared<const std::string>(std::move(text))) {}

  std::variant<std::monostate, int64_t, Text> content_;
};

// What the schema makes of a column.
enum class Kind : uint8_t { kNumber, kText };

// When a column of a row is written.
enum class Role : uint8_t {
  kKey,      // always; rows with equal keys are the same row
  kValue,    // always
  kPlace,    // in an existing row only when the sources can tell places
  kKnown,    // always, but what is not known replaces nothing
  kTold,     // in an existing row only when somebody could be asked: a driver, a drive
  kInitial,  // in a new row only: afterwards it belongs to others
  kStamp,    // along with the others, but never a reason to write
  kOthers,   // never: another writer's, read to know whose the row is
};

struct ColumnSpec {
  const char* name;
  Role role;
  Kind kind = Kind::kNumber;
};

struct Row {
  std::vector<Value> values;  // one per column
  bool place_known = true;
  bool is_told = true;
};

struct TableContent;

// Asked about an existing row of a table.
using RowTest = std::function<bool(const TableContent& content, const std::vector<Value>& values)>;

// Rows of some functions.
struct FunctionSet {
  std::vector<int64_t> keys;  // in their order, in which they nearly always come

  void add(FunctionKey key) {
    const auto place = std::ranges::lower_bound(keys, int64_t{key.value});
    if (place == keys.end() || *place != int64_t{key.value}) keys.insert(place, int64_t{key.value});
  }
  bool contains(const Value& key) const {
    return key.as_number() != nullptr && std::ranges::binary_search(keys, *key.as_number());
  }
};

// The rows that one table ought to have.
struct TableContent {
  const char* table = nullptr;
  std::vector<ColumnSpec> columns;
  std::vector<Row> rows;

  // Existing rows for which this holds belong to other writers: they are neither changed nor removed, nor
  // doubled.
  RowTest is_foreign;

  // The column that says which function a row is about, where the table has one.
  const char* function_column = nullptr;

  // Rows of these functions stay though they are not among those that the table ought to have.
  FunctionSet kept = {};

  // So do rows for which this holds.
  RowTest keeps;

  // At the addresses of these are other devices now: the former devices' rows go first.
  FunctionSet replaced = {};

  // The source breaks off somewhere: what is not told of is not gone. Only rows that share their first key
  // with one of `rows` are removed, and what a row does not know replaces nothing.
  bool is_partial = false;

  // Changes an existing row, where the library has an operation for that, and answers its status.
  int (*change)(const TableContent& content, const Row& row) = nullptr;

  // Writes, after the rows, what the library's own operations write to this table, and adds what became of
  // it to the summary.
  std::function<void(TableSummary&)> write_further;

  // Called after the collection's commit, and not without one.
  std::function<void()> once_stored = {};

  // Whether a source tells of the class. Else the table is only rid of rows whose function is gone, and where
  // there are none nobody hears of it.
  bool is_told = true;

  // Rows with an equal first key stand in the order of `rows`: those that would not are written anew.
  bool is_ordered = false;

  size_t position_of(std::string_view column) const {
    const auto spec = std::ranges::find(columns, column,
                                        [](const ColumnSpec& each) { return std::string_view(each.name); });
    return static_cast<size_t>(spec - columns.begin());
  }

  const Value& value_of(const std::vector<Value>& values, std::string_view column) const {
    return values.at(position_of(column));
  }
};

// Holds for rows with such a value in a column.
inline RowTest where(const char* column, bool (*holds)(const Value&)) {
  return [column, holds](const TableContent& content, const std::vector<Value>& values) {
    return holds(content.value_of(values, column));
  };
}

}  // namespace zymdb::collect

#endif
