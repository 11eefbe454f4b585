// The columns of a table, out of the statement that made it. To ask the engine for those of every table
// takes as long as all else that opens an inventory.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_TABLE_TEXT_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_TABLE_TEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace zymdb::client::sqlite {

struct ColumnText {
  std::string name;
  bool is_text = false;
};

// The statement is one that SQLite has stored, and so one that it understands itself. False when there is
// more to it than names, types and constraints; only the engine then knows.
bool read_columns(std::string_view statement, std::vector<ColumnText>& columns);

}  // namespace zymdb::client::sqlite

#endif
