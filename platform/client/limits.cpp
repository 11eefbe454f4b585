#include "client/limits.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "controller/ruvo_log.h"

namespace zymdb::client {
namespace {

constexpr uint64_t kKiB = 1024;
constexpr uint64_t kMiB = 1024 * kKiB;
constexpr uint64_t kMostKiB = 2 * 1024 * kKiB - 1;  // in bytes, what 32 bits hold

// What a controller has at most: from there on memory is not what is scarce.
constexpr uint64_t kController = 1024 * kMiB;

struct Setting {
  const char* variable;
  size_t Limits::*limit;
  uint64_t least;  // KiB
};

constexpr Setting kSettings[] = {
    {"ZYMDB_RESULT_KIB", &Limits::result, 1},
    {"ZYMDB_LOG_KIB", &Limits::log, 1},
    {"ZYMDB_CACHE_KIB", &Limits::cache, 1},
    {"ZYMDB_KEPT_KIB", &Limits::kept, 0},
};

void read(const Setting& setting, Limits& limits) {
  const char* const text = std::getenv(setting.variable);
  if (text == nullptr || text[0] == '\0') return;
  uint64_t number = 0;
  const char* const end = text + std::strlen(text);
  const auto [read_to, error] = std::from_chars(text, end, number);
  if (error == std::errc() && read_to == end && number >= setting.least && number <= kMostKiB)
    limits.*setting.limit = static_cast<size_t>(number * kKiB);
  else
    ruvo_log::logWarn("%s is not a number of KiB from %llu to %llu: %s", setting.variable,
                      static_cast<unsigned long long>(setting.least),
                      static_cast<unsigned long long>(kMostKiB), text);
}

uint64_t memory_here() {
  return static_cast<uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 0L)) *
         static_cast<uint64_t>(std::max(sysconf(_SC_PAGESIZE), 0L));
}

}  // namespace

Limits limits_of(uint64_t memory) {
  Limits limits;
  limits.result = static_cast<size_t>(std::clamp(memory / 16, 4 * kMiB, 256 * kMiB));
  if (memory > kController) return limits;
  limits.log = 512 * kKiB;
  limits.cache = 64 * kKiB;
  return limits;
}

Limits limits_here() {
  Limits limits = limits_of(memory_here());
  for (const Setting& setting : kSettings) read(setting, limits);
  return limits;
}

}  // namespace zymdb::client
