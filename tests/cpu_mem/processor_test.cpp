// The processor operations on the embedded database.
#include <gmock/gmock.h>

#include <cstring>

#include "support/inventory.h"
#include "zymdb_cpu_mem.h"

using testing::ElementsAre;

namespace {

class Processors : public InventoryTest {
 protected:
  // Status of the list operation, and the ids listed.
  static std::pair<int, std::vector<uint32_t>> listed() {
    _ZYMDB_Processor_List list{0, nullptr};
    const int status = zymdb_get_processor_list(&list);
    std::vector<uint32_t> ids(list.ids, list.ids + list.count);
    std::free(list.ids);
    return {status, ids};
  }
  static _ZYMDB_Processor processor(int64_t id) {
    _ZYMDB_Processor processor{};
    processor._id = static_cast<uint32_t>(id);
    EXPECT_EQ(zymdb_get_processor(&processor), ZYM_DB_STATUS_OK);
    return processor;
  }
};

TEST_F(Processors, AnEmptyTableListsNothing) {
  _ZYMDB_Processor_List list{9, nullptr};
  EXPECT_EQ(zymdb_get_processor_list(&list), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list.count, 0u);
  EXPECT_NE(list.ids, nullptr);
  std::free(list.ids);
}

TEST_F(Processors, EveryRowIsListed) {
  for (const char* socket : {"CPU0", "CPU1", "CPU2"}) given("Processor", {{"Socket", socket}});
  const auto [status, ids] = listed();
  EXPECT_EQ(status, ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids, ElementsAre(1, 2, 3));
}

TEST_F(Processors, EveryFieldComesFromTheColumnOfItsName) {
  const int64_t id = given(
      "Processor",
      {{"ProcId", 0x12345678},      {"ProcType", 3},       {"Family", 0x1FE},        {"Socket", "CPU0"},
       {"Manufacturer", "a maker"}, {"Version", "a name"}, {"Voltage", 0x8C},        {"ExtClock", 100},
       {"MaxSpeed", 4000},          {"CurSpeed", 2400},    {"Status", 65},           {"Upgrade", 54},
       {"SerialNo", "sn"},          {"AssetTag", "at"},    {"PartNo", "pn"},         {"CoreCount", 28},
       {"CoreEnabled", 27},         {"ThreadCount", 56},   {"Characteristics", 252}, {"L1CacheMaxSize", 1},
       {"L1CacheInstalled", 2},     {"L1CacheType", 3},    {"L1CacheConfig", 4},     {"L2CacheMaxSize", 5},
       {"L2CacheInstalled", 6},     {"L2CacheType", 7},    {"L2CacheConfig", 8},     {"L3CacheMaxSize", 9},
       {"L3CacheInstalled", 10},    {"L3CacheType", 11},   {"L3CacheConfig", 12},    {"NodeIndex", 13}});
  const _ZYMDB_Processor p = processor(id);
  EXPECT_EQ(p._id, id);
  EXPECT_EQ(p.ProcId, 0x12345678u);
  EXPECT_EQ(p.ProcType, 3);
  EXPECT_EQ(p.Family, 0x1FE);
  EXPECT_STREQ(p.Socket, "CPU0");
  EXPECT_STREQ(p.Manufacturer, "a maker");
  EXPECT_STREQ(p.Version, "a name");
  EXPECT_EQ(p.Voltage, 0x8C);
  EXPECT_EQ(p.ExtClock, 100);
  EXPECT_EQ(p.MaxSpeed, 4000);
  EXPECT_EQ(p.CurSpeed, 2400);
  EXPECT_EQ(p.Status, 65);
  EXPECT_EQ(p.Upgrade, 54);
  EXPECT_STREQ(p.SerialNo, "sn");
  EXPECT_STREQ(p.AssetTag, "at");
  EXPECT_STREQ(p.PartNo, "pn");
  EXPECT_EQ(p.CoreCount, 28);
  EXPECT_EQ(p.CoreEnabled, 27);
  EXPECT_EQ(p.ThreadCount, 56);
  EXPECT_EQ(p.Characteristics, 252);
  const uint16_t caches[] = {p.L1CacheMaxSize, p.L1CacheInstalled, p.L1CacheType, p.L1CacheConfig,
                             p.L2CacheMaxSize, p.L2CacheInstalled, p.L2CacheType, p.L2CacheConfig,
                             p.L3CacheMaxSize, p.L3CacheInstalled, p.L3CacheType, p.L3CacheConfig};
  EXPECT_THAT(caches, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
  EXPECT_EQ(p.NodeIndex, 13);
}

TEST_F(Processors, LargerNumbersAreCutToTheLowBitsOfTheirField) {
  const int64_t id = given("Processor", {{"CoreCount", 300}, {"MaxSpeed", 65536 + 7}, {"NodeIndex", 256}});
  const _ZYMDB_Processor p = processor(id);
  EXPECT_EQ(p.CoreCount, 44);
  EXPECT_EQ(p.MaxSpeed, 7);
  EXPECT_EQ(p.NodeIndex, 0);
}

TEST_F(Processors, NullColumnsReadAsZeroAndAsEmptyTexts) {
  const int64_t id = given("Processor", {{"NodeIndex", 1}});
  const _ZYMDB_Processor p = processor(id);
  EXPECT_EQ(p.Family, 0);
  EXPECT_STREQ(p.Socket, "");
  EXPECT_STREQ(p.PartNo, "");
  EXPECT_EQ(p.NodeIndex, 1);
}

TEST_F(Processors, TextsAreCutToSixtyFourCharacters) {
  const int64_t id = given("Processor", {{"Version", std::string(100, 'v')}});
  EXPECT_EQ(processor(id).Version, std::string(64, 'v'));
}

TEST_F(Processors, AnUnknownProcessorIsAnErrorAndLeavesTheRecord) {
  _ZYMDB_Processor p;
  std::memset(static_cast<void*>(&p), 0x5A, sizeof p);
  p._id = 99;
  const _ZYMDB_Processor before = p;
  EXPECT_EQ(zymdb_get_processor(&p), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(std::memcmp(&p, &before, sizeof p), 0);
}

TEST_F(Processors, WithoutADatabaseBothAnswerThatWhateverTheArgument) {
  lose_database();
  _ZYMDB_Processor_List list{0, nullptr};
  _ZYMDB_Processor p{};
  EXPECT_EQ(zymdb_get_processor_list(nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_processor_list(&list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_processor(nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_processor(&p), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
