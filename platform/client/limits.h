// How long and how much one call may take.
#ifndef ZYMDB_PLATFORM_CLIENT_LIMITS_H
#define ZYMDB_PLATFORM_CLIENT_LIMITS_H

#include <chrono>
#include <cstddef>

namespace zymdb::client {

struct Limits {
  std::chrono::milliseconds statement{5000};  // running time of one statement
  std::chrono::milliseconds writer{5000};     // waiting for another writer
  size_t result = size_t{256} << 20;          // bytes of one result
};

}  // namespace zymdb::client

#endif
