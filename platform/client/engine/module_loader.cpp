#include "client/engine/module_loader.h"

#include <dlfcn.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "client/engine/module.h"

namespace zymdb::client {
namespace {

constexpr char kVariable[] = "ZYMDB_ENGINES";

}  // namespace

const Engine* open_module(const char* file, const ModuleHost& host, std::string& error) {
  // Whoever runs a program with rights that he lacks himself has no say in what code it takes in.
  const char* folder = secure_getenv(kVariable);
  if (folder == nullptr || folder[0] != '/') folder = ZYMDB_ENGINE_FOLDER;
  char path[PATH_MAX];
  std::snprintf(path, sizeof path, "%s/%s", folder, file);
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    error = "asks for an engine that is not installed: ";
    error += dlerror();
    return nullptr;
  }
  const auto* const module = static_cast<const EngineModule*>(dlsym(library, kModuleSymbol));
  const bool is_ours = module != nullptr && module->interface == kModuleInterface &&
                       std::strcmp(module->version, ZYMDB_VERSION) == 0;
  const Engine* const engine = is_ours ? module->start(host) : nullptr;
  if (engine == nullptr) {
    dlclose(library);
    error = "asks for an engine whose module is of another version: ";
    error += path;
  }
  return engine;
}

}  // namespace zymdb::client
