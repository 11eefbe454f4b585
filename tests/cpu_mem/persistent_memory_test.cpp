// Persistent memory modules on the embedded database.
#include <gmock/gmock.h>

#include "support/inventory.h"
#include "zymdb_cpu_mem.h"

namespace {

class PersistentMemory : public InventoryTest {
 protected:
  static std::string health() {
    return rows("Memory", {"_id", "RemainingLife", "HealthStatus", "SecurityState", "InfoMask"});
  }
};

TEST_F(PersistentMemory, OnlyTheNonVolatileModulesOfOneMakerAreListed) {
  given("Memory", {{"Manufacturer", "Intel"}, {"TypeDetail", 0x1080}});
  given("Memory", {{"Manufacturer", "Intel"}, {"TypeDetail", 0x80}});
  given("Memory", {{"Manufacturer", "Micron"}, {"TypeDetail", 0x1080}});
  given("Memory", {{"Manufacturer", "intel"}, {"TypeDetail", 0x1080}});
  given("Memory", {{"Manufacturer", "Intel Corp"}, {"TypeDetail", 0x1080}});
  _ZYMDB_Memory_List list{};
  EXPECT_EQ(zymdb_get_AEP_memory_list(&list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(std::vector(list.ids, list.ids + list.count), testing::ElementsAre(1));
  std::free(list.ids);
}

TEST_F(PersistentMemory, EachModeWritesItsColumnsOfTheOneRow) {
  for (int i = 0; i < 2; ++i)
    given("Memory", {{"RemainingLife", 1}, {"HealthStatus", 1}, {"SecurityState", 1}, {"InfoMask", 1}});
  _ZYMDB_Memory memory{};
  memory._id = 2;
  memory.RemainingLife = 90;
  memory.HealthStatus = 2;
  memory.SecurityState = 3;
  memory.InfoMask = 4;
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory, 2), ZYM_DB_STATUS_OK);
  EXPECT_EQ(health(), "1|1|1|1|1\n2|1|1|3|4\n");
  memory.SecurityState = 99;
  memory.InfoMask = 5;
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory, 8), ZYM_DB_STATUS_OK);
  EXPECT_EQ(health(), "1|1|1|1|1\n2|90|2|3|5\n");
}

TEST_F(PersistentMemory, AnUnknownModeOrModuleWritesNothingAndIsNoFailure) {
  given("Memory", {{"RemainingLife", 1}, {"HealthStatus", 1}, {"SecurityState", 1}, {"InfoMask", 1}});
  _ZYMDB_Memory memory{};
  memory._id = 1;
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory, 5), ZYM_DB_STATUS_OK);
  memory._id = 7;
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory, 8), ZYM_DB_STATUS_OK);
  EXPECT_EQ(health(), "1|1|1|1|1\n");
}

TEST_F(PersistentMemory, AMissingRecordOutweighsAMissingDatabase) {
  lose_database();
  _ZYMDB_Memory memory{};
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(nullptr, 8), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_dcpmm_smart_info(&memory, 8), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
