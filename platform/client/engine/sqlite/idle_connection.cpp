#include "client/engine/sqlite/idle_connection.h"

#include <utility>

#include "client/coarse_clock.h"
#include "client/per_thread.h"

namespace zymdb::client::sqlite {
namespace {

constexpr int64_t kLongest = 1'000'000'000;

}  // namespace

IdleConnection* IdleConnection::of_thread() {
  return PerThread<IdleConnection>::get();
}

IdleConnection* IdleConnection::known() {
  return PerThread<IdleConnection>::known();
}

void IdleConnection::expire() {
  IdleConnection* const idle = known();
  if (idle == nullptr || idle->slot_->file == 0) return;
  if (coarse_now() - idle->since_ <= kLongest) return;
  // The caller may hold a slot: where this one is in use, a later call ends it.
  const std::unique_lock lock(idle->slot_->lock, std::try_to_lock);
  if (lock.owns_lock()) idle->slot_->set(nullptr);
}

void IdleConnection::keep(Slot& from) {
  const std::scoped_lock lock(from.lock, slot_->lock);
  slot_->set(std::move(from.connection));
  from.set(nullptr);
  since_ = coarse_now();
}

bool IdleConnection::give(const std::string& path, Slot& to) {
  const std::scoped_lock lock(to.lock, slot_->lock);
  if (slot_->connection == nullptr || slot_->connection->watch().path() != path) return false;
  const bool is_usable = slot_->connection->watch().may_be_taken_over();
  if (is_usable) to.set(std::move(slot_->connection));
  slot_->set(nullptr);
  return is_usable;
}

void IdleConnection::end() {
  const std::lock_guard lock(slot_->lock);
  slot_->set(nullptr);
}

}  // namespace zymdb::client::sqlite
