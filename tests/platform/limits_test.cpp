// How much a call may take, by the machine and by the environment.
#include "client/limits.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace zymdb::client {
namespace {

constexpr uint64_t kMiB = 1024 * 1024;

size_t result_with(const char* value) {
  setenv("ZYMDB_RESULT_KIB", value, 1);
  const size_t limit = limits_here().result;
  unsetenv("ZYMDB_RESULT_KIB");
  return limit;
}

TEST(LimitsTest, AServerHasRoom) {
  const Limits limits = limits_of(64 * 1024 * kMiB);
  EXPECT_EQ(limits.result, 256 * kMiB);
  EXPECT_EQ(limits.log, kMiB);
  EXPECT_EQ(limits.cache, 2 * kMiB);
  EXPECT_EQ(limits.kept, kMiB);
}

TEST(LimitsTest, AControllerHasLess) {
  const Limits largest = limits_of(1024 * kMiB);
  EXPECT_EQ(largest.result, 64 * kMiB);
  const Limits smallest = limits_of(256 * kMiB);
  EXPECT_EQ(smallest.result, 16 * kMiB);
  EXPECT_EQ(smallest.log, kMiB / 2);
  EXPECT_EQ(smallest.cache, kMiB / 16);
}

TEST(LimitsTest, AMachineThatDoesNotTellItsMemoryCountsAsSmall) {
  EXPECT_EQ(limits_of(0).result, 4 * kMiB);
  EXPECT_EQ(limits_of(0).log, kMiB / 2);
}

TEST(LimitsTest, TheEnvironmentSetsThem) {
  setenv("ZYMDB_LOG_KIB", "64", 1);
  setenv("ZYMDB_CACHE_KIB", "128", 1);
  setenv("ZYMDB_KEPT_KIB", "0", 1);
  const Limits limits = limits_here();
  unsetenv("ZYMDB_LOG_KIB");
  unsetenv("ZYMDB_CACHE_KIB");
  unsetenv("ZYMDB_KEPT_KIB");
  EXPECT_EQ(limits.log, 64U * 1024);
  EXPECT_EQ(limits.cache, 128U * 1024);
  EXPECT_EQ(limits.kept, 0U);
  EXPECT_EQ(result_with("1"), 1024U);
}

TEST(LimitsTest, WhatIsNoNumberOfKibibytesIsLeftOutOfAccount) {
  const size_t usual = limits_here().result;
  for (const char* value : {"", "0", "-1", "1M", "x", "0x10", "2097152", "99999999999999999999"})
    EXPECT_EQ(result_with(value), usual) << value;
  EXPECT_EQ(result_with("2097151"), size_t{2097151} * 1024);
}

}  // namespace
}  // namespace zymdb::client
