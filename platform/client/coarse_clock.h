// Time as it is cheap to have.
#ifndef ZYMDB_PLATFORM_CLIENT_COARSE_CLOCK_H
#define ZYMDB_PLATFORM_CLIENT_COARSE_CLOCK_H

#include <time.h>

#include <cstdint>

namespace zymdb::client {

// Nanoseconds, some milliseconds apart.
inline int64_t coarse_now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace zymdb::client

#endif
