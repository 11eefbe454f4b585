#include "collect/rows/port_state_rows.h"

#include <gtest/gtest.h>

namespace zymdb::collect {
namespace {

TEST(Utilisation, IsInPercentOfWhatTheLinkCarries) {
  struct Case {
    uint64_t bytes;
    int64_t duration;
    uint32_t speed;
    uint32_t percent;
  } const cases[] = {
      {0, 1000, 1000, 0},           {125'000'000, 1000, 1000, 100},
      {62'500'000, 1000, 1000, 50}, {625'000, 1000, 1000, 1},
      {624'999, 1000, 1000, 0},     {125'000'000, 500, 1000, 100},
      {UINT64_MAX, 1, 1, 100},      {1000, 0, 1000, 0},
      {1000, -5, 1000, 0},          {1000, 1000, 0, 0},
  };
  for (const auto& [bytes, duration, speed, percent] : cases)
    EXPECT_EQ(utilization(bytes, duration, speed), percent) << bytes;
}

}  // namespace
}  // namespace zymdb::collect
