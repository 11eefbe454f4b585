// The rows that tables of the inventory ought to have.
#ifndef ZYMDB_COLLECT_ROWS_TABLE_CONTENT_H
#define ZYMDB_COLLECT_ROWS_TABLE_CONTENT_H

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace zymdb::collect {

// What a column holds: a number, a text, or NULL where nobody knows.
class Value {
 public:
  Value() = default;
  static Value number(uint32_t number) { return {std::to_string(number), true}; }
  static Value text(std::string text) { return {std::move(text), false}; }

  bool is_null() const { return !text_.has_value(); }
  bool is_number() const { return is_number_; }

  // The text, or the number in decimal: what the database client reads as this column's text.
  const std::optional<std::string>& as_text() const { return text_; }

 private:
  Value(std::string text, bool is_number) : text_(std::move(text)), is_number_(is_number) {}

  std::optional<std::string> text_;
  bool is_number_ = false;
};

// When a column of a row is written.
enum class Role : uint8_t {
  kKey,      // always; rows with equal keys are the same row
  kValue,    // always
  kPlace,    // in an existing row only when the sources can tell places
  kInitial,  // in a new row only: afterwards it belongs to others
  kStamp,    // along with the others, but never a reason to write
};

struct ColumnSpec {
  const char* name;
  Role role;
};

struct Row {
  std::vector<Value> values;  // one per column
  bool place_known = true;
};

// The rows that one table ought to have.
struct TableContent {
  const char* table = nullptr;
  std::vector<ColumnSpec> columns;
  std::vector<Row> rows;

  // Existing rows for which this holds belong to other writers: they are neither changed nor removed, nor
  // doubled. It gets the owner column's text (null for NULL).
  const char* owner_column = nullptr;
  bool (*is_foreign)(const std::string* owner) = nullptr;

  // Texts of the first key column: rows that stay though they are not among `rows`.
  std::set<std::string> kept_keys;

  // Changes an existing row, where the library has an operation for that, and answers its status.
  int (*change)(const Row& row) = nullptr;

  // Rows with an equal first key stand in the order of `rows`: those that would not are written anew.
  bool is_ordered = false;
};

}  // namespace zymdb::collect

#endif
