// SQLite's settings for the whole process.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_PROCESS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_PROCESS_H

namespace zymdb::client::sqlite {

// Makes them before the first connection. When the process has used SQLite before, its own settings stay.
void configure_process();

}  // namespace zymdb::client::sqlite

#endif
