// Values of SQLite as the journal writes them.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_JSON_VALUE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_JSON_VALUE_H

#include <sqlite3.h>

#include <string>

namespace zymdb::client::sqlite {

std::string json_of(sqlite3_value* value);

bool same_value(sqlite3_value* a, sqlite3_value* b);

}  // namespace zymdb::client::sqlite

#endif
