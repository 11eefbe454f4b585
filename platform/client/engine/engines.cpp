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

// By scheme, the modules of engines that are no part of the library.
struct ModuleRow {
  std::string_view scheme;
  const char* file;
};
#ifdef ZYMDB_ENGINE_MODULES
constexpr std::array kModules = {ModuleRow{"mariadb", "libzymdb_engine_mariadb.so"}};
#else
constexpr std::array<ModuleRow, 0> kModules = {};
#endif

void warn(const char* line) {
  ruvo_log::logWarn("%s", line);
}

[[maybe_unused]] constexpr ModuleHost kHost = {creation_is_allowed, warn};

constinit std::array<const Engine*, 1 + kModules.size()> present = {&sqlite::kEngine};
constinit std::atomic<size_t> count{1};
constinit std::mutex opening;

const Engine* find_present(std::string_view scheme) {
  const auto all = engines();
  const auto found = std::ranges::find(all, scheme, [](const Engine* engine) { return engine->scheme; });
  return found == all.end() ? nullptr : *found;
}

[[maybe_unused]] const Engine* take_in(const ModuleRow& module, std::string& error) {
  const std::lock_guard lock(opening);
  if (const Engine* const engine = find_present(module.scheme)) return engine;
  const Engine* const engine = open_module(module.file, kHost, error);
  if (engine == nullptr) return nullptr;
  present[count] = engine;
  count.fetch_add(1, std::memory_order_release);
  return engine;
}

}  // namespace

std::span<const Engine* const> engines() {
  return {present.data(), count.load(std::memory_order_acquire)};
}

const Engine* engine_for(std::string_view scheme, std::string& error) {
  if (scheme.empty()) return present[0];
  if (const Engine* const engine = find_present(scheme)) return engine;
  if constexpr (!kModules.empty()) {
    const auto module = std::ranges::find(kModules, scheme, &ModuleRow::scheme);
    return module != kModules.end() ? take_in(*module, error) : nullptr;
  }
  return nullptr;
}

}  // namespace zymdb::client
