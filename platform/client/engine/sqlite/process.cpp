#include "client/engine/sqlite/process.h"

#include <pthread.h>
#include <sqlite3.h>

#include <array>
#include <new>

// Two threads that read meet at SQLite's locks for about the time of a file lock. With the plain mutexes that
// SQLite makes one of them sleeps and is woken up, and two threads read less than one alone; a mutex that
// spins for a moment before it sleeps lets them read twice as much.
struct sqlite3_mutex {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

namespace zymdb::client::sqlite {
namespace {

// SQLite's own, which exist for as long as the process: all kinds but the two that are made on demand.
constexpr int kFirstStatic = SQLITE_MUTEX_STATIC_MAIN;
constexpr int kLastStatic = SQLITE_MUTEX_STATIC_VFS3;
std::array<sqlite3_mutex, kLastStatic - kFirstStatic + 1> static_mutexes;

// Some microseconds, which the system call of a file lock fits in. (The C library's own adaptive mutexes spin
// too short for it.)
constexpr int kSpins = 200;

int do_nothing() {
  return SQLITE_OK;
}

sqlite3_mutex* make(int kind) {
  if (kind >= kFirstStatic && kind <= kLastStatic)
    return &static_mutexes[static_cast<size_t>(kind - kFirstStatic)];
  auto* const made = new (std::nothrow) sqlite3_mutex;
  if (made != nullptr && kind == SQLITE_MUTEX_RECURSIVE) made->mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
  return made;
}

void free(sqlite3_mutex* mutex) {
  pthread_mutex_destroy(&mutex->mutex);
  delete mutex;
}

// Tells the processor that a loop waits.
void pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__) || defined(__arm__)
  asm volatile("yield");
#endif
}

void enter(sqlite3_mutex* mutex) {
  for (int spins = 0; spins < kSpins; ++spins) {
    if (pthread_mutex_trylock(&mutex->mutex) == 0) return;
    pause();
  }
  pthread_mutex_lock(&mutex->mutex);
}

int try_to_enter(sqlite3_mutex* mutex) {
  return pthread_mutex_trylock(&mutex->mutex) == 0 ? SQLITE_OK : SQLITE_BUSY;
}

void leave(sqlite3_mutex* mutex) {
  pthread_mutex_unlock(&mutex->mutex);
}

constexpr sqlite3_mutex_methods kMutexes = {do_nothing,   do_nothing, make,    free,   enter,
                                            try_to_enter, leave,      nullptr, nullptr};

}  // namespace

void configure_process() {
  [[maybe_unused]] static const bool is_configured = [] {
    sqlite3_config(SQLITE_CONFIG_MUTEX, &kMutexes);
    // Counting the bytes in use takes a lock for each allocation, and nobody asks for the number.
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    // Each connection would take room for twenty pages at once, of which most use half.
    sqlite3_config(SQLITE_CONFIG_PAGECACHE, nullptr, 0, 0);
    return true;
  }();
}

}  // namespace zymdb::client::sqlite
