// A query and its rows.
#ifndef ZYMDB_SRC_DB_QUERY_H
#define ZYMDB_SRC_DB_QUERY_H

#include <cstdint>
#include <initializer_list>
#include <span>
#include <type_traits>

#include "controller/database_client.h"
#include "db/column.h"
#include "db/filter.h"

namespace zymdb {

// The value of a filter's "?".
constexpr _zym_db_param_t parameter(uint16_t value) {
  return {2, 0, 1, value};
}
constexpr _zym_db_param_t parameter(uint32_t value) {
  return {3, 0, 1, value};
}

// Selects every column; they are then read by name.
struct AllColumns {};

// Runs a query and owns its result. A query that failed, or succeeded without a result, has no rows.
class Query {
 public:
  using Names = std::initializer_list<const char*>;

  Query(_zym_db_handle_t* handle, const char* table, Names columns, const char* filter);
  Query(_zym_db_handle_t* handle, const char* table, Names columns, const char* filter,
        const _zym_db_param_t& param);

  // Selects the columns of a table of them.
  template <class Record, size_t N>
  requires(N <= kMaxColumns) Query(_zym_db_handle_t* handle, const char* table,
                                   const ColumnTable<Record, N>& columns, const char* filter)
      : Query(handle, table, columns.columns, filter, nullptr, 0) {}
  template <class Record, size_t N>
  requires(N <= kMaxColumns)
      Query(_zym_db_handle_t* handle, const char* table, const ColumnTable<Record, N>& columns,
            const char* filter, const _zym_db_param_t& param)
      : Query(handle, table, columns.columns, filter, &param, 1) {}

  Query(_zym_db_handle_t* handle, const char* table, AllColumns, const char* filter,
        const _zym_db_param_t* param);

  template <size_t N>
  Query(_zym_db_handle_t* handle, const Statement<N>& statement)
      : status_(zym_db_raw_query(handle, statement, Statement<N>::size(), &result_)) {}

  ~Query() { release(); }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  int status() const { return status_; }
  bool has_result() const { return status_ == ZYM_DB_STATUS_OK && result_ != nullptr; }

  // Without a result there is nothing to step to.
  int step() { return has_result() ? zym_db_result_step(result_) : ZYM_DB_STATUS_DONE; }
  unsigned row_count() { return has_result() ? zym_db_result_row_count(result_) : 0; }
  int reset() { return zym_db_result_reset(result_); }
  void release();

  // Reads of the current row. The type of the value picks the client's reader; a failed read is nonzero and
  // leaves a number as it was.
  int read(int column, uint8_t& value) { return zym_db_result_column_uchar(result_, column, &value); }
  int read(int column, uint16_t& value) { return zym_db_result_column_short_uint(result_, column, &value); }
  int read(int column, uint32_t& value) { return zym_db_result_column_uint(result_, column, &value); }
  int read(int column, uint64_t& value) { return zym_db_result_column_uint64(result_, column, &value); }
  int read(int column, int32_t& value) { return zym_db_result_column_int(result_, column, &value); }
  int read(int column, int64_t& value) { return zym_db_result_column_int64(result_, column, &value); }
  int read_text(int column, char* text, int size) {
    return zym_db_result_column_text(result_, column, text, size);
  }
  int read_blob(int column, void* data, int size) {
    return zym_db_result_column_blob(result_, column, data, size);
  }
  int read_bytes(int column, int& length) { return zym_db_result_column_bytes(result_, column, &length); }
  int read_is_null(int column, int& is_null) {
    return zym_db_result_column_is_null(result_, column, &is_null);
  }

  // The number of a column, or `fallback` when it cannot be read.
  template <class Number>
  Number read_or(int column, Number fallback) {
    Number value = fallback;
    return read(column, value) == ZYM_DB_STATUS_OK ? value : fallback;
  }

  // A number stored as text, in any base that strtoul detects. Leaves `number` as it was when unreadable.
  int read_number_in_text(int column, unsigned long& number);

  // Fills the fields of `record` from the current row, by the columns' positions from `first` on. Each text
  // is emptied before it is read. False once a required column cannot be read: its field and what follows it
  // stay as they were.
  template <class Record>
  bool read_columns(std::type_identity_t<Columns<Record>> columns, Record* record, int first = 0) {
    return read_fields(columns.all(), record, first);
  }

  // By the columns' names. An unreadable text is what the client leaves.
  template <class Record>
  void read_columns_by_name(std::type_identity_t<Columns<Record>> columns, Record* record) {
    read_fields_by_name(columns.all(), record);
  }

 private:
  Query(_zym_db_handle_t* handle, const char* table, std::span<const Column> columns, const char* filter,
        const _zym_db_param_t* params, int nparams);

  template <class Number>
  int read_whole(int column, void* field);
  int read_required(const Column& column, int index, char* field);
  bool read_fields(std::span<const Column> columns, void* record, int first);
  void read_fields_by_name(std::span<const Column> columns, void* record);

  zym_db_result_t* result_ = nullptr;
  int status_;
};

// The number in the first column of a statement's first row; 0, with the status that says why, when there is
// none.
template <size_t N>
uint32_t select_number(_zym_db_handle_t* handle, const Statement<N>& statement, int& status) {
  Query query(handle, statement);
  status = query.status();
  if (!query.has_result()) return 0;
  status = query.step();
  if (status != ZYM_DB_STATUS_ROW) return 0;
  uint32_t number = 0;
  status = query.read(0, number);
  return status == ZYM_DB_STATUS_OK ? number : 0;
}

}  // namespace zymdb

#endif
