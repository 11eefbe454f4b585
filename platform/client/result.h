// A query's rows, held whole: each with its texts behind it, linked to the next, and a cursor.
#ifndef ZYMDB_PLATFORM_CLIENT_RESULT_H
#define ZYMDB_PLATFORM_CLIENT_RESULT_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "client/arena.h"
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
  void add_integer(int64_t value) { next_cell(Type::kInteger).integer = value; }
  void add_real(double value) { next_cell(Type::kReal).real = value; }
  bool add_text(std::string_view value) { return add_bytes(Type::kText, value); }
  bool add_blob(std::string_view value) { return add_bytes(Type::kBlob, value); }
  void add_null() { next_cell(Type::kNull); }
  // The NULL of an expression over no rows, which reads as 0 because no column's value is missing.
  void add_empty_aggregate() { next_cell(Type::kEmptyAggregate); }
  void end_row();

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
    Type type;
    uint32_t length;  // of a text or blob
    union {
      int64_t integer;
      double real;
      const char* bytes;
    };
  };

  // Its cells follow.
  struct Row {
    Row* next;

    Cell* cells() { return reinterpret_cast<Cell*>(this + 1); }
  };

  static constexpr size_t kNumberSize = 32;  // holds any number written out

  Cell& next_cell(Type type) {
    next_cell_->type = type;
    return *next_cell_++;
  }
  const Cell* cell(int column) const {
    // A negative one is beyond any number of columns.
    if (static_cast<uint32_t>(column) >= columns_ || current_ == nullptr) return nullptr;
    return &current_->cells()[column];
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
  Arena memory_;
  size_t limit_ = 0;
  uint32_t columns_ = 0;
  uint32_t rows_ = 0;
  Row* first_ = nullptr;
  Row* last_ = nullptr;
  Row* begun_ = nullptr;
  Cell* next_cell_ = nullptr;  // of the row that was begun
  Row* next_ = nullptr;        // where the cursor goes
  Row* current_ = nullptr;     // where it stands; null before the first row and after the last
  mutable uint32_t next_found_ = 0;
};

}  // namespace zymdb::client

#endif
