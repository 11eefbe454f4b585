// An engine in a module of its own, which the client opens when an address asks for it. Both are built from
// one source: what passes between them is as its types are here, and the marks tell whether it is.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MODULE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MODULE_H

#include <cstdint>

#include "client/engine/engine.h"

namespace zymdb::client {

// Goes up with every change of what passes.
inline constexpr uint32_t kModuleInterface = 2;

// What the client does for an engine.
struct ModuleHost {
  bool (*creation_is_allowed)();
  void (*warn)(const char* line);
};

struct EngineModule {
  uint32_t interface;
  const char* version;  // of the project
  const Engine* (*start)(const ModuleHost& host);
};

// The name of the EngineModule in a module.
inline constexpr char kModuleSymbol[] = "zymdb_engine_module";

}  // namespace zymdb::client

#endif
