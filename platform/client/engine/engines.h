// The engines that this client has: its own, and those in modules that an address has asked for.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_ENGINES_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_ENGINES_H

#include <span>
#include <string>
#include <string_view>

#include "client/engine/engine.h"

namespace zymdb::client {

// Those that are open. The first takes addresses without a scheme.
std::span<const Engine* const> engines();

// The engine of a scheme, whose module is opened where it has one. Null when there is none; `error` then
// tells what is missing, and is left empty for a scheme of no engine.
const Engine* engine_for(std::string_view scheme, std::string& error);

}  // namespace zymdb::client

#endif
