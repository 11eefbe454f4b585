// SQLite: a database is a file.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_ENGINE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_ENGINE_H

#include <string_view>

#include "client/engine/engine.h"

namespace zymdb::client::sqlite {

// Takes the rows of a query. No filter can call it: it is none of the dialect's functions.
inline constexpr std::string_view kGathering = "gathered";
inline constexpr Flavour kFlavour = {'"', " DEFAULT VALUES", true, kGathering};

extern const Engine kEngine;

}  // namespace zymdb::client::sqlite

#endif
