#include "client/session/handles.h"

#include <utility>

#include "client/last_error.h"
#include "client/session/forks.h"
#include "client/session/lease.h"
#include "client/session/registry.h"

namespace zymdb::client {

_zym_db_handle_t* open_handle(const DataSource& source) {
  const auto database = std::make_shared<_zym_db_handle_t>(source);
  Registry::instance().add(database);
  const auto close = [](_zym_db_handle_t* unusable) { close_handle(unusable); };
  std::unique_ptr<_zym_db_handle_t, decltype(close)> handle(database.get());
  return Lease().acquire(handle.get()) == 0 ? handle.release() : nullptr;
}

_zym_db_handle_t* shared_handle() {
  Registry& registry = Registry::instance();
  if (_zym_db_handle_t* handle = registry.shared.load(std::memory_order_acquire)) return handle;
  const std::lock_guard lock(registry.opening);
  if (_zym_db_handle_t* handle = registry.shared.load(std::memory_order_acquire)) return handle;
  DataSource source;
  std::string error;
  if (!locate_inventory(source, error)) {
    report_failure(ZYM_DB_STATUS_NO_DB, "%s", error.c_str());
    return nullptr;
  }
  _zym_db_handle_t* handle = open_handle(source);
  registry.shared.store(handle, std::memory_order_release);
  return handle;
}

_zym_db_handle_t* kept_handle(const DataSource& source) {
  Registry& registry = Registry::instance();
  const std::lock_guard lock(registry.opening);
  _zym_db_handle_t*& kept = registry.kept;
  if (kept != nullptr && kept->source().address == source.address &&
      kept->source().flushes_commits == source.flushes_commits)
    return kept;
  drop_inherited();
  if (kept != nullptr) registry.close(std::exchange(kept, nullptr));
  kept = open_handle(source);
  return kept;
}

bool close_handle(_zym_db_handle_t* handle) {
  Registry& registry = Registry::instance();
  drop_inherited();
  _zym_db_handle_t* shared = handle;
  registry.shared.compare_exchange_strong(shared, nullptr);
  return registry.close(handle);
}

}  // namespace zymdb::client
