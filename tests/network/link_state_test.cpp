// The state of a link on the embedded database.
#include <gtest/gtest.h>

#include "support/inventory.h"
#include "zymdb_network.h"

namespace {

class LinkStateInventory : public InventoryTest {
 protected:
  static void given_state(uint32_t funkey, int index) {
    given("PCIPhysicalPortStat", {{"PCIFuncKey", funkey}, {"Idx", index}, {"LinkStatus", 2}});
  }
  static std::string states() {
    return rows("PCIPhysicalPortStat", {"PCIFuncKey", "Idx", "LinkStatus", "LinkSpeed", "TxUtil", "RxUtil"});
  }

  static constexpr _ZYMDB_PCI_PortLinkState kUp{1, 25000, 30, 40, 77};
};

TEST_F(LinkStateInventory, IsWrittenToItsPortAlone) {
  given_state(12, 0);
  given_state(12, 1);
  given_state(112, 1);
  EXPECT_EQ(zymdb_set_network_physical_port_link_state(12, &kUp, 1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(states(),
            "12|0|2|NULL|NULL|NULL\n"
            "12|1|1|25000|30|40\n"
            "112|1|2|NULL|NULL|NULL\n");
  _ZYMDB_PCI_PortLinkState state{};
  EXPECT_EQ(zymdb_get_network_physical_port_link_state(12, &state, 1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(state.LinkStatus, 1u);
  EXPECT_EQ(state.LinkSpeed, 25000u);
  EXPECT_EQ(state.TxUtil, 30u);
  EXPECT_EQ(state.RxUtil, 40u);
  EXPECT_EQ(state.Idx, 1);
}

TEST_F(LinkStateInventory, OfTheOnlyPortNeedsNoIndex) {
  given_state(12, 5);
  given_state(13, 5);
  EXPECT_EQ(zymdb_set_network_physical_port_link_state(12, &kUp, -1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(states(),
            "12|5|1|25000|30|40\n"
            "13|5|2|NULL|NULL|NULL\n");
  _ZYMDB_PCI_PortLinkState state{};
  EXPECT_EQ(zymdb_get_network_physical_port_link_state(12, &state, -1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(state.Idx, 5);
}

TEST_F(LinkStateInventory, WithoutAnIndexIsAmbiguousForTwoPorts) {
  given_state(12, 0);
  given_state(12, 1);
  _ZYMDB_PCI_PortLinkState state{};
  testing::internal::CaptureStderr();
  EXPECT_EQ(zymdb_get_network_physical_port_link_state(12, &state, -1), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_NE(
      testing::internal::GetCapturedStderr().find("Find 2 physical ports, func_key = 12, port_index = -1\n"),
      std::string::npos);
  EXPECT_EQ(zymdb_set_network_physical_port_link_state(12, &kUp, -1), ZYM_DB_STATUS_NOT_FOUND);
}

TEST_F(LinkStateInventory, OfAPortWithoutARowIsNeitherReadNorWritten) {
  given_state(12, 0);
  _ZYMDB_PCI_PortLinkState state{};
  EXPECT_EQ(zymdb_get_network_physical_port_link_state(12, &state, 1), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(zymdb_set_network_physical_port_link_state(12, &kUp, 1), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(zymdb_set_network_physical_port_link_state(99, &kUp, -1), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(states(), "12|0|2|NULL|NULL|NULL\n");
}

TEST_F(LinkStateInventory, WithoutADatabaseIsNeitherReadNorWritten) {
  lose_database();
  _ZYMDB_PCI_PortLinkState state{};
  EXPECT_EQ(zymdb_get_network_physical_port_link_state(12, &state, -1), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_set_network_physical_port_link_state(12, &kUp, -1), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
