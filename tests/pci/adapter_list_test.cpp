// The adapter list on the embedded database.
#include <gmock/gmock.h>

#include <cstring>

#include "support/inventory.h"
#include "zymdb_pci.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Adapters : public InventoryTest {
 protected:
  // A function of an adapter, with every column that the list needs.
  static void given_function(uint32_t pci_key, uint32_t funkey, const char* name, int location = 1,
                             const char* connector = nullptr, int aim = 0, int slot = 3) {
    given("PCIAdapter",
          {{"PCIKey", pci_key},
           {"PCIFuncKey", funkey},
           {"NodeNo", 0},
           {"SlotNo", slot},
           {"HealthStatus", 1},
           {"ConnectorType", connector != nullptr ? Cell(std::string(connector)) : Cell(nullptr)},
           {"CardName", name},
           {"AIMSupported", aim},
           {"Location", location}});
  }
  static std::vector<_ZYMDB_PCI_Adapter> adapters() {
    _ZYMDB_PCI_Adapter_List list{};
    EXPECT_EQ(zymdb_get_pci_adapter_list(&list), ZYM_DB_STATUS_OK);
    std::vector<_ZYMDB_PCI_Adapter> adapters(list.adapters, list.adapters + list.count);
    std::free(list.adapters);
    return adapters;
  }
  static std::vector<std::string> names() {
    std::vector<std::string> names;
    for (const _ZYMDB_PCI_Adapter& adapter : adapters()) names.push_back(adapter.CardName);
    return names;
  }
};

TEST_F(Adapters, AnEmptyTableGivesAnEmptyArrayToFree) {
  _ZYMDB_PCI_Adapter_List list{5, nullptr};
  EXPECT_EQ(zymdb_get_pci_adapter_list(&list), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list.count, 0u);
  EXPECT_NE(list.adapters, nullptr);
  std::free(list.adapters);
}

TEST_F(Adapters, FunctionsOfOneKeyAreOneAdapter) {
  for (uint32_t funkey : {0x3B0000u, 0x3B0001u, 0x3B0002u}) given_function(0x10003, funkey, "a network card");
  given_function(0x50000, 0x50000, "a controller", 0, nullptr, 0, 0);
  const auto list = adapters();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].PCIKey, 0x10003u);
  EXPECT_EQ(list[0].SlotNo, 3);
  EXPECT_EQ(list[0].NodeNo, 0);
  EXPECT_EQ(list[0].HealthStatus, 1);
  EXPECT_STREQ(list[0].CardName, "a network card");
  EXPECT_EQ(list[0].NcsiIdValid, 0);
  EXPECT_EQ(list[0].PackageID1, 0xFF);
  EXPECT_STREQ(list[1].CardName, "a controller");
  EXPECT_STREQ(list[1].ConnectorTypeName, "Onboard");
}

TEST_F(Adapters, AnAdapterWithKeyZeroIsNotListed) {
  given_function(0, 1, "no key");
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Adapters, DriveCarriersAreNotAdapters) {
  given_function(1, 1, "Hot Swap SSD");
  given_function(2, 2, "a 2.5in Hot Swap SSD carrier");
  given_function(3, 3, "Hot Swap HDD");
  EXPECT_THAT(names(), ElementsAre("Hot Swap HDD"));
}

TEST_F(Adapters, AnAdapterWithAnUnknownHealthIsNotListed) {
  given("PCIAdapter", {{"PCIKey", 1},
                       {"PCIFuncKey", 1},
                       {"NodeNo", 0},
                       {"SlotNo", 1},
                       {"CardName", "a card"},
                       {"AIMSupported", 0},
                       {"HealthStatus", nullptr},
                       {"Location", 1}});
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Adapters, AnAdapterThatWasInsertedWithoutAHealthHasStatusZero) {
  given("PCIAdapter", {{"PCIKey", 1},
                       {"PCIFuncKey", 1},
                       {"NodeNo", 0},
                       {"SlotNo", 1},
                       {"CardName", "a card"},
                       {"AIMSupported", 0},
                       {"Location", 1}});
  const auto list = adapters();
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].HealthStatus, 0);
}

TEST_F(Adapters, TheNameIsReadWholeUpTo128Characters) {
  given_function(1, 1, std::string(200, 'n').c_str());
  EXPECT_THAT(names(), ElementsAre(std::string(128, 'n')));
}

TEST_F(Adapters, ASlotsTypeNamesTheConnectorOfAnUnmanagedAdapter) {
  given_function(1, 1, "hexadecimal", 1, "0xB6");
  given_function(2, 2, "decimal without a name", 1, "183");
  given_function(3, 3, "none", 1);
  given_function(4, 4, "on the board", 0, "0xB6");
  const auto list = adapters();
  ASSERT_EQ(list.size(), 4u);
  EXPECT_STREQ(list[0].ConnectorTypeName, "PCI-E Gen 3 x16");
  EXPECT_STREQ(list[1].ConnectorTypeName, "Unknown");
  EXPECT_STREQ(list[2].ConnectorTypeName, "Unknown");
  EXPECT_EQ(list[3].ConnectorType, 0x8004);
  EXPECT_STREQ(list[3].ConnectorTypeName, "Onboard");
}

TEST_F(Adapters, AManagedAdapterWithoutACodeHasTheConnectorOfItsPlace) {
  given_function(1, 0x100, "stored", 1, "0x15", 1);
  given_function(2, 0x200, "in a slot", 1, nullptr, 1);
  given_function(3, 0x300, "on the board", 1, nullptr, 1);
  given_function(4, 0x400, "not in PCIs", 1, nullptr, 1);
  given("PCIs", {{"FunKey", 0x200}, {"Location", 1}});
  given("PCIs", {{"FunKey", 0x300}, {"Location", 0}});
  const auto list = adapters();
  ASSERT_EQ(list.size(), 4u);
  EXPECT_STREQ(list[0].ConnectorTypeName, "PCI-E x4");
  EXPECT_EQ(list[1].ConnectorType, 0x12);
  EXPECT_STREQ(list[1].ConnectorTypeName, "PCI-E");
  EXPECT_EQ(list[2].ConnectorType, 0x8004);
  EXPECT_EQ(list[3].ConnectorType, 0);
  EXPECT_STREQ(list[3].ConnectorTypeName, "Unknown");
}

TEST_F(Adapters, AMergedAdapterIsManagedWhenOneOfItsFunctionsIs) {
  given_function(1, 1, "merged", 1, nullptr, 3);
  given_function(2, 2, "managed by one", 1, nullptr, 3);
  given_function(2, 3, "managed by one", 1, nullptr, 3);
  const auto before = adapters();
  ASSERT_EQ(before.size(), 2u);
  EXPECT_EQ(before[0].AIMSupported, 3);
  EXPECT_EQ(before[1].AIMSupported, 3);
  // Whichever function the database picks for the group, the adapter is managed.
  given_function(2, 4, "managed by one", 1, nullptr, 1);
  const auto after = adapters();
  EXPECT_EQ(after[0].AIMSupported, 3);
  EXPECT_EQ(after[1].AIMSupported, 1);
}

TEST_F(Adapters, PackageIdsAreJoinedBySlotAndTheFirstEntryWins) {
  given_function(1, 1, "in slot 3", 1, nullptr, 0, 3);
  given_function(2, 2, "on the board", 0, nullptr, 0, 3);
  given("NCSIPackageID", {{"SlotNo", 3}, {"Location", 1}, {"PackageID1", 5}, {"PackageID2", 6}});
  given("NCSIPackageID", {{"SlotNo", 3}, {"Location", 1}, {"PackageID1", 7}, {"PackageID2", 8}});
  const auto list = adapters();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].NcsiIdValid, 1);
  EXPECT_EQ(list[0].PackageID1, 5);
  EXPECT_EQ(list[0].PackageID2, 6);
  EXPECT_EQ(list[1].NcsiIdValid, 0);
}

TEST_F(Adapters, TheTwoChipCardIsNamedAsAWhole) {
  for (uint32_t function = 0; function < 4; ++function) {
    given_function(1, 0x3B0000 + function, function < 2 ? "Broadcom 57416 OCP" : "Broadcom 5720 OCP");
    given("PCIs", {{"FunKey", 0x3B0000 + function}, {"DeviceId", 0x16D8}, {"SubDeviceId", 0x4163}});
  }
  for (uint32_t function = 0; function < 3; ++function)
    given_function(2, 0x5E0000 + function, "Broadcom 57416 OCP");
  EXPECT_THAT(names(), ElementsAre("Broadcom 57416 10GBASE-T 2-port + 5720 1GbE 2-port OCP Ethernet Adapter",
                                   "Broadcom 57416 OCP"));
}

TEST_F(Adapters, WithoutADatabaseThereIsNoList) {
  lose_database();
  _ZYMDB_PCI_Adapter_List list{};
  EXPECT_EQ(zymdb_get_pci_adapter_list(&list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pci_adapter_list(nullptr), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
