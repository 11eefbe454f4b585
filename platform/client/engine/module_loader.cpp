#include "client/engine/module_loader.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

namespace zymdb::client {
namespace {

constexpr char kVariable[] = "ZYMDB_ENGINES";

// Whoever runs a program with rights that he lacks himself has no say in what code it takes in.
std::string path_of(const char* file) {
  const char* const folder = secure_getenv(kVariable);
  return std::string(folder != nullptr && folder[0] == '/' ? folder : ZYMDB_ENGINE_FOLDER) + '/' + file;
}

}  // namespace

const Engine* open_module(const char* file, const ModuleHost& host, std::string& error) {
  const std::string path = path_of(file);
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    error = std::string("asks for an engine that is not installed: ") + dlerror();
    return nullptr;
  }
  const auto* const module = static_cast<const EngineModule*>(dlsym(library, kModuleSymbol));
  const bool is_ours = module != nullptr && module->interface == kModuleInterface &&
                       std::strcmp(module->version, ZYMDB_VERSION) == 0;
  const Engine* const engine = is_ours ? module->start(host) : nullptr;
  if (engine == nullptr) {
    dlclose(library);
    error = "asks for an engine whose module is of another version: " + path;
  }
  return engine;
}

}  // namespace zymdb::client
