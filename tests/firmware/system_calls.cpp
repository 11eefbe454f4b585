#include "firmware/system_calls.h"

#include <dlfcn.h>
#include <errno.h>
#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>

SystemCalls& system_calls() {
  static SystemCalls calls;
  return calls;
}

namespace {

// What the C library has for a name that this program defines.
template <class Call>
Call* next(Call*, const char* name) {
  return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

// Where times have 64 bits though the machine's word has 32, calls that take them have names of their own.
#ifdef __USE_TIME_BITS64
#define NAME_WITH_TIMES(call) "__" #call "64"
#else
#define NAME_WITH_TIMES(call) #call
#endif

int failing(int error) {
  errno = error;
  return -1;
}

// Callers in several threads share what the test asked for.
std::mutex mutex;

// Whether the test wants one call more of a kind interrupted.
bool is_interrupted(int SystemCalls::*left) {
  const std::lock_guard lock(mutex);
  SystemCalls& calls = system_calls();
  if (calls.*left == 0) return false;
  --(calls.*left);
  calls.seconds_passed += calls.seconds_per_interruption;
  return true;
}

// What the test makes of a wait; nothing when the system is to wait.
std::optional<int> outcome_of_wait(timeval* timeout) {
  const std::lock_guard lock(mutex);
  SystemCalls& calls = system_calls();
  calls.waits.push_back(timeout->tv_sec);
  if (!calls.interrupted_waits.empty()) {
    timeout->tv_sec = calls.interrupted_waits.front();
    calls.interrupted_waits.erase(calls.interrupted_waits.begin());
    return failing(EINTR);
  }
  if (calls.wait_error) return failing(*calls.wait_error);
  if (calls.time_passes) return 0;
  return std::nullopt;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int select(int count, fd_set* readable, fd_set* writable,
                                                  fd_set* exceptional, timeval* timeout) {
  if (const std::optional<int> outcome = outcome_of_wait(timeout)) return *outcome;
  return next(&select, NAME_WITH_TIMES(select))(count, readable, writable, exceptional, timeout);
}

__attribute__((visibility("default"))) int setsockopt(int socket, int level, int option, const void* value,
                                                      socklen_t size) noexcept {
  if (level != SOL_SOCKET || option != SO_RCVTIMEO || size != sizeof(timeval))
    return next(&setsockopt, NAME_WITH_TIMES(setsockopt))(socket, level, option, value, size);
  {
    const std::lock_guard lock(mutex);
    system_calls().receive_timeouts.push_back(static_cast<const timeval*>(value)->tv_sec);
  }
  const timeval shortened{1, 0};
  return next(&setsockopt, NAME_WITH_TIMES(setsockopt))(socket, level, option, &shortened, sizeof shortened);
}

__attribute__((visibility("default"))) int connect(int socket, const sockaddr* address, socklen_t size) {
  const int result = next(&connect, "connect")(socket, address, size);
  pollfd connection{socket, 0, 0};
  if (system_calls().connects_to_quitter) poll(&connection, 1, -1);
  return result;
}

__attribute__((visibility("default"))) ssize_t write(int descriptor, const void* data, size_t size) {
  if (is_interrupted(&SystemCalls::interrupted_writes)) return failing(EINTR);
  return next(&write, "write")(descriptor, data, std::min(size, system_calls().write_takes.value_or(size)));
}

__attribute__((visibility("default"))) ssize_t read(int descriptor, void* data, size_t size) {
  if (is_interrupted(&SystemCalls::interrupted_reads)) return failing(EINTR);
  return next(&read, "read")(descriptor, data, size);
}

__attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const int result = next(&clock_gettime, NAME_WITH_TIMES(clock_gettime))(clock, time);
  time->tv_sec += system_calls().seconds_passed;
  return result;
}

#ifdef __USE_TIME_BITS64
// The C++ library is built with the short times, and asks under the name that these have.
struct ShortTime {
  int32_t tv_sec;
  int32_t tv_nsec;
};
int short_clock_gettime(clockid_t clock, ShortTime* time) __asm__("clock_gettime");

__attribute__((visibility("default"))) int short_clock_gettime(clockid_t clock, ShortTime* time) {
  const int result = next(&short_clock_gettime, "clock_gettime")(clock, time);
  time->tv_sec += static_cast<int32_t>(system_calls().seconds_passed);
  return result;
}
#endif

}  // extern "C"
