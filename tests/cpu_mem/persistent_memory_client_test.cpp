// Persistent memory modules: exact calls, the answers to failures, and the two display texts.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_cpu_mem.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class PersistentModules : public scripted::ClientTest {
 protected:
  ~PersistentModules() override { std::free(list_.ids); }
  std::vector<uint32_t> ids() const { return {list_.ids, list_.ids + list_.count}; }

  _ZYMDB_Memory_List list_{0, nullptr};
};

TEST_F(PersistentModules, AreTheNonVolatileOnesOfOneMaker) {
  answer({Row(1, 0x1000), Row(2, 0x80), Row(3, 0x1080)});
  EXPECT_EQ(zymdb_get_AEP_memory_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("query Memory [_id,TypeDetail] where Manufacturer='Intel'"));
  EXPECT_THAT(ids(), ElementsAre(1, 3));
}

TEST_F(PersistentModules, WhatCannotBeReadIsThePreviousRows) {
  answer({Row(1, nullptr), Row(2, 0x1000), Row(3, nullptr), Row(nullptr, 0x1000)});
  EXPECT_EQ(zymdb_get_AEP_memory_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids(), ElementsAre(2, 3, 3));
}

TEST_F(PersistentModules, AsManyStepsAreTakenAsThereAreRowsWhateverTheyAnswer) {
  answer(Answer{.rows = {Row(1, 0x1000)}, .end = kFailure, .row_count = 3});
  EXPECT_EQ(zymdb_get_AEP_memory_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(std::count(client().calls.begin(), client().calls.end(), "step"), 3);
  EXPECT_EQ(list_.count, 3u);
}

TEST_F(PersistentModules, FailuresOfTheListAreAnswered) {
  uint32_t own = 0;
  list_ = {5, &own};
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_get_AEP_memory_list(&list_), kFailure);
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(list_.ids, nullptr);
  answer(Answer{.row_count = 0xFFFFFFFF});
  EXPECT_EQ(zymdb_get_AEP_memory_list(&list_), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(list_.ids, nullptr);
  answer(Answer::without_result());
  EXPECT_EQ(zymdb_get_AEP_memory_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(zymdb_get_AEP_memory_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_AEP_memory_list(nullptr), ZYM_DB_STATUS_NO_DB);
}

class SmartInfo : public scripted::ClientTest {
 protected:
  SmartInfo() {
    memory_._id = 0xFFFFFFFF;
    memory_.SecurityState = 0x20;
    memory_.RemainingLife = 99;
    memory_.HealthStatus = 4;
    memory_.AlarmTrips = 5;
    memory_.LDShutdownCount = 6;
    memory_.AITDRAMStatus = 7;
    memory_.HealthStatusReason = 0xFFFF;
    memory_.LLShutdownStatus = 8;
    memory_.InfoMask = 9;
  }
  _ZYMDB_Memory memory_{};
};

TEST_F(SmartInfo, TheModeDecidesTheColumnsAllPutAsUnsigned) {
  for (int mode : {2, 8, 0, 3, 10})
    EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory_, mode), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("update Memory {SecurityState=uint:32, InfoMask=uint:9} where _id=4294967295",
                          "update Memory {RemainingLife=uint:99, HealthStatus=uint:4, AlarmTrips=uint:5, "
                          "LDShutdownCount=uint:6, AITDRAMStatus=uint:7, HealthStatusReason=uint:65535, "
                          "LLShutdownStatus=uint:8, InfoMask=uint:9} where _id=4294967295",
                          "update Memory {} where _id=4294967295", "update Memory {} where _id=4294967295",
                          "update Memory {} where _id=4294967295"));
}

TEST_F(SmartInfo, TheSetIsClearedFirstAndFreedLast) {
  zymdb_update_dcpmm_smart_info(&memory_, 2);
  EXPECT_EQ(client().calls[0], "get_content_values");
  EXPECT_EQ(client().calls[1], "clear");
  EXPECT_EQ(client().calls.back(), "free_content_values");
}

TEST_F(SmartInfo, FailuresAreAnsweredSilently) {
  client().failures[{"update", 0}] = kFailure;
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory_, 8), kFailure);
  client().has_values = false;
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory_, 8), ZYM_DB_STATUS_NO_MEMORY);
  client().has_database = false;
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory_, 8), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(nullptr, 8), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST(HealthState, HasATextForEveryCode) {
  const std::pair<unsigned, const char*> codes[] = {{0, "Normal"},
                                                    {1, "Noncritical"},
                                                    {2, "Critical"},
                                                    {3, "others(0x3)"},
                                                    {4, "Fatal"},
                                                    {5, "others(0x5)"},
                                                    {255, "others(0xff)"},
                                                    {0xFFFFFFFF, "others(0xffffffff)"},
                                                    {0x10000, "others(0x10000)"}};
  for (const auto& [code, text] : codes) {
    char written[32] = "old";
    EXPECT_EQ(bps_format_hstate_str(code, written, sizeof written),
              static_cast<int>(std::string(text).size()));
    EXPECT_STREQ(written, text);
  }
}

TEST(HealthState, IsCutToItsSizeAndAnswersTheWholeLength) {
  char text[8] = "1234567";
  EXPECT_EQ(bps_format_hstate_str(2, text, 4), 8);
  EXPECT_EQ(std::string_view(text, 8), std::string_view("Cri\0"
                                                        "567\0",
                                                        8));
}

TEST(HealthState, WithoutRoomNothingIsWritten) {
  char text[8] = "old";
  EXPECT_EQ(bps_format_hstate_str(2, text, 0), 0);
  EXPECT_EQ(bps_format_hstate_str(2, nullptr, 8), 0);
  EXPECT_STREQ(text, "old");
}

// By the four bits that count, the first of them that decides; all other bits set or clear.
TEST(SecurityState, IsDecidedByTheFirstBitThatTells) {
  for (unsigned state = 0; state < 256; ++state) {
    const char* expected = (state & 0x20) != 0   ? "Not Supported"
                           : (state & 0x08) != 0 ? "Frozen"
                           : (state & 0x04) != 0 ? "Locked"
                           : (state & 0x02) != 0 ? "Enabled"
                                                 : "Disabled";
    char text[16];
    bps_format_security_str(state, text, sizeof text);
    EXPECT_STREQ(text, expected) << state;
    bps_format_security_str(state | 0xFFFFFF00, text, sizeof text);
    EXPECT_STREQ(text, expected) << state;
  }
  const std::pair<unsigned, const char*> examples[] = {
      {0x2C, "Not Supported"}, {0x0C, "Frozen"}, {0x06, "Locked"}, {0x00, "Disabled"}, {0x02, "Enabled"}};
  for (const auto& [state, expected] : examples) {
    char text[16];
    bps_format_security_str(state, text, sizeof text);
    EXPECT_STREQ(text, expected);
  }
}

TEST(SecurityState, IsCutToItsSizeAndWithoutRoomNotWritten) {
  char text[8] = "1234567";
  bps_format_security_str(0x20, text, 4);
  EXPECT_EQ(std::string_view(text, 8), std::string_view("Not\0"
                                                        "567\0",
                                                        8));
  bps_format_security_str(0x04, text, 0);
  bps_format_security_str(0x04, nullptr, 8);
  EXPECT_STREQ(text, "Not");
}

}  // namespace
