#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "controller/ruvo_log.h"

namespace {

template <class Body>
std::string log_of(Body body) {
  testing::internal::CaptureStderr();
  body();
  return testing::internal::GetCapturedStderr();
}

class LogTest : public testing::Test {
 protected:
  LogTest() { setenv("ZYMDB_LOG", "stderr", 1); }
};

TEST_F(LogTest, AMessageIsALineWithItsLevel) {
  EXPECT_EQ(log_of([] { ruvo_log::logErr("lost %d of %s\n", 2, "them"); }), "zymdb error: lost 2 of them\n");
  EXPECT_EQ(log_of([] { ruvo_log::logWarn("odd"); }), "zymdb warning: odd\n");
  EXPECT_EQ(log_of([] { ruvo_log::logInfo("done\n\n"); }), "zymdb info: done\n");
}

TEST_F(LogTest, AValueCannotBeginALineOfItsOwn) {
  EXPECT_EQ(log_of([] { ruvo_log::logErr("name=%s", "x\nzymdb error: forged\x1B[2J"); }),
            "zymdb error: name=x zymdb error: forged [2J\n");
}

TEST_F(LogTest, ALongMessageIsCut) {
  const std::string log = log_of([] { ruvo_log::logErr("%s", std::string(100000, 'x').c_str()); });
  EXPECT_GT(log.size(), 1000U);
  EXPECT_LT(log.size(), 3000U);
  EXPECT_EQ(log.back(), '\n');
}

TEST_F(LogTest, ByDefaultItGoesToTheSystemLog) {
  unsetenv("ZYMDB_LOG");
  EXPECT_EQ(log_of([] { ruvo_log::logErr("quiet here"); }), "");
}

}  // namespace
