// Whether what processes and files use grows for as long as they run.
#ifndef ZYMDB_TESTS_SOAK_GROWTH_H
#define ZYMDB_TESTS_SOAK_GROWTH_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace soak {

// What was measured, once a second.
struct Series {
  std::string name;   // "collect memory, KiB"
  int64_t allowance;  // by so much more may the end be than the beginning
  std::vector<int64_t> samples{};
};

// The rule: the median of the last quarter is at most that of the second quarter and the allowance. The first
// quarter warms up; medians forgive what comes and goes.
struct Verdict {
  int64_t second_quarter;
  int64_t last_quarter;
  bool grows;
};
Verdict judge(const Series& series);

}  // namespace soak

#endif
