// How long and how much one call may take, and how much a connection keeps.
#ifndef ZYMDB_PLATFORM_CLIENT_LIMITS_H
#define ZYMDB_PLATFORM_CLIENT_LIMITS_H

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace zymdb::client {

struct Limits {
  std::chrono::milliseconds statement{5000};  // running time of one statement
  std::chrono::milliseconds writer{5000};     // waiting for another writer
  size_t result = size_t{256} << 20;          // bytes of one result
  size_t log = size_t{1} << 20;               // bytes of the write-ahead log that stay on the disk
  size_t cache = size_t{2} << 20;             // bytes of the database that a connection keeps in memory
  size_t kept = size_t{1} << 20;              // bytes of results that the process keeps; 0 for none
};

// Those of a machine with so many bytes of memory.
Limits limits_of(uint64_t memory);

// This machine's, where the environment does not set others.
Limits limits_here();

}  // namespace zymdb::client

#endif
