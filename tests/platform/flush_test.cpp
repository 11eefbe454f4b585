// When what is written reaches the device.
#include "controller/bios_configuration.h"
#include "platform/child_process.h"
#include "platform/media_fixture.h"

namespace {

class FlushTest : public MediaTest {
 protected:
  void choose(const std::string& choices) const {
    close_all();
    setenv("ZYMDB_INVENTORY", ("sqlite:" + file() + choices).c_str(), 1);
    ASSERT_EQ(save(1), 0);
  }

  static int flushes_of_a_change() {
    const int before = flushes();
    EXPECT_EQ(save(2), 0);
    return flushes() - before;
  }
};

TEST_F(FlushTest, AChangeIsFlushedBeforeItReturns) {
  choose("");
  EXPECT_EQ(flushes_of_a_change(), 1);
}

TEST_F(FlushTest, AChangeIsNotFlushedWhereTheAddressSaysSo) {
  choose("?synchronous=normal");
  EXPECT_EQ(flushes_of_a_change(), 0);
}

TEST_F(FlushTest, WhatIsNotFlushedSurvivesTheProcess) {
  choose("?synchronous=normal");
  close_all();
  ChildProcess child([] {
    if (save(3) != 0) return 1;
    raise(SIGKILL);
    return 2;
  });
  EXPECT_EQ(child.wait(), -1);
  EXPECT_EQ(value(), 3);
  EXPECT_EQ(integrity_of(file()), "ok");
}

// From the second on: the first one opens the property database.
TEST_F(FlushTest, ASaveOfBiosSettingsIsFlushedOnce) {
  ASSERT_EQ(cmr_api_initialize(), 0);
  char value[] = "1";
  cmr_attribute_request_t setting{};
  setting.name = "NIC.1";
  setting.value = value;
  ASSERT_EQ(cmr_set_bios_attribute_value(&setting, 1), 0);
  for (value[0] = '2'; value[0] < '5'; ++value[0]) {
    const int before = flushes();
    EXPECT_EQ(cmr_set_bios_attribute_value(&setting, 1), 0);
    EXPECT_EQ(flushes() - before, 1);
  }
  EXPECT_EQ(cmr_api_uninitialize(), 0);
}

// Before the log is written over, the device has what it held.
TEST_F(FlushTest, TheLogIsFlushedWhereItGoesIntoTheDatabase) {
  choose("?synchronous=normal");
  const int before = flushes();
  close_all();
  EXPECT_GE(flushes() - before, 2);
}

}  // namespace
