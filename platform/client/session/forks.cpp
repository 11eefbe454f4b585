#include "client/session/forks.h"

#include <pthread.h>

#include <atomic>
#include <mutex>

#include "client/engine/engines.h"
#include "client/session/registry.h"

namespace zymdb::client {
namespace {

constinit std::atomic<bool> is_inherited{false};

void before_fork() {
  Registry::instance().stand_still();
  for (const Engine* engine : engines()) engine->stand_still();
}

void in_parent() {
  for (const Engine* engine : engines()) engine->go_on();
  Registry::instance().go_on();
}

void in_child() {
  is_inherited.store(true, std::memory_order_relaxed);
  in_parent();
}

}  // namespace

void watch_forks() {
  pthread_atfork(&before_fork, &in_parent, &in_child);
}

void drop_inherited() {
  if (!is_inherited.load(std::memory_order_relaxed)) return;
  const std::lock_guard lock(Registry::instance().mutex());
  if (!is_inherited.load(std::memory_order_relaxed)) return;
  for (const Engine* engine : engines()) engine->abandon_inherited();
  Registry::instance().reset_writers();
  is_inherited.store(false, std::memory_order_relaxed);
}

}  // namespace zymdb::client
