// The engines that this client has.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_ENGINES_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_ENGINES_H

#include <span>

#include "client/engine/engine.h"

namespace zymdb::client {

// The first takes addresses without a scheme.
std::span<const Engine* const> engines();

}  // namespace zymdb::client

#endif
