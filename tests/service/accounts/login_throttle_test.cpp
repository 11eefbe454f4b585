// Guessing becomes slow, and for whoever guesses alone.
#include "service/accounts/login_throttle.h"

#include <gtest/gtest.h>

namespace zymdb::service {
namespace {

using namespace std::chrono_literals;

constexpr auto kStart = LoginThrottle::Clock::time_point(1000h);

TEST(LoginThrottle, LetsASlipPass) {
  LoginThrottle throttle;
  for (int i = 0; i < 2; ++i) throttle.note_failure("10.0.0.1", "ada", kStart);
  EXPECT_TRUE(throttle.may_try("10.0.0.1", "ada", kStart));
}

TEST(LoginThrottle, MakesWhoGoesOnWaitTwiceAsLongEachTime) {
  LoginThrottle throttle;
  for (int i = 0; i < 3; ++i) throttle.note_failure("10.0.0.1", "ada", kStart);
  EXPECT_FALSE(throttle.may_try("10.0.0.1", "ada", kStart + 999ms));
  EXPECT_TRUE(throttle.may_try("10.0.0.1", "ada", kStart + 1s));
  throttle.note_failure("10.0.0.1", "ada", kStart + 1s);
  EXPECT_FALSE(throttle.may_try("10.0.0.1", "ada", kStart + 2900ms));
  EXPECT_TRUE(throttle.may_try("10.0.0.1", "ada", kStart + 3s));
}

TEST(LoginThrottle, NeverMakesAnybodyWaitLongerThanAboutAMinute) {
  LoginThrottle throttle;
  for (int i = 0; i < 1000; ++i) throttle.note_failure("10.0.0.1", "ada", kStart);
  EXPECT_FALSE(throttle.may_try("10.0.0.1", "ada", kStart + 60s));
  EXPECT_TRUE(throttle.may_try("10.0.0.1", "ada", kStart + 65s));
}

TEST(LoginThrottle, LeavesTheSameUserElsewhereAndOtherUsersThere) {
  LoginThrottle throttle;
  for (int i = 0; i < 10; ++i) throttle.note_failure("10.0.0.1", "ada", kStart);
  EXPECT_TRUE(throttle.may_try("10.0.0.2", "ada", kStart));
  EXPECT_TRUE(throttle.may_try("10.0.0.1", "oscar", kStart));
}

TEST(LoginThrottle, CountsGuessesAtManyUsersToo) {
  LoginThrottle throttle;
  for (int i = 0; i < 20; ++i) throttle.note_failure("10.0.0.1", "user" + std::to_string(i), kStart);
  EXPECT_FALSE(throttle.may_try("10.0.0.1", "another", kStart));
  EXPECT_TRUE(throttle.may_try("10.0.0.2", "another", kStart));
}

TEST(LoginThrottle, IsNotEscapedByAnotherAddressOfTheSameNetwork) {
  LoginThrottle throttle;
  for (int i = 0; i < 3; ++i) throttle.note_failure("2001:db8::" + std::to_string(i), "ada", kStart);
  EXPECT_FALSE(throttle.may_try("2001:db8::ffff", "ada", kStart));
  EXPECT_TRUE(throttle.may_try("2001:db8:0:1::1", "ada", kStart));
}

TEST(LoginThrottle, ForgetsASlipAfterALoginButNotTheAddress) {
  LoginThrottle throttle;
  for (int i = 0; i < 19; ++i) throttle.note_failure("10.0.0.1", "ada", kStart);
  throttle.note_success("10.0.0.1", "ada");
  EXPECT_TRUE(throttle.may_try("10.0.0.1", "ada", kStart));
  throttle.note_failure("10.0.0.1", "ada", kStart);
  EXPECT_FALSE(throttle.may_try("10.0.0.1", "ada", kStart));
}

TEST(LoginThrottle, ForgetsWithTime) {
  LoginThrottle throttle;
  for (int i = 0; i < 30; ++i) throttle.note_failure("10.0.0.1", "ada", kStart);
  throttle.note_failure("10.0.0.2", "x", kStart + 16min);
  for (int i = 0; i < 2; ++i) throttle.note_failure("10.0.0.1", "ada", kStart + 16min);
  EXPECT_TRUE(throttle.may_try("10.0.0.1", "ada", kStart + 16min));
}

TEST(LoginThrottle, KeepsWhoGoesOnHoweverManyOthersTry) {
  LoginThrottle throttle;
  for (int i = 0; i < 5000; ++i) {
    const auto now = kStart + i * 1ms;
    throttle.note_failure("10.0.0.1", "ada", now);
    throttle.note_failure("10.1." + std::to_string(i / 250) + "." + std::to_string(i % 250), "x", now);
  }
  EXPECT_FALSE(throttle.may_try("10.0.0.1", "ada", kStart + 5s));
}

}  // namespace
}  // namespace zymdb::service
