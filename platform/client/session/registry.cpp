#include "client/session/registry.h"

#include "client/session/forks.h"

namespace zymdb::client {

Registry& Registry::instance() {
  static Registry* const registry = [] {
    watch_forks();
    return new Registry;
  }();
  return *registry;
}

void Registry::add(const std::shared_ptr<_zym_db_handle_t>& handle) {
  const std::lock_guard lock(mutex_);
  handles_.emplace(handle.get(), handle);
}

std::shared_ptr<_zym_db_handle_t> Registry::find(_zym_db_handle_t* handle) {
  const std::lock_guard lock(mutex_);
  const auto found = handles_.find(handle);
  return found == handles_.end() ? nullptr : found->second;
}

bool Registry::close(_zym_db_handle_t* handle) {
  const auto database = find(handle);
  if (database == nullptr) return false;
  {
    const std::lock_guard lock(mutex_);
    if (handles_.erase(handle) == 0) return false;
  }
  database->close();
  return true;
}

void Registry::stand_still() {
  opening.lock();
  mutex_.lock();
  for (const auto& [handle, database] : handles_) database->mutex().lock();
}

void Registry::go_on() {
  for (const auto& [handle, database] : handles_) database->mutex().unlock();
  mutex_.unlock();
  opening.unlock();
}

void Registry::reset_writers() {
  for (const auto& [handle, database] : handles_) database->writers().reset_after_fork();
}

}  // namespace zymdb::client
