// The rows that a table of the inventory has.
#ifndef ZYMDB_COLLECT_WRITE_STORED_ROWS_H
#define ZYMDB_COLLECT_WRITE_STORED_ROWS_H

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

#include "collect/rows/table_content.h"
#include "controller/database_client.h"

namespace zymdb::collect {

struct StoredRow {
  int64_t id = 0;
  bool is_foreign = false;
  std::vector<Value> values;  // one per column of the content
};

// Throws DatabaseError: what was tried with a table, and why it failed.
[[noreturn]] void fail(const char* attempt, const char* table, int status);

// Calls `read` with each row of a table that matches; throws DatabaseError when not all can be read.
void for_each_row(_zym_db_handle_t* handle, const char* table, const std::vector<const char*>& columns,
                  const char* where, const std::function<void(zym_db_result_t* row)>& read);

// The functions in the "PCIFuncKey" of the rows that match. Throws DatabaseError.
std::set<FunctionKey> read_functions(_zym_db_handle_t* handle, const char* table, const char* where);

// All rows of the content's table, by "_id", each column read as what it is. A number column that holds a
// text is a text. Throws DatabaseError.
std::vector<StoredRow> read_stored_rows(_zym_db_handle_t* handle, const TableContent& content);

}  // namespace zymdb::collect

#endif
