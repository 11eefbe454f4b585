// A query's rows, held whole: one growing block of cells, one of text, and a cursor.
#ifndef ZYMDB_PLATFORM_CLIENT_RESULT_H
#define ZYMDB_PLATFORM_CLIENT_RESULT_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zymdb_db.h"

namespace zymdb::client {

// Names of a result's columns, shared by the results of one prepared statement.
using ColumnNames = std::shared_ptr<const std::vector<std::string>>;

class Result {
 public:
  // Empties the result for rows of the named columns. A result must not take more than `limit` bytes.
  void start(ColumnNames names, size_t limit);

  // Rows are added one after the other: begun, given a cell for every column in order, ended. False: the
  // result is too large.
  bool begin_row();
  void add_integer(int64_t value) { next_cell().integer = value; }
  void add_real(double value);
  bool add_text(std::string_view value) { return add_bytes(Type::kText, value); }
  bool add_blob(std::string_view value) { return add_bytes(Type::kBlob, value); }
  void add_null() { next_cell().type = Type::kNull; }
  // The NULL of an expression over no rows, which reads as 0 because no column's value is missing.
  void add_empty_aggregate() { next_cell().type = Type::kEmptyAggregate; }
  void end_row() { ++rows_; }

  uint32_t row_count() const { return rows_; }
  int step();
  void reset() { cursor_ = 0; }

  // The reads of the current row answer 0, or 1 when there is no such column or value. Then a number is left
  // as it was and a text is empty.
  template <class Number>
  int read_number(int column, Number* value) const {
    int64_t wide = 0;
    const int status = read_integer(column, wide);
    if (status == 0) *value = static_cast<Number>(wide);
    return status;
  }
  int read_text(int column, char* text, size_t size) const;
  int read_blob(int column, void* data, size_t size) const;
  int read_bytes(int column, int* length) const;
  int read_is_null(int column, int* is_null) const;

  // The column of this name, or -1. Names asked for in the order of the columns are found at once.
  int find(std::string_view name) const;

  // Whether keeping it for the next query is worth its memory.
  bool is_small() const;
  void forget_names() { names_.reset(); }

 private:
  enum class Type : uint8_t { kNull, kEmptyAggregate, kInteger, kReal, kText, kBlob };

  struct Cell {
    Type type = Type::kInteger;
    uint32_t length = 0;
    union {
      int64_t integer = 0;
      double real;
      uint64_t offset;
    };
  };

  static constexpr size_t kNumberSize = 32;  // holds any number written out

  size_t size() const { return cells_.size() * sizeof(Cell) + text_.size(); }
  Cell& next_cell() { return cells_[next_cell_++]; }
  const Cell* cell(int column) const {
    if (column < 0 || static_cast<uint32_t>(column) >= columns_) return nullptr;
    if (cursor_ == 0 || cursor_ > rows_) return nullptr;
    return &cells_[size_t{cursor_ - 1} * columns_ + static_cast<uint32_t>(column)];
  }
  int read_integer(int column, int64_t& value) const {
    const Cell* found = cell(column);
    if (found == nullptr) return ZYM_DB_STATUS_ERROR;
    if (found->type == Type::kInteger) {
      value = found->integer;
      return 0;
    }
    return found->type == Type::kEmptyAggregate ? 0 : ZYM_DB_STATUS_ERROR;
  }

  bool add_bytes(Type type, std::string_view value);
  // The bytes of a text or blob, or of a number written into the buffer; no data for a NULL.
  std::string_view bytes(const Cell& cell, char (&buffer)[kNumberSize]) const;

  ColumnNames names_;
  std::vector<Cell> cells_;
  std::string text_;
  size_t limit_ = 0;
  size_t next_cell_ = 0;
  uint32_t columns_ = 0;
  uint32_t rows_ = 0;
  uint32_t cursor_ = 0;  // 0 before the first row, rows_ + 1 after the last
  mutable uint32_t next_found_ = 0;
};

}  // namespace zymdb::client

#endif
