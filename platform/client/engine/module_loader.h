// Opens the modules that engines are in.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MODULE_LOADER_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MODULE_LOADER_H

#include <string>

#include "client/engine/module.h"

namespace zymdb::client {

// The engine of the module, which stays open as long as the process runs. It lies in the folder that
// ZYMDB_ENGINES names, else in the installed one. Null when there is none, or another version's; `error` then
// tells.
const Engine* open_module(const char* file, const ModuleHost& host, std::string& error);

}  // namespace zymdb::client

#endif
