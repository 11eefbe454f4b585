#include "client/engine/engines.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>

#include "client/engine/creation.h"
#include "client/engine/module_loader.h"
#include "client/engine/sqlite/engine.h"
#include "controller/ruvo_log.h"

namespace zymdb::client {
namespace {

constexpr size_t kMostEngines = 2;
constinit std::array<const Engine*, kMostEngines> present = {&sqlite::kEngine};
constinit std::atomic<size_t> count{1};

const Engine* find_present(std::string_view scheme) {
  const auto all = engines();
  const auto found = std::ranges::find(all, scheme, [](const Engine* engine) { return engine->scheme; });
  return found == all.end() ? nullptr : *found;
}

#ifdef ZYMDB_ENGINE_MODULES
// By scheme, the modules of engines that are no part of the library.
struct ModuleRow {
  std::string_view scheme;
  const char* file;
};
constexpr ModuleRow kModules[] = {{"mariadb", "libzymdb_engine_mariadb.so"}};
static_assert(1 + std::size(kModules) <= kMostEngines);

void warn(const char* line) {
  ruvo_log::logWarn("%s", line);
}

constexpr ModuleHost kHost = {creation_is_allowed, warn};
constinit std::mutex opening;

const Engine* take_in(const ModuleRow& module, std::string& error) {
  const std::lock_guard lock(opening);
  if (const Engine* const engine = find_present(module.scheme)) return engine;
  const Engine* const engine = open_module(module.file, kHost, error);
  if (engine == nullptr) return nullptr;
  present[count] = engine;
  count.fetch_add(1, std::memory_order_release);
  return engine;
}

const Engine* find_module(std::string_view scheme, std::string& error) {
  const auto module = std::ranges::find(kModules, scheme, &ModuleRow::scheme);
  return module != std::end(kModules) ? take_in(*module, error) : nullptr;
}
#else
const Engine* find_module(std::string_view /*scheme*/, std::string& /*error*/) {
  return nullptr;
}
#endif

}  // namespace

std::span<const Engine* const> engines() {
  return {present.data(), count.load(std::memory_order_acquire)};
}

const Engine* engine_for(std::string_view scheme, std::string& error) {
  if (scheme.empty()) return present[0];
  if (const Engine* const engine = find_present(scheme)) return engine;
  return find_module(scheme, error);
}

}  // namespace zymdb::client
