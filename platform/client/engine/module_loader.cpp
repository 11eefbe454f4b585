#include "client/engine/module_loader.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

#include "client/engine/creation.h"
#include "client/engine/module.h"
#include "client/engine/sqlite/imported_copy.h"
#include "controller/ruvo_log.h"

namespace zymdb::client {
namespace {

constexpr char kVariable[] = "ZYMDB_ENGINES";

void warn(const char* line) {
  ruvo_log::logWarn("%s", line);
}

constexpr ModuleHost kHost = {creation_is_allowed, warn, sqlite::write_copy};

// Whoever runs a program with rights that he lacks himself has no say in what code it takes in.
std::string path_of(const char* file) {
  const char* const folder = secure_getenv(kVariable);
  return std::string(folder != nullptr && folder[0] == '/' ? folder : ZYMDB_ENGINE_FOLDER) + '/' + file;
}

}  // namespace

const Engine* open_module(const char* file, std::string& error) {
  const std::string path = path_of(file);
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    error = std::string("asks for an engine that is not installed: ") + dlerror();
    return nullptr;
  }
  const auto* const module = static_cast<const EngineModule*>(dlsym(library, kModuleSymbol));
  const bool is_ours = module != nullptr && module->interface == kModuleInterface &&
                       std::strcmp(module->version, ZYMDB_VERSION) == 0;
  const Engine* const engine = is_ours ? module->start(kHost) : nullptr;
  if (engine == nullptr) {
    dlclose(library);
    error = "asks for an engine whose module is of another version: " + path;
  }
  return engine;
}

}  // namespace zymdb::client
