#include "soak/growth.h"

#include <gtest/gtest.h>

namespace soak {
namespace {

Series series(std::vector<int64_t> samples, int64_t allowance = 10) {
  return {"memory", allowance, std::move(samples)};
}

TEST(Growth, IsSteadyGrowthBeyondTheAllowance) {
  EXPECT_TRUE(judge(series({0, 3, 6, 9, 12, 15, 18, 21, 24, 27, 30, 33})).grows);
  EXPECT_FALSE(judge(series({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})).grows);
}

TEST(Growth, IsNotWhatTheBeginningNeeds) {
  EXPECT_FALSE(judge(series({0, 40, 90, 100, 100, 100, 100, 100, 100, 100, 100, 100})).grows);
}

TEST(Growth, IsNotWhatComesAndGoes) {
  EXPECT_FALSE(judge(series({5, 5, 5, 5, 5, 5, 900, 900, 900, 5, 5, 900})).grows);
  EXPECT_FALSE(judge(series({9, 9, 9, 9, 9, 9, 5, 5, 5, 5, 5, 5})).grows);
}

TEST(Growth, IsALateStepThatStays) {
  EXPECT_TRUE(judge(series({5, 5, 5, 5, 5, 5, 5, 5, 99, 99, 99, 99})).grows);
}

TEST(Growth, ComparesTheMediansOfTheSecondAndTheLastQuarter) {
  const Verdict verdict = judge(series({1, 2, 3, 40, 50, 60, 7, 8, 9, 41, 70, 42}));
  EXPECT_EQ(verdict.second_quarter, 50);
  EXPECT_EQ(verdict.last_quarter, 42);
}

TEST(Growth, IsAssumedWhereTooLittleWasMeasured) {
  EXPECT_TRUE(judge(series({})).grows);
  EXPECT_TRUE(judge(series({1, 1, 1, 1, 1, 1, 1})).grows);
}

}  // namespace
}  // namespace soak
