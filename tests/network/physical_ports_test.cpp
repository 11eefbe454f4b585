// Physical ports on the embedded database.
#include <gmock/gmock.h>

#include "support/inventory.h"
#include "zymdb_network.h"

using testing::ElementsAre;

namespace {

class PhysicalPortInventory : public InventoryTest {
 protected:
  static void given_function(uint32_t pci_key, uint32_t funkey, int ports) {
    given("PCINetwork", {{"PCIKey", pci_key}, {"PCIFuncKey", funkey}, {"NumberofPhysicalPorts", ports}});
  }
  static void given_port(uint32_t funkey, int index, const char* layout = "0x8005") {
    given("PCIPhysicalPort", {{"PCIFuncKey", funkey},
                              {"Idx", index},
                              {"ConnectorLayout", layout},
                              {"NumberofLogicalPorts", 1},
                              {"PermanentAddress", "3C:FD:FE:00:00:01"}});
  }
  static void given_state(uint32_t funkey, int index, int status) {
    given("PCIPhysicalPortStat", {{"PCIFuncKey", funkey},
                                  {"Idx", index},
                                  {"LinkStatus", status},
                                  {"LinkSpeed", 25000},
                                  {"TxUtil", 1},
                                  {"RxUtil", 2}});
  }
  // "index:layout:status" of every port of the adapter.
  static std::vector<std::string> ports(unsigned pci_key) {
    _ZYMDB_PCI_PhysicalPort_List list{};
    EXPECT_EQ(zymdb_get_all_network_physical_port_list(pci_key, &list), ZYM_DB_STATUS_OK);
    std::vector<std::string> ports;
    for (uint32_t i = 0; i < list.count; ++i) {
      const _ZYMDB_PCI_PhysicalPort& port = list.ports[i];
      ports.push_back(std::to_string(port.Idx) + ":" + port.ConnectorLayoutName + ":" +
                      std::to_string(port.LinkStatus));
    }
    std::free(list.ports);
    return ports;
  }
};

TEST_F(PhysicalPortInventory, AnAdaptersPortsAreThoseOfItsFunctions) {
  for (uint32_t function : {0u, 1u}) {
    given_function(0x10003, 0x3B0000 + function, 1);
    given_port(0x3B0000 + function, static_cast<int>(function));
    given_state(0x3B0000 + function, static_cast<int>(function), static_cast<int>(function) + 1);
  }
  given_function(0x10004, 0x5E0000, 1);
  given_port(0x5E0000, 0);
  EXPECT_THAT(ports(0x10003), ElementsAre("0:SFP+:1", "1:SFP+:2"));
}

TEST_F(PhysicalPortInventory, AFunctionsPortsAreListedWithTheirState) {
  given_function(1, 100, 1);
  given_port(100, 3, "32774");
  given_state(100, 3, 1);
  _ZYMDB_PCI_PhysicalPort_List list{};
  ASSERT_EQ(zymdb_get_network_physical_port_list(100, &list), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list.count, 1u);
  const _ZYMDB_PCI_PhysicalPort port = list.ports[0];
  std::free(list.ports);
  EXPECT_EQ(port.ConnectorLayout, 0x8006);
  EXPECT_STREQ(port.ConnectorLayoutName, "QSFP+");
  EXPECT_EQ(port.Idx, 3);
  EXPECT_EQ(port.NumberofLogicalPorts, 1);
  EXPECT_STREQ(port.PermanentAddress, "3C:FD:FE:00:00:01");
  EXPECT_EQ(port.LinkStatus, 1u);
  EXPECT_EQ(port.LinkSpeed, 25000u);
  EXPECT_EQ(port.TxUtil, 1u);
  EXPECT_EQ(port.RxUtil, 2u);
}

TEST_F(PhysicalPortInventory, AnAdapterWhoseRowsSumUpToNothingHasNoList) {
  given_function(1, 100, 0);
  given("PCINetwork", {{"PCIKey", 1}, {"PCIFuncKey", 101}});
  given_port(100, 0);
  _ZYMDB_PCI_PhysicalPort_List list{5, nullptr};
  for (unsigned key : {1u, 2u}) {
    EXPECT_EQ(zymdb_get_all_network_physical_port_list(key, &list), ZYM_DB_STATUS_NOT_FOUND);
    EXPECT_EQ(list.count, 0u);
  }
}

TEST_F(PhysicalPortInventory, AFunctionWithTwoRowsIsListedOnce) {
  given_function(1, 100, 2);
  given_function(1, 100, 2);
  given_port(100, 0);
  given_port(100, 1);
  EXPECT_THAT(ports(1), ElementsAre("0:SFP+:0", "1:SFP+:0"));
}

TEST_F(PhysicalPortInventory, PortsWithoutStateRowsHaveStateZero) {
  given_function(1, 100, 1);
  given_port(100, 0);
  _ZYMDB_PCI_PhysicalPort_List list{};
  ASSERT_EQ(zymdb_get_network_physical_port_list(100, &list), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list.count, 1u);
  const _ZYMDB_PCI_PhysicalPort port = list.ports[0];
  std::free(list.ports);
  EXPECT_EQ(port.LinkStatus | port.LinkSpeed | port.TxUtil | port.RxUtil, 0u);
}

TEST_F(PhysicalPortInventory, ConnectorCodesAreStoredAsText) {
  given_function(1, 100, 4);
  for (const char* layout : {"0x8005", "0x800B", "1", "5"}) given_port(100, 0, layout);
  EXPECT_THAT(ports(1), ElementsAre("0:SFP+:0", "0:Unknown:0", "0:Reserved:0", "0:RJ45:0"));
}

TEST_F(PhysicalPortInventory, RowsBeyondTheFourteenthAreNotListed) {
  for (uint32_t function = 0; function < 20; ++function) {
    given_function(1, 100 + function, 1);
    given_port(100 + function, static_cast<int>(function));
    given_state(100 + function, static_cast<int>(function), 1);
  }
  const std::vector<std::string> listed = ports(1);
  ASSERT_EQ(listed.size(), 14u);
  EXPECT_EQ(listed.back(), "13:SFP+:1");
}

TEST_F(PhysicalPortInventory, WithoutADatabaseThereIsNoList) {
  lose_database();
  _ZYMDB_PCI_PhysicalPort_List list{};
  EXPECT_EQ(zymdb_get_network_physical_port_list(1, &list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_all_network_physical_port_list(1, &list), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
