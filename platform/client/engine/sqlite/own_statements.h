// Statements of the client's own: settings, schema, marks. An answer of status 0 is a success.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_OWN_STATEMENTS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_OWN_STATEMENTS_H

#include <functional>
#include <string>

#include "client/engine/sqlite/handles.h"

namespace zymdb::client::sqlite {

// One statement or several.
Failure execute(sqlite3* database, const std::string& sql);

// The first column of its one row.
Failure read_number(sqlite3* database, const char* sql, int64_t& value);

// Runs `row` on each of its rows.
Failure read_rows(sqlite3* database, const char* sql, const std::function<void(sqlite3_stmt*)>& row);

// A text of a row; a null pointer, for want of memory, throws.
std::string text_of(sqlite3_stmt* row, int column);

}  // namespace zymdb::client::sqlite

#endif
