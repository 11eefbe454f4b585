// The memory operations' exact calls, and what they answer to every failure of the client.
#include <gmock/gmock.h>

#include <cstring>

#include "support/scripted_client.h"
#include "zymdb_cpu_mem.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class MemoryList : public scripted::ClientTest {
 protected:
  ~MemoryList() override { std::free(list_.ids); }
  std::vector<uint32_t> ids() const { return {list_.ids, list_.ids + list_.count}; }

  _ZYMDB_Memory_List list_{0, nullptr};
};

TEST_F(MemoryList, AsksForTheIdsAloneAndLeavesUnreadableOnesOut) {
  answer({Row(3), Row(nullptr), Row(1)});
  EXPECT_EQ(zymdb_get_memory_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("query Memory [_id] where NULL"));
  EXPECT_THAT(ids(), ElementsAre(3, 1));
}

TEST_F(MemoryList, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_memory_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_memory_list(nullptr), ZYM_DB_STATUS_NO_DB);
}

TEST_F(MemoryList, FailuresAreAnsweredAsForProcessors) {
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_get_memory_list(&list_), kFailure);
  answer(Answer{.row_count = 0xFFFFFFFF});
  EXPECT_EQ(zymdb_get_memory_list(&list_), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(list_.ids, nullptr);
  answer(Answer{.rows = {Row(1)}, .end = kFailure, .row_count = 4});
  EXPECT_EQ(zymdb_get_memory_list(&list_), kFailure);
  EXPECT_THAT(ids(), ElementsAre(1));
}

TEST_F(MemoryList, NeverMoreThanTheRowCountIsStored) {
  answer(Answer{.rows = {Row(1), Row(2)}, .row_count = 1});
  EXPECT_EQ(zymdb_get_memory_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids(), ElementsAre(1));
}

class Memory : public scripted::ClientTest {
 protected:
  Memory() {
    std::memset(static_cast<void*>(&memory_), 0x5A, sizeof memory_);
    before_ = memory_;
  }
  bool is_untouched() const { return std::memcmp(&memory_, &before_, sizeof memory_) == 0; }

  _ZYMDB_Memory memory_;
  _ZYMDB_Memory before_;
};

TEST_F(Memory, IsLookedUpByABoundSlotOfSixteenBitsOrIdOfThirtyTwo) {
  answer(std::vector<Row>{});
  answer(std::vector<Row>{});
  zymdb_get_memory_by_slot(&memory_, 0xFFFF);
  zymdb_get_memory_by_id(&memory_, 0xFFFFFFFF);
  EXPECT_THAT(client().statements, ElementsAre("query Memory [*] where SlotNo=? with 2/0/1:65535",
                                               "query Memory [*] where _id=? with 3/0/1:4294967295"));
}

TEST_F(Memory, OneParameterIsPassedWhateverTheFilter) {
  const _zym_db_param_t param{3, 0, 1, 5};
  for (int i = 0; i < 3; ++i) answer(std::vector<Row>{});
  zymdb_get_memory_with_filter(&memory_, "MemSize>0", &param);
  zymdb_get_memory_with_filter(&memory_, "MemSize>0", nullptr);
  zymdb_get_memory_with_filter(&memory_, nullptr, nullptr);
  EXPECT_THAT(client().statements, ElementsAre("query Memory [*] where MemSize>0 with 3/0/1:5",
                                               "query Memory [*] where MemSize>0 with NULL",
                                               "query Memory [*] where NULL with NULL"));
}

TEST_F(Memory, ReadsItsColumnsByNameInTheirOrder) {
  answer({Row()});
  EXPECT_EQ(zymdb_get_memory_by_id(&memory_, 7), ZYM_DB_STATUS_OK);
  std::vector<std::string> expected = {"query Memory [*] where _id=? with 3/0/1:7", "step"};
  const auto read = [&](const char* how, std::initializer_list<const char*> names) {
    const std::string bound = how == std::string("extract_str ") ? " size 65" : "";
    for (const std::string name : names) expected.push_back(how + name + bound);
  };
  read("extract_uint ", {"_id", "ArrayId", "SlotNo", "TotalWidth", "DataWidth", "MemSize", "FormFactor",
                         "MemType", "TypeDetail", "MaxSpeed", "ClockSpeed"});
  read("extract_str ", {"DevLocator", "BankLocator", "Manufacturer", "SerialNo", "AssetTag", "PartNo"});
  read("extract_uint ", {"Attributes"});
  read("extract_uint64 ", {"Capacity", "MemCapacity", "AppDirCap", "UnconfigCap", "InaccCap", "ReservedCap"});
  read("extract_uint ", {"Classification", "RemainingLife", "SecurityState", "CPUIndex", "iMCNum",
                         "ChannelNum", "DimmNum", "HealthStatus", "AlarmTrips", "LDShutdownCount",
                         "AITDRAMStatus", "HealthStatusReason", "LLShutdownStatus", "InfoMask"});
  read("extract_str ", {"FirmwareVersion", "SoftwareID"});
  read("extract_uint ", {"NodeIndex", "MajorHealth", "MinorHealth", "RepairStatus"});
  expected.push_back("free_result");
  EXPECT_EQ(client().calls, expected);
  EXPECT_EQ(memory_.RepairStatus, 0u);
  EXPECT_EQ(memory_.Capacity, 0u);
}

TEST_F(Memory, TheDatabaseIsLookedForBeforeTheArgument) {
  for (int expected : {ZYM_DB_STATUS_INVALID_PARAM, ZYM_DB_STATUS_NO_DB}) {
    EXPECT_EQ(zymdb_get_memory_with_filter(nullptr, "1", nullptr), expected);
    EXPECT_EQ(zymdb_get_memory_by_slot(nullptr, 1), expected);
    EXPECT_EQ(zymdb_get_memory_by_id(nullptr, 1), expected);
    client().has_database = false;
  }
}

TEST_F(Memory, WithoutARowTheAnswerIsAnErrorAndAFailedQueryIsPassedOn) {
  const std::pair<Answer, int> cases[] = {{Answer{}, ZYM_DB_STATUS_ERROR},
                                          {Answer{.end = kFailure}, ZYM_DB_STATUS_ERROR},
                                          {Answer::without_result(), ZYM_DB_STATUS_ERROR},
                                          {Answer::failing(kFailure, true), kFailure}};
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(zymdb_get_memory_by_slot(&memory_, 1), status);
    EXPECT_TRUE(is_untouched());
  }
}

class MemoryHealth : public scripted::ClientTest {
 protected:
  unsigned major_ = 9;
  unsigned minor_ = 8;
  unsigned repair_ = 7;
};

TEST_F(MemoryHealth, IsThreeColumnsOfTheSlotsRow) {
  answer({Row(0x1FF, 0x102, 0x12345)});
  EXPECT_EQ(zymdb_get_mpfa_health_by_slot(3, &major_, &minor_, &repair_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().calls,
              ElementsAre("query Memory [MajorHealth,MinorHealth,RepairStatus] where SlotNo=3", "step",
                          "uint 0", "uint 1", "uint 2", "free_result"));
  EXPECT_EQ(major_, 0xFFu);
  EXPECT_EQ(minor_, 2u);
  EXPECT_EQ(repair_, 0x12345u);
}

TEST_F(MemoryHealth, ThatCannotBeReadIsZeroAndTheRepairStatusMayBeLeftOut) {
  answer({Row(nullptr, nullptr, nullptr)});
  answer({Row(1, 2)});
  EXPECT_EQ(zymdb_get_mpfa_health_by_slot(3, &major_, &minor_, &repair_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(major_ + minor_ + repair_, 0u);
  EXPECT_EQ(zymdb_get_mpfa_health_by_slot(3, &major_, &minor_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_EQ(major_, 1u);
  EXPECT_EQ(client().calls.back(), "free_result");
}

TEST_F(MemoryHealth, AMissingOutputOutweighsAMissingDatabase) {
  for (bool has_database : {true, false}) {
    client().has_database = has_database;
    EXPECT_EQ(zymdb_get_mpfa_health_by_slot(3, nullptr, &minor_, &repair_), ZYM_DB_STATUS_INVALID_PARAM);
    EXPECT_EQ(zymdb_get_mpfa_health_by_slot(3, &major_, nullptr, &repair_), ZYM_DB_STATUS_INVALID_PARAM);
  }
  EXPECT_EQ(zymdb_get_mpfa_health_by_slot(3, &major_, &minor_, &repair_), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(MemoryHealth, WithoutARowAnswersTheStepsCodeAndTheOutputsStay) {
  const std::pair<Answer, int> cases[] = {{Answer{}, ZYM_DB_STATUS_DONE},
                                          {Answer{.end = kFailure}, kFailure},
                                          {Answer::failing(kFailure, true), kFailure},
                                          {Answer::without_result(), ZYM_DB_STATUS_DONE}};
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(zymdb_get_mpfa_health_by_slot(3, &major_, &minor_, &repair_), status);
  }
  EXPECT_EQ(major_, 9u);
  EXPECT_EQ(minor_, 8u);
  EXPECT_EQ(repair_, 7u);
}

}  // namespace
