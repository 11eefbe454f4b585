// A query's rows, held whole, and a cursor.
#ifndef ZYMDB_PLATFORM_CLIENT_RESULT_RESULT_H
#define ZYMDB_PLATFORM_CLIENT_RESULT_RESULT_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "client/result/byte_buffer.h"
#include "zymdb_db.h"

namespace zymdb::client {

// Names of a result's columns, shared by the results of one prepared statement, all of one thread.
class NamedColumns {
 public:
  explicit NamedColumns(std::vector<std::string> names);

  size_t size() const { return names_.size(); }
  const std::string& operator[](size_t column) const { return names_[column]; }

  // The column of this name, or -1. It is looked for first where it was found after the `asked`th question
  // of a row before.
  int find(const char* name, uint32_t& asked) const {
    if (asked < order_.size() && std::strcmp(names_[order_[asked]].c_str(), name) == 0)
      return static_cast<int>(order_[asked++]);
    return search(name, asked);
  }

 private:
  int search(std::string_view name, uint32_t& asked) const;

  std::vector<std::string> names_;
  mutable std::vector<uint32_t> order_;  // in which they were asked for last; at first their own
};
using ColumnNames = std::shared_ptr<const NamedColumns>;

// A result's rows, apart from its memory and its cursor.
struct KeptRows {
  ColumnNames names;
  std::string bytes;
  uint32_t count = 0;

  size_t size() const { return bytes.capacity(); }
};

// Rows lie packed one behind the other, so that a long list stays in the processor's cache until it is read:
// a row's size, a cell for each column, then whatever did not fit the cells.
class Result {
 public:
  // Empties the result for rows of the named columns. It will not take more than `limit` bytes.
  void start(ColumnNames names, size_t limit);

  // Rows are added one after the other: begun, given a cell for every column in order, ended. False: the
  // result would be too large.
  bool begin_row() {
    begun_ = bytes_.size();
    const size_t cells = sizeof(RowSize) + columns_ * sizeof(Cell);
    if (!make_room(cells)) return false;
    next_cell_ = begun_ + sizeof(RowSize);
    bytes_.skip(cells);
    return true;
  }
  void add_integer(int64_t value) {
    if (const auto narrow = static_cast<int32_t>(value); narrow == value)
      add(Cell(Type::kNarrowInteger, 0, static_cast<uint32_t>(narrow)));
    else
      add_wide(Type::kInteger, value);
  }
  void add_real(double value) { add_wide(Type::kReal, value); }
  bool add_text(std::string_view value) { return add_bytes(Type::kText, value); }
  bool add_blob(std::string_view value) { return add_bytes(Type::kBlob, value); }
  void add_null() { add(Cell(Type::kNull)); }
  // The NULL of an expression over no rows, which reads as 0 because no column's value is missing.
  void add_empty_aggregate() { add(Cell(Type::kEmptyAggregate)); }
  void end_row() {
    bytes_.replace(begun_, static_cast<RowSize>(bytes_.size() - begun_));
    ++rows_;
  }

  // In place of adding them one by one, and the other way round.
  void assign(const KeptRows& rows);
  KeptRows rows() const;

  uint32_t row_count() const { return rows_; }
  int step();
  void reset();

  // The reads of the current row answer 0, or 1 when there is no such column or value. Then a number is left
  // as it was and a text is empty.
  template <class Number>
  int read_number(int column, Number* value) const {
    int64_t wide = 0;
    const int status = read_integer(column, wide);
    if (status == 0) *value = static_cast<Number>(wide);
    return status;
  }
  int read_text(int column, char* text, size_t size) const {
    Cell cell;
    if (!find(column, cell) || cell.type != Type::kText) return read_other_text(cell, text, size);
    copy_text(bytes(cell), text, size);
    return 0;
  }
  int read_blob(int column, void* data, size_t size) const;
  int read_bytes(int column, int* length) const;
  int read_is_null(int column, int* is_null) const;

  // The column of this name, or -1.
  int find(const char* name) const { return names_->find(name, asked_); }

  // Whether keeping it for the next query is worth its memory.
  bool is_small() const;
  void forget_names() { names_.reset(); }

 private:
  enum class Type : uint32_t { kNull, kEmptyAggregate, kNarrowInteger, kInteger, kReal, kText, kBlob };

  using RowSize = uint32_t;

  static constexpr uint32_t kLongest = (1U << 28) - 1;  // of texts and blobs

  struct Cell {
    constexpr Cell() : Cell(Type::kNull) {}
    constexpr explicit Cell(Type of, size_t bytes = 0, size_t content = 0)
        : type(of), length(static_cast<uint32_t>(bytes) & kLongest), value(static_cast<uint32_t>(content)) {}

    Type type : 4;
    uint32_t length : 28;  // of a text or blob
    uint32_t value;        // a narrow integer; where in the row all others but NULLs are
  };

  static constexpr size_t kNumberSize = 32;  // holds any number written out

  void add(Cell cell) {
    bytes_.replace(next_cell_, cell);
    next_cell_ += sizeof cell;
  }
  template <class Value>
  void add_wide(Type type, Value value) {
    add(Cell(type, 0, bytes_.size() - begun_));
    bytes_.append(value);
  }
  bool add_bytes(Type type, std::string_view value) {
    if (!make_room(value.size())) return false;
    add(Cell(type, value.size(), bytes_.size() - begun_));
    bytes_.append(value);
    return true;
  }

  // For so many bytes, and wide numbers in all columns that may follow: those are then added unasked.
  bool make_room(size_t size) {
    size += columns_ * sizeof(int64_t);
    return size <= room_ - std::min(room_, bytes_.size()) || grow(size);
  }
  bool grow(size_t size);

  template <class Value>
  static Value load(const uint8_t* from) {
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
  }

  // A column of the current row. False: there is none.
  bool find(int column, Cell& cell) const {
    // A negative one is beyond any number of columns.
    if (static_cast<uint32_t>(column) >= columns_ || row_ == nullptr) return false;
    cell = load<Cell>(row_ + sizeof(RowSize) + static_cast<size_t>(column) * sizeof(Cell));
    return true;
  }
  int read_integer(int column, int64_t& value) const {
    Cell cell;
    if (!find(column, cell)) return ZYM_DB_STATUS_ERROR;
    if (cell.type == Type::kNarrowInteger)
      value = static_cast<int32_t>(cell.value);
    else if (cell.type == Type::kInteger)
      value = load<int64_t>(row_ + cell.value);
    else if (cell.type != Type::kEmptyAggregate)
      return ZYM_DB_STATUS_ERROR;
    return 0;
  }

  static void copy_text(std::string_view value, char* text, size_t size) {
    const size_t length = std::min(value.size(), size - 1);
    std::memcpy(text, value.data(), length);
    text[length] = 0;
  }
  int read_other_text(Cell cell, char* text, size_t size) const;

  // Of a text or blob.
  std::string_view bytes(Cell cell) const {
    return {reinterpret_cast<const char*>(row_ + cell.value), cell.length};
  }
  // The same, or those of a number written into the buffer; no data for a NULL.
  std::string_view bytes(Cell cell, char (&buffer)[kNumberSize]) const;

  ColumnNames names_;
  ByteBuffer bytes_;
  size_t limit_ = 0;
  size_t room_ = 0;  // for bytes, without asking for more
  uint32_t columns_ = 0;
  uint32_t rows_ = 0;
  size_t begun_ = 0;              // where the row that was begun lies
  size_t next_cell_ = 0;          // of it
  size_t next_ = 0;               // where the cursor goes
  const uint8_t* row_ = nullptr;  // where it stands; null before the first row and after the last
  mutable uint32_t asked_ = 0;    // by name, of the current row
};

}  // namespace zymdb::client

#endif
