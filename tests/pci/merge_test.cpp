// The life of a merged row on the embedded database.
#include <cstdlib>

#include "support/inventory.h"
#include "zymdb_pci.h"

namespace {

class Merge : public InventoryTest {
 protected:
  static constexpr uint32_t kCard = 0x10003;

  static void given_function(uint32_t funkey) {
    given("PCIs", {{"FunKey", funkey},
                   {"DevKey", kCard},
                   {"SegNo", 0},
                   {"BusNo", (funkey >> 16) & 0xFF},
                   {"DeviceNo", (funkey >> 8) & 0xFF},
                   {"FunctionNo", funkey & 0xFF},
                   {"NodeIndex", 0},
                   {"SlotNo", 3},
                   {"Location", 1}});
  }
  static void given_adapter(uint32_t funkey, const char* name, int aim = 1) {
    given("PCIAdapter", {{"PCIKey", kCard},
                         {"PCIFuncKey", funkey},
                         {"CardName", name},
                         {"ConnectorType", "0xB6"},
                         {"AIMSupported", aim}});
  }
  static void given_setting(uint32_t funkey, const char* id) {
    given("PCISetting", {{"PfaKey", funkey}, {"SettingID", id}});
  }
  static void remove(const char* table, const char* filter) {
    EXPECT_EQ(delete_db_record(get_dmdb_handle(), table, filter, nullptr, 0), ZYM_DB_STATUS_OK);
  }
  static std::string adapters() {
    return rows("PCIAdapter", {"PCIFuncKey", "CardName", "AIMSupported", "PCIKey", "SlotNo"});
  }
};

TEST_F(Merge, AFunctionKnownFromItsSettingsAloneGetsARow) {
  given_function(0x3B0001);
  given_adapter(0x3B0000, "Adapter");
  given_setting(0x3B0001, "A.x");
  given_setting(0x3B0001, "A.y");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(adapters(), "3866624|Adapter|1|65539|NULL\n3866625|Adapter 3B:00:01|3|65539|3\n");
}

// What an insert leaves out must not make the row, and with it its adapter, unreadable.
TEST_F(Merge, AMergedRowIsListed) {
  given_function(0x3B0001);
  given("PCIAdapter", {{"PCIKey", kCard},
                       {"PCIFuncKey", 0x3B0000},
                       {"NodeNo", 0},
                       {"SlotNo", 3},
                       {"Location", 1},
                       {"CardName", "a card"},
                       {"ConnectorType", "0xB6"},
                       {"AIMSupported", 1},
                       {"HealthStatus", 2}});
  given_setting(0x3B0001, "A.x");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  remove("PCIAdapter", "PCIFuncKey=3866624");
  _ZYMDB_PCI_Adapter_List list{};
  EXPECT_EQ(zymdb_get_pci_adapter_list(&list), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list.count, 1u);
  EXPECT_EQ(list.adapters[0].PCIKey, kCard);
  EXPECT_EQ(list.adapters[0].HealthStatus, 0);
  std::free(list.adapters);
}

TEST_F(Merge, ASecondMergeChangesNothing) {
  given_function(0x3B0001);
  given_adapter(0x3B0000, "a card");
  given_setting(0x3B0001, "A.x");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  const std::string merged = adapters();
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(adapters(), merged);
}

TEST_F(Merge, ACollectedRowIsNeverTouched) {
  given_function(0x3B0000);
  given_adapter(0x3B0000, "a card");
  given_setting(0x3B0000, "A.x");
  const std::string before = adapters();
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(adapters(), before);
}

TEST_F(Merge, ARowLivesAndDiesWithItsSettingsAndItsFunction) {
  given_function(0x3B0001);
  given_adapter(0x3B0000, "a card");
  given_setting(0x3B0001, "A.x");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  const std::string merged = "3866624|a card|1|65539|NULL\n3866625|a card|3|65539|3\n";
  const std::string demoted = "3866624|a card|1|65539|NULL\n3866625|a card|0|65539|3\n";
  EXPECT_EQ(adapters(), merged);

  remove("PCISetting", nullptr);
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(adapters(), demoted);

  given_setting(0x3B0001, "A.x");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(adapters(), merged);

  remove("PCISetting", nullptr);
  remove("PCIs", nullptr);
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(adapters(), "3866624|a card|1|65539|NULL\n");
}

TEST_F(Merge, WithoutSettingsEveryMergedRowIsRetired) {
  given_function(0x3B0001);
  given_adapter(0x3B0001, "there", 3);
  given_adapter(0x5E0001, "gone", 3);
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(adapters(), "3866625|there|0|65539|NULL\n");
}

TEST_F(Merge, AFunctionWhoseAdapterHasNoRowEndsItAndWhatWasMergedStays) {
  given_function(0x3B0001);
  given_adapter(0x3B0000, "a card");
  given_setting(0x3B0001, "A.x");
  given("PCIs", {{"FunKey", 0x5E0000}, {"DevKey", 0x10004}});
  given_setting(0x5E0000, "B.x");
  given_function(0x6F0000);
  given_setting(0x6F0000, "C.x");
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(adapters(), "3866624|a card|1|65539|NULL\n3866625|a card|3|65539|3\n");
}

TEST_F(Merge, WithoutADatabaseThereIsNothingToMerge) {
  lose_database();
  EXPECT_EQ(zymdb_merge_aim_ucm_pfa(), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
