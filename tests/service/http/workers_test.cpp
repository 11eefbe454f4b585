// Work that takes long, beside everything else.
#include "service/http/workers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>

namespace zymdb::service {
namespace {

TEST(Workers, DoAllThatTheyTookOnBeforeTheyEnd) {
  std::atomic<int> done = 0;
  {
    Workers workers(2, 1000);
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(workers.run([&] { ++done; }));
  }
  EXPECT_EQ(done, 1000);
}

TEST(Workers, TakeOnNoMoreThanMayWait) {
  std::latch begun(1), go(1);
  Workers workers(1, 2);
  EXPECT_TRUE(workers.run([&] {
    begun.count_down();
    go.wait();
  }));
  begun.wait();
  EXPECT_TRUE(workers.run([] {}));
  EXPECT_TRUE(workers.run([] {}));
  EXPECT_FALSE(workers.run([] {}));
  go.count_down();
}

TEST(Workers, WorkSideBySide) {
  std::latch both(2);
  Workers workers(2, 2);
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(workers.run([&] { both.arrive_and_wait(); }));
}

}  // namespace
}  // namespace zymdb::service
