// Opens and closes handles.
#ifndef ZYMDB_PLATFORM_CLIENT_SESSION_HANDLES_H
#define ZYMDB_PLATFORM_CLIENT_SESSION_HANDLES_H

#include "client/engine/data_source.h"
#include "zymdb_db.h"

namespace zymdb::client {

// A new handle once this thread's session with the database is open; null, with one line in the log, when it
// cannot be opened.
_zym_db_handle_t* open_handle(const DataSource& source);

// The inventory's handle, opened on first use and again after it was closed; null as open_handle.
_zym_db_handle_t* shared_handle();

// A database's handle that stays open until another database's is asked for; null as open_handle.
_zym_db_handle_t* kept_handle(const DataSource& source);

// False for what is no open handle.
bool close_handle(_zym_db_handle_t* handle);

}  // namespace zymdb::client

#endif
