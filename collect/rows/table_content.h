// The rows that tables of the inventory ought to have.
#ifndef ZYMDB_COLLECT_ROWS_TABLE_CONTENT_H
#define ZYMDB_COLLECT_ROWS_TABLE_CONTENT_H

#include <algorithm>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
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
  const std::string* as_text() const { return std::get_if<std::string>(&content_); }

  auto operator<=>(const Value&) const = default;

 private:
  explicit Value(int64_t number) : content_(number) {}
  explicit Value(std::string text) : content_(std::move(text)) {}

  std::variant<std::monostate, int64_t, std::string> content_;
};

// What the schema makes of a column.
enum class Kind : uint8_t { kNumber, kText };

// When a column of a row is written.
enum class Role : uint8_t {
  kKey,      // always; rows with equal keys are the same row
  kValue,    // always
  kPlace,    // in an existing row only when the sources can tell places
  kKnown,    // always, but what is not known replaces nothing
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
};

// Existing rows for which this holds belong to other writers: they are neither changed nor removed, nor
// doubled. It gets the value of one of the columns.
struct Ownership {
  const char* column = nullptr;
  bool (*is_foreign)(const Value& owner) = nullptr;
};

// Rows that stay though they are not among those that the table ought to have.
struct KeptRows {
  const char* column = nullptr;
  std::set<Value> values;

  void add(FunctionKey key) { values.insert(Value::number(key)); }
};

// The rows that one table ought to have.
struct TableContent {
  const char* table = nullptr;
  std::vector<ColumnSpec> columns;
  std::vector<Row> rows;
  Ownership ownership;
  KeptRows kept;

  // The source breaks off somewhere: what is not told of is not gone. Only rows that share their first key
  // with one of `rows` are removed, and what a row does not know replaces nothing.
  bool is_partial = false;

  // Changes an existing row, where the library has an operation for that, and answers its status.
  int (*change)(const TableContent& content, const Row& row) = nullptr;

  // Writes, after the rows, what the library's own operations write to this table, and adds what became of
  // it to the summary.
  std::function<void(TableSummary&)> write_further;

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

}  // namespace zymdb::collect

#endif
