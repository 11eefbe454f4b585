#include "client/engine/sqlite/connections.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace zymdb::client::sqlite {
namespace {

size_t hash_of(const std::string& path) {
  return std::hash<std::string>()(path);
}

}  // namespace

void Slot::set(std::unique_ptr<Connection> opened) {
  connection = std::move(opened);
  path = connection != nullptr ? hash_of(connection->watch().path()) : 0;
  file = connection != nullptr ? connection->watch().file() : 0;
}

Connections& Connections::instance() {
  static Connections* const connections = new Connections;
  return *connections;
}

std::shared_ptr<Slot> Connections::add_slot() {
  auto slot = std::make_shared<Slot>();
  const std::lock_guard lock(mutex_);
  std::erase_if(slots_, [](const auto& each) { return each.expired(); });
  slots_.push_back(slot);
  return slot;
}

Connections::Slots Connections::slots() {
  Slots living;
  const std::lock_guard lock(mutex_);
  for (const auto& each : slots_) {
    if (auto slot = each.lock()) living.push_back(std::move(slot));
  }
  return living;
}

bool Connections::is_alone(const Slot& slot) {
  const Slots all = slots();
  return std::none_of(all.begin(), all.end(),
                      [&](const auto& each) { return each.get() != &slot && each->file == slot.file; });
}

void Connections::end(const std::string& path) {
  const size_t hash = hash_of(path);
  for (const auto& slot : slots()) {
    if (slot->path != hash) continue;
    const std::lock_guard lock(slot->lock);
    Connection* const connection = slot->connection.get();
    if (connection == nullptr || connection->watch().path() != path) continue;
    if (!connection->must_stay()) slot->set(nullptr);
  }
}

bool Connections::end_those_to_other_files(const std::string& path) {
  const uint64_t current = file_id(path).inode;
  const size_t hash = hash_of(path);
  bool any = false;
  for (const auto& slot : slots()) {
    if (slot->path != hash || slot->file == 0 || slot->file == current) continue;
    const std::lock_guard lock(slot->lock);
    if (slot->connection == nullptr || slot->connection->watch().path() != path) continue;
    slot->set(nullptr);
    any = true;
  }
  return any;
}

void Connections::share_out_room(const Slot& slot) {
  for (const auto& each : slots()) {
    if (each.get() == &slot) continue;
    const std::unique_lock lock(each->lock, std::try_to_lock);
    if (lock && each->connection != nullptr) each->connection->shrink_kept_results();
  }
}

std::shared_ptr<const Catalog> Connections::catalog_of(const Fingerprint& statements) {
  const std::lock_guard lock(mutex_);
  return statements == statements_ ? catalog_.lock() : nullptr;
}

std::shared_ptr<const Catalog> Connections::share(const Fingerprint& statements, Catalog catalog) {
  auto shared = std::make_shared<const Catalog>(std::move(catalog));
  const std::lock_guard lock(mutex_);
  statements_ = statements;
  catalog_ = shared;
  return shared;
}

// Nothing is opened meanwhile, so that what is added to the list while it waits is empty.
void Connections::stand_still() {
  opening.lock();
  still_ = slots();
  for (const auto& slot : still_) slot->lock.lock();
  mutex_.lock();
}

void Connections::go_on() {
  mutex_.unlock();
  for (const auto& slot : still_) slot->lock.unlock();
  still_.clear();
  opening.unlock();
}

void Connections::abandon_inherited() {
  for (const auto& slot : slots()) {
    const std::lock_guard lock(slot->lock);
    if (slot->connection != nullptr) slot->connection->watch().abandon();
    slot->set(nullptr);
  }
}

}  // namespace zymdb::client::sqlite
