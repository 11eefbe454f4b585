// Rows of the tests' own in the inventory of a workplace.
#ifndef ZYMDB_TESTS_TOOL_ROWS_H
#define ZYMDB_TESTS_TOOL_ROWS_H

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tool/run_tool.h"

namespace zymdb::test {

using ColumnValue = std::pair<const char*, std::variant<unsigned, std::string>>;

// Inserts a row and closes the inventory again.
void insert_row(const Workplace& workplace, const char* table, const std::vector<ColumnValue>& row);

}  // namespace zymdb::test

#endif
