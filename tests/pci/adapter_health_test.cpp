// Adapter health and NC-SI package ids on the embedded database.
#include "support/inventory.h"
#include "zymdb_pci.h"

namespace {

class SlotTest : public InventoryTest {
 protected:
  static void given_adapter(int slot, int functions) {
    for (int function = 0; function < functions; ++function)
      given("PCIAdapter",
            {{"PCIKey", (1 << 16) + slot}, {"Location", 1}, {"SlotNo", slot}, {"HealthStatus", 1}});
  }
  static std::string health() { return rows("PCIAdapter", {"SlotNo", "HealthStatus"}); }
  static std::string packages() {
    return rows("NCSIPackageID", {"Location", "SlotNo", "Type", "PackageID1", "PackageID2"});
  }
  uint8_t value_ = 99;
};

TEST_F(SlotTest, HealthIsReadAsItWasWritten) {
  given_adapter(3, 2);
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 200), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_get_adapter_health_status(1, 3, &value_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(value_, 200);
}

TEST_F(SlotTest, HealthIsWrittenToEveryFunctionOfTheSlotAndToNoOther) {
  given_adapter(3, 2);
  given_adapter(4, 1);
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 2), ZYM_DB_STATUS_OK);
  EXPECT_EQ(health(), "3|2\n3|2\n4|1\n");
}

TEST_F(SlotTest, HealthOfAnEmptySlotIsNotFoundAndWritingItCreatesNothing) {
  EXPECT_EQ(zymdb_get_adapter_health_status(1, 3, &value_), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 2), ZYM_DB_STATUS_OK);
  EXPECT_EQ(health(), "");
}

TEST_F(SlotTest, AnAdaptersKeyIsReadBySlot) {
  given_adapter(3, 2);
  uint32_t key = 0;
  EXPECT_EQ(zymdb_get_adapter_pcikey_by_slotNo(1, 3, &key), ZYM_DB_STATUS_OK);
  EXPECT_EQ(key, 0x10003u);
  EXPECT_EQ(zymdb_get_adapter_pcikey_by_slotNo(1, 4, &key), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_adapter_pcikey_by_slotNo(0, 3, &key), ZYM_DB_STATUS_NO_DB);
}

TEST_F(SlotTest, PackageIdsOfANewSlotAreInsertedAndThenUpdatedWithoutTheirType) {
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(1, 3, 7, 4, 5), ZYM_DB_STATUS_OK);
  EXPECT_EQ(packages(), "1|3|7|4|5\n");
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(1, 3, 8, 6, 7), ZYM_DB_STATUS_OK);
  EXPECT_EQ(packages(), "1|3|7|6|7\n");
  uint8_t second = 0;
  EXPECT_EQ(zymdb_get_ncsi_id_by_slotNo(1, 3, &value_, &second), ZYM_DB_STATUS_OK);
  EXPECT_EQ(value_, 6);
  EXPECT_EQ(second, 7);
}

TEST_F(SlotTest, PackageIdsOfASlotWiderThanItsColumnAreInsertedEachTime) {
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(0x101, 0x10003, 7, 4, 5), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(0x101, 0x10003, 8, 6, 7), ZYM_DB_STATUS_OK);
  EXPECT_EQ(packages(), "1|3|7|4|5\n1|3|8|6|7\n");
}

TEST_F(SlotTest, PackageIdsOfASlotWithoutARowReadAsAMissingDatabase) {
  uint8_t second = 0;
  EXPECT_EQ(zymdb_get_ncsi_id_by_slotNo(1, 3, &value_, &second), ZYM_DB_STATUS_NO_DB);
}

TEST_F(SlotTest, ThePackageIdListHoldsEverySlotAndIsEmptyWithoutOne) {
  _ZYMDB_NCSIPackageID_List list{9, nullptr};
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list.count, 0);
  EXPECT_NE(list.entries, nullptr);
  std::free(list.entries);
  zymdb_set_ncsi_id_by_slotNo(1, 3, 0, 4, 5);
  zymdb_set_ncsi_id_by_slotNo(0, 1, 0, 6, 7);
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list.count, 2);
  EXPECT_EQ(list.entries[0].SlotNo, 3);
  EXPECT_EQ(list.entries[0].Location, 1);
  EXPECT_EQ(list.entries[1].PackageID2, 7);
  std::free(list.entries);
}

TEST_F(SlotTest, WithoutADatabaseEveryOperationSaysSo) {
  lose_database();
  uint32_t key = 0;
  _ZYMDB_NCSIPackageID_List list{};
  EXPECT_EQ(zymdb_get_adapter_health_status(1, 3, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_adapter_health_status(1, 3, &value_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 1), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_adapter_pcikey_by_slotNo(1, 3, &key), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_ncsi_id_by_slotNo(1, 3, &value_, &value_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(1, 3, 0, 1, 2), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
