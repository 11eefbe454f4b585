// The processor operations' exact calls, and what they answer to every failure of the client.
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

class ProcessorList : public scripted::ClientTest {
 protected:
  ~ProcessorList() override { std::free(list_.ids); }
  std::vector<uint32_t> ids() const { return {list_.ids, list_.ids + list_.count}; }

  _ZYMDB_Processor_List list_{0, nullptr};
};

TEST_F(ProcessorList, AsksForTheIdsAlone) {
  answer({Row(3), Row(1)});
  EXPECT_EQ(zymdb_get_processor_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().calls, ElementsAre("query Processor [_id] where NULL", "row_count", "step", "uint 0",
                                          "step", "uint 0", "step", "free_result"));
  EXPECT_THAT(ids(), ElementsAre(3, 1));
}

TEST_F(ProcessorList, TheDatabaseIsLookedForBeforeTheArgument) {
  client().has_database = false;
  EXPECT_EQ(zymdb_get_processor_list(nullptr), ZYM_DB_STATUS_NO_DB);
  client().has_database = true;
  EXPECT_EQ(zymdb_get_processor_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(ProcessorList, AFailedQueryLeavesTheListUntouched) {
  uint32_t old = 0;
  _ZYMDB_Processor_List list{5, &old};
  for (bool has_result : {false, true}) {
    answer(Answer::failing(kFailure, has_result));
    EXPECT_EQ(zymdb_get_processor_list(&list), kFailure);
    EXPECT_EQ(list.count, 5u);
    EXPECT_EQ(list.ids, &old);
  }
}

TEST_F(ProcessorList, UnreadableIdsAreLeftOut) {
  answer({Row(1), Row(nullptr), Row(3)});
  EXPECT_EQ(zymdb_get_processor_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids(), ElementsAre(1, 3));
}

TEST_F(ProcessorList, AFailedStepKeepsWhatWasReadForTheCaller) {
  answer(Answer{.rows = {Row(1)}, .end = kFailure, .row_count = 4});
  EXPECT_EQ(zymdb_get_processor_list(&list_), kFailure);
  EXPECT_THAT(ids(), ElementsAre(1));
}

TEST_F(ProcessorList, NeverMoreThanTheRowCountIsStored) {
  answer(Answer{.rows = {Row(1), Row(2), Row(3)}, .row_count = 2});
  EXPECT_EQ(zymdb_get_processor_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids(), ElementsAre(1, 2));
}

TEST_F(ProcessorList, WithoutMemoryTheListIsEmpty) {
  answer(Answer{.row_count = 0xFFFFFFFF});
  list_.count = 9;
  EXPECT_EQ(zymdb_get_processor_list(&list_), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(list_.ids, nullptr);
}

class Processor : public scripted::ClientTest {
 protected:
  Processor() {
    std::memset(static_cast<void*>(&processor_), 0x5A, sizeof processor_);
    processor_._id = 7;
    before_ = processor_;
  }
  bool is_untouched() const { return std::memcmp(&processor_, &before_, sizeof processor_) == 0; }

  _ZYMDB_Processor processor_;
  _ZYMDB_Processor before_;
};

TEST_F(Processor, AsksForAllColumnsOfTheRowByItsBoundId) {
  processor_._id = 0xFFFFFFFF;
  answer(std::vector<Row>{});
  zymdb_get_processor(&processor_);
  EXPECT_THAT(client().statements, ElementsAre("query Processor [*] where _id=? with 3/0/1:4294967295"));
}

TEST_F(Processor, ReadsItsColumnsByNameInTheOrderOfTheRecord) {
  answer({Row()});
  EXPECT_EQ(zymdb_get_processor(&processor_), ZYM_DB_STATUS_OK);
  std::vector<std::string> expected = {"query Processor [*] where _id=? with 3/0/1:7", "step"};
  const auto numbers = [&](std::initializer_list<const char*> names) {
    for (const std::string name : names)
      expected.push_back((name == "ProcId" ? "extract_uint64 " : "extract_uint ") + name);
  };
  const auto texts = [&](std::initializer_list<const char*> names) {
    for (const std::string name : names) expected.push_back("extract_str " + name + " size 65");
  };
  numbers({"_id", "ProcId", "ProcType", "Family"});
  texts({"Socket", "Manufacturer", "Version"});
  numbers({"Voltage", "ExtClock", "MaxSpeed", "CurSpeed", "Status", "Upgrade"});
  texts({"SerialNo", "AssetTag", "PartNo"});
  numbers({"CoreCount", "CoreEnabled", "ThreadCount", "Characteristics"});
  for (const std::string level : {"L1", "L2", "L3"})
    for (const char* column : {"CacheMaxSize", "CacheInstalled", "CacheType", "CacheConfig"})
      expected.push_back("extract_uint " + level + column);
  numbers({"NodeIndex"});
  expected.push_back("free_result");
  EXPECT_EQ(client().calls, expected);
}

TEST_F(Processor, UnreadableNumbersAreZero) {
  answer({Row()});
  EXPECT_EQ(zymdb_get_processor(&processor_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(processor_._id, 0u);
  EXPECT_EQ(processor_.ProcId, 0u);
  EXPECT_EQ(processor_.CoreCount, 0);
  EXPECT_EQ(processor_.L3CacheConfig, 0);
  EXPECT_EQ(processor_.NodeIndex, 0);
}

TEST_F(Processor, TheDatabaseIsLookedForBeforeTheArgument) {
  client().has_database = false;
  EXPECT_EQ(zymdb_get_processor(nullptr), ZYM_DB_STATUS_NO_DB);
  client().has_database = true;
  EXPECT_EQ(zymdb_get_processor(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(Processor, AFailedQueryIsPassedOn) {
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_get_processor(&processor_), kFailure);
  EXPECT_TRUE(is_untouched());
}

TEST_F(Processor, WithoutARowTheAnswerIsAnErrorWhateverTheStepSaid) {
  answer(std::vector<Row>{});
  answer(Answer{.end = kFailure});
  answer(Answer::without_result());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(zymdb_get_processor(&processor_), ZYM_DB_STATUS_ERROR);
  EXPECT_TRUE(is_untouched());
}

class PlatformTables : public scripted::ClientTest {};

TEST_F(PlatformTables, BitFifteenOfTheThirdWordMarksAnAmdPlatform) {
  const std::pair<uint32_t, int> words[] = {{0, 0}, {1u << 15, 1}, {~(1u << 15), 0}, {~0u, 1}, {1u << 14, 0}};
  for (const auto& [word, is_amd] : words) {
    client().platform_word = word;
    EXPECT_EQ(zymdb_is_amd(), is_amd) << std::hex << word;
  }
}

TEST_F(PlatformTables, ReadingThemNeedsNoDatabaseAndReleasesThem) {
  client().has_database = false;
  zymdb_is_amd();
  EXPECT_THAT(client().calls,
              ElementsAre("ptables_from_ram", "ptables_lookup_platform_direct", "ptables_free"));
}

TEST_F(PlatformTables, WhatCannotBeLookedUpIsNotAmd) {
  client().platform_word = ~0u;
  client().failures[{"ptables_from_ram", 0}] = kFailure;
  client().failures[{"ptables_lookup_platform_direct", 0}] = kFailure;
  EXPECT_EQ(zymdb_is_amd(), 0);
  EXPECT_EQ(client().calls.back(), "ptables_free");
}

}  // namespace
