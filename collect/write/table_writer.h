// Makes one table of the inventory agree with the rows that it ought to have.
#ifndef ZYMDB_COLLECT_WRITE_TABLE_WRITER_H
#define ZYMDB_COLLECT_WRITE_TABLE_WRITER_H

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "collect/rows/report.h"
#include "collect/rows/table_content.h"
#include "collect/write/stored_rows.h"
#include "common/client_objects.h"

namespace zymdb::collect {

// Reads the table and compares in memory. Throws DatabaseError at the first failure.
class TableWriter {
 public:
  TableWriter(_zym_db_handle_t* handle, const TableContent& content);

  // Inserts or updates a row of the content; one that is as it should be costs no write.
  void write(const Row& row);

  // Removes the rows of hardware that is gone.
  void remove_rest();

  const TableSummary& summary() const { return summary_; }

 private:
  using Key = std::vector<Value>;

  Key key_of(const std::vector<Value>& values) const;
  bool is_kept(const StoredRow& row) const;
  bool is_told_of(const StoredRow& stored) const;
  bool is_of(const StoredRow& row, const FunctionSet& functions) const;
  void remove_replaced();
  bool stands_in_order() const;
  void remove_all();
  const StoredRow* take(const Key& key);

  bool is_written(size_t column, const Row& row) const;
  bool is_compared(size_t column, const Row& row) const;
  bool differs(const Row& row, const StoredRow& stored) const;
  std::optional<std::string> change_filter(const Row& row) const;

  ValuesPtr make_values() const;
  void put(zym_db_content_values_t* values, const char* column, const Value& value) const;
  void insert(const Row& row) const;
  void update(const Row& row, const StoredRow& stored) const;
  void remove(const StoredRow& row);

  _zym_db_handle_t* handle_;
  const TableContent& content_;
  std::vector<StoredRow> stored_;
  std::map<Key, std::deque<const StoredRow*>> pairs_;  // rows not yet paired
  TableSummary summary_;
};

}  // namespace zymdb::collect

#endif
