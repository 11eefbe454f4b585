// SQLite: a database is a file.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_ENGINE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_ENGINE_H

#include "client/engine/engine.h"

namespace zymdb::client::sqlite {

inline constexpr Flavour kFlavour = {'"', " DEFAULT VALUES", true};

extern const Engine kEngine;

}  // namespace zymdb::client::sqlite

#endif
