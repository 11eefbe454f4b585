// The memory operations on the embedded database.
#include <gmock/gmock.h>

#include <cstring>

#include "support/inventory.h"
#include "zymdb_cpu_mem.h"

namespace {

class MemoryModules : public InventoryTest {};

TEST_F(MemoryModules, EveryRowIsListed) {
  for (int slot : {5, 6}) given("Memory", {{"SlotNo", slot}});
  _ZYMDB_Memory_List list{};
  EXPECT_EQ(zymdb_get_memory_list(&list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(std::vector(list.ids, list.ids + list.count), testing::ElementsAre(1, 2));
  std::free(list.ids);
}

TEST_F(MemoryModules, EveryFieldComesFromTheColumnOfItsName) {
  given("Memory", {{"ArrayId", 1},
                   {"SlotNo", 2},
                   {"TotalWidth", 72},
                   {"DataWidth", 64},
                   {"MemSize", 32768},
                   {"FormFactor", 9},
                   {"MemType", 26},
                   {"TypeDetail", 0x1080},
                   {"MaxSpeed", 2933},
                   {"ClockSpeed", 2666},
                   {"DevLocator", "DIMM A1"},
                   {"BankLocator", "NODE 1"},
                   {"Manufacturer", "maker"},
                   {"SerialNo", "sn"},
                   {"AssetTag", "at"},
                   {"PartNo", "pn"},
                   {"Attributes", 2},
                   {"NodeIndex", 3},
                   {"Capacity", 4},
                   {"MemCapacity", 5},
                   {"AppDirCap", 6},
                   {"UnconfigCap", 7},
                   {"InaccCap", 8},
                   {"ReservedCap", 9},
                   {"Classification", 10},
                   {"RemainingLife", 11},
                   {"SecurityState", 12},
                   {"HealthStatus", 13},
                   {"AlarmTrips", 14},
                   {"LDShutdownCount", 15},
                   {"AITDRAMStatus", 16},
                   {"HealthStatusReason", 17},
                   {"LLShutdownStatus", 18},
                   {"InfoMask", 19},
                   {"CPUIndex", 20},
                   {"iMCNum", 21},
                   {"ChannelNum", 22},
                   {"DimmNum", 23},
                   {"FirmwareVersion", "fw"},
                   {"SoftwareID", "sw"},
                   {"MajorHealth", 24},
                   {"MinorHealth", 25},
                   {"RepairStatus", 26}});
  _ZYMDB_Memory m{};
  EXPECT_EQ(zymdb_get_memory_by_slot(&m, 2), ZYM_DB_STATUS_OK);
  const std::vector<uint64_t> numbers = {m._id,
                                         m.ArrayId,
                                         m.SlotNo,
                                         m.TotalWidth,
                                         m.DataWidth,
                                         m.MemSize,
                                         m.FormFactor,
                                         m.MemType,
                                         m.TypeDetail,
                                         m.MaxSpeed,
                                         m.ClockSpeed,
                                         m.Attributes,
                                         m.NodeIndex,
                                         m.Capacity,
                                         m.MemCapacity,
                                         m.AppDirCap,
                                         m.UnconfigCap,
                                         m.InaccCap,
                                         m.ReservedCap,
                                         m.Classification,
                                         m.RemainingLife,
                                         m.SecurityState,
                                         m.HealthStatus,
                                         m.AlarmTrips,
                                         m.LDShutdownCount,
                                         m.AITDRAMStatus,
                                         m.HealthStatusReason,
                                         m.LLShutdownStatus,
                                         m.InfoMask,
                                         m.CPUIndex,
                                         m.iMCNum,
                                         m.ChannelNum,
                                         m.DimmNum,
                                         m.MajorHealth,
                                         m.MinorHealth,
                                         m.RepairStatus};
  EXPECT_THAT(numbers,
              testing::ElementsAre(1, 1, 2, 72, 64, 32768, 9, 26, 0x1080, 2933, 2666, 2, 3, 4, 5, 6, 7, 8, 9,
                                   10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26));
  const std::vector<std::string> texts = {m.DevLocator, m.BankLocator, m.Manufacturer,    m.SerialNo,
                                          m.AssetTag,   m.PartNo,      m.FirmwareVersion, m.SoftwareID};
  EXPECT_THAT(texts, testing::ElementsAre("DIMM A1", "NODE 1", "maker", "sn", "at", "pn", "fw", "sw"));
}

TEST_F(MemoryModules, AreReadBySlotByIdAndByAnyFilter) {
  for (int slot : {5, 6}) given("Memory", {{"SlotNo", slot}, {"MemSize", slot * 100}});
  _ZYMDB_Memory memory{};
  EXPECT_EQ(zymdb_get_memory_by_slot(&memory, 6), ZYM_DB_STATUS_OK);
  EXPECT_EQ(memory.MemSize, 600u);
  EXPECT_EQ(zymdb_get_memory_by_id(&memory, 1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(memory.SlotNo, 5);
  const _zym_db_param_t size{3, 0, 1, 550};
  EXPECT_EQ(zymdb_get_memory_with_filter(&memory, "MemSize>?", &size), ZYM_DB_STATUS_OK);
  EXPECT_EQ(memory.SlotNo, 6);
}

TEST_F(MemoryModules, AFilterWithoutAQuestionMarkTakesNoHarmFromTheParameter) {
  given("Memory", {{"SlotNo", 5}});
  _ZYMDB_Memory memory{};
  const _zym_db_param_t unused{3, 0, 1, 7};
  EXPECT_EQ(zymdb_get_memory_with_filter(&memory, "SlotNo=5", &unused), ZYM_DB_STATUS_OK);
  EXPECT_EQ(memory.SlotNo, 5);
  EXPECT_EQ(zymdb_get_memory_with_filter(&memory, "SlotNo=5", nullptr), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_get_memory_with_filter(&memory, "SlotNo=?", nullptr), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(MemoryModules, AnEmptySlotIsAnErrorAndLeavesTheRecord) {
  _ZYMDB_Memory memory;
  std::memset(static_cast<void*>(&memory), 0x5A, sizeof memory);
  const _ZYMDB_Memory before = memory;
  EXPECT_EQ(zymdb_get_memory_by_slot(&memory, 9), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(std::memcmp(&memory, &before, sizeof memory), 0);
}

TEST_F(MemoryModules, HealthIsCutToEightBitsAndAnEmptySlotHasNone) {
  given("Memory", {{"SlotNo", 5}, {"MajorHealth", 0x1FF}, {"RepairStatus", 70000}});
  unsigned major = 9;
  unsigned minor = 9;
  unsigned repair = 9;
  EXPECT_EQ(zymdb_get_mpfa_health_by_slot(5, &major, &minor, &repair), ZYM_DB_STATUS_OK);
  EXPECT_EQ(major, 0xFFu);
  EXPECT_EQ(minor, 0u);
  EXPECT_EQ(repair, 70000u);
  EXPECT_EQ(zymdb_get_mpfa_health_by_slot(6, &major, &minor, &repair), ZYM_DB_STATUS_DONE);
}

TEST_F(MemoryModules, WithoutADatabaseEveryReadSaysSo) {
  lose_database();
  _ZYMDB_Memory_List list{};
  _ZYMDB_Memory memory{};
  unsigned health = 0;
  EXPECT_EQ(zymdb_get_memory_list(&list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_memory_by_slot(&memory, 1), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_mpfa_health_by_slot(1, &health, &health, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_mpfa_health_by_slot(1, &health, nullptr, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
}

}  // namespace
