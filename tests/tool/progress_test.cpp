// The progress bar, with a clock and a terminal of the test's own.
#include "terminal/progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace zymdb::tool {
namespace {

using std::chrono::milliseconds;
using testing::EndsWith;
using testing::IsEmpty;

struct ProgressTest : testing::Test {
  std::string screen;
  Progress::Clock::time_point time{};

  Progress make(size_t width = 27) {
    return Progress([this](std::string_view text) { screen += text; }, width, [this] { return time; });
  }
  void pass(milliseconds duration) { time += duration; }
};

TEST_F(ProgressTest, ShortWorkLeavesNoTrace) {
  {
    auto progress = make();
    progress.update(0, 10);
    pass(milliseconds(499));
    progress.update(10, 10);
  }
  EXPECT_THAT(screen, IsEmpty());
}

TEST_F(ProgressTest, LongWorkIsDrawnInTheGivenWidth) {
  auto progress = make(27);
  pass(milliseconds(500));
  progress.update(5, 10);
  EXPECT_EQ(screen, "\r\033[K[##########          ]  50%");
}

TEST_F(ProgressTest, TheBarIsFullOnlyAtTheEnd) {
  auto progress = make(27);
  pass(milliseconds(500));
  progress.update(999, 1000);
  EXPECT_THAT(screen, EndsWith("[################### ]  99%"));
  pass(milliseconds(100));
  progress.update(1000, 1000);
  EXPECT_THAT(screen, EndsWith("[####################] 100%"));
}

TEST_F(ProgressTest, TheBarIsDrawnTenTimesASecondAtMost) {
  auto progress = make();
  pass(milliseconds(500));
  progress.update(1, 10);
  const auto drawn = screen;
  pass(milliseconds(99));
  progress.update(2, 10);
  EXPECT_EQ(screen, drawn);
  pass(milliseconds(1));
  progress.update(3, 10);
  EXPECT_NE(screen, drawn);
}

TEST_F(ProgressTest, TheBarIsTakenAwayAtTheEnd) {
  {
    auto progress = make();
    pass(milliseconds(500));
    progress.update(1, 10);
  }
  EXPECT_THAT(screen, EndsWith("%\r\033[K"));
}

TEST_F(ProgressTest, WorkWithoutStepsAndTinyTerminalsDoNoHarm) {
  auto progress = make(3);
  pass(milliseconds(500));
  progress.update(0, 0);
  EXPECT_THAT(screen, IsEmpty());
  progress.update(20, 10);
  EXPECT_THAT(screen, EndsWith("[] 100%"));
}

}  // namespace
}  // namespace zymdb::tool
