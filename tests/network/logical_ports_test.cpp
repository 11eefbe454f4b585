// Port counts and logical ports on the embedded database.
#include <gmock/gmock.h>

#include "support/inventory.h"
#include "zymdb_network.h"

using testing::ElementsAre;

namespace {

class NetworkInventory : public InventoryTest {
 protected:
  static void given_port(uint32_t pci_key, uint32_t funkey, int physical_port, int index,
                         const char* address = "3C:FD:FE:00:00:01") {
    given("PCILogicalPort", {{"PCIKey", pci_key},
                             {"PCIFuncKey", funkey},
                             {"PhyIdx", physical_port},
                             {"Idx", index},
                             {"PermanentAddress", address},
                             {"vNICMode", "1"},
                             {"ProtocolType", 56}});
  }
  // Indices of the ports listed by `read`, which must list one at least.
  template <class Read>
  static std::vector<int> indices(Read read) {
    _ZYMDB_PCI_LogicalPort_List list{};
    EXPECT_EQ(read(&list), ZYM_DB_STATUS_OK);
    std::vector<int> indices;
    for (uint32_t i = 0; i < list.count; ++i) indices.push_back(list.ports[i].Idx);
    std::free(list.ports);
    return indices;
  }
  static auto of_function(unsigned funkey) {
    return [=](auto* list) { return zymdb_get_network_logical_port_list(funkey, list); };
  }
  static auto of_port(unsigned funkey, unsigned port) {
    return [=](auto* list) { return zymdb_get_network_logical_port_list2(funkey, port, list); };
  }
  static auto of_adapter(unsigned key) {
    return [=](auto* list) { return zymdb_get_all_network_logical_port_list(key, list); };
  }
};

TEST_F(NetworkInventory, AFunctionWithoutRowsHasNoPorts) {
  _ZYMDB_PCI_Network_Info info{9, 9};
  EXPECT_EQ(zymdb_get_network_info(1, &info), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info.NumberofPhysicalPorts, 0);
  EXPECT_EQ(info.MaxNumberofLogicalPorts, 0);
}

TEST_F(NetworkInventory, TheRowsOfAFunctionAreSummed) {
  given("PCINetwork", {{"PCIFuncKey", 1}, {"NumberofPhysicalPorts", 2}, {"MaxNumberofLogicalPorts", 16}});
  given("PCINetwork",
        {{"PCIFuncKey", 1}, {"NumberofPhysicalPorts", nullptr}, {"MaxNumberofLogicalPorts", 1}});
  given("PCINetwork", {{"PCIFuncKey", 2}, {"NumberofPhysicalPorts", 7}});
  _ZYMDB_PCI_Network_Info info{};
  EXPECT_EQ(zymdb_get_network_info(1, &info), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info.NumberofPhysicalPorts, 2);
  EXPECT_EQ(info.MaxNumberofLogicalPorts, 17);
}

TEST_F(NetworkInventory, LogicalPortsAreListedByFunctionPortAndAdapter) {
  given_port(0x10003, 0x3B0000, 0, 1);
  given_port(0x10003, 0x3B0000, 1, 2);
  given_port(0x10003, 0x3B0001, 0, 3);
  given_port(0x10004, 0x5E0000, 0, 4);
  EXPECT_THAT(indices(of_function(0x3B0000)), ElementsAre(1, 2));
  EXPECT_THAT(indices(of_port(0x3B0000, 1)), ElementsAre(2));
  EXPECT_THAT(indices(of_port(0x3B0000, 255)), ElementsAre(1, 2));
  EXPECT_THAT(indices(of_adapter(0x10003)), ElementsAre(1, 2, 3));
}

TEST_F(NetworkInventory, ACompleteLogicalPortIsReadAsItIsStored) {
  given("PCILogicalPort", {{"PCIKey", 1},
                           {"PCIFuncKey", 1},
                           {"PhyIdx", 2},
                           {"Idx", 3},
                           {"MaxDataSize", 9000},
                           {"PermanentAddress", std::string(80, 'p')},
                           {"NetworkAddresses", "02:00:00:00:00:01"},
                           {"LinkTechnology", "0x4"},
                           {"vNICMode", "1"},
                           {"MaxSpeed", "100000000000"},
                           {"ProtocolType", 56},
                           {"Ethernet", 1},
                           {"FCoEFC", 1},
                           {"iSCSI", 1},
                           {"FCoEPermanentAddress", std::string(20, 'f')},
                           {"FCoENetworkAddressess", "2000001B21000002"},
                           {"ConnectionType", "2"},
                           {"Role", "4"},
                           {"TargetRelativePortNumber", 6}});
  _ZYMDB_PCI_LogicalPort_List list{};
  ASSERT_EQ(zymdb_get_network_logical_port_list(1, &list), ZYM_DB_STATUS_OK);
  const _ZYMDB_PCI_LogicalPort port = list.ports[0];
  std::free(list.ports);
  EXPECT_EQ(port.MaxDataSize, 9000u);
  EXPECT_EQ(port.PermanentAddress, std::string(64, 'p'));
  EXPECT_STREQ(port.NetworkAddresses, "02:00:00:00:00:01");
  EXPECT_EQ(port.PhyIdx, 2);
  EXPECT_EQ(port.Idx, 3);
  EXPECT_EQ(port.MaxSpeed, 100'000'000'000u);
  EXPECT_EQ(port.Ethernet + port.FCoEFC + port.iSCSI, 3);
  EXPECT_EQ(port.FCoEPermanentAddress, std::string(16, 'f'));
  EXPECT_STREQ(port.FCoENetworkAddressess, "2000001B21000002");
  EXPECT_EQ(port.TargetRelativePortNumber, 6u);
  EXPECT_STREQ(port.LinkTechnologyName, "FC");
  EXPECT_STREQ(port.vNICModeName, "Vot Virtual Fabric mode");
  EXPECT_STREQ(port.ProtocolTypeName, "Fibre Channel");
  EXPECT_STREQ(port.ConnectionTypeName, "Fibre Channel");
  EXPECT_STREQ(port.RoleName, "Both Initiator and Target");
}

TEST_F(NetworkInventory, ALogicalPortNeedsAnAddressOfTwelveCharacters) {
  given_port(1, 1, 0, 11, "3CFDFE00000");
  given_port(1, 1, 0, 12, "3CFDFE000001");
  given("PCILogicalPort", {{"PCIKey", 1}, {"PCIFuncKey", 1}, {"Idx", 13}});
  EXPECT_THAT(indices(of_function(1)), ElementsAre(12));
  EXPECT_THAT(indices(of_adapter(1)), ElementsAre(12));
}

TEST_F(NetworkInventory, NoLogicalPortsAreAnAnswerOfTheirOwn) {
  given_port(1, 1, 0, 1, "too short");
  _ZYMDB_PCI_LogicalPort own{};
  for (unsigned key : {1u, 2u}) {
    _ZYMDB_PCI_LogicalPort_List list{5, &own};
    EXPECT_EQ(zymdb_get_network_logical_port_list(key, &list), ZYM_DB_STATUS_DONE);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.ports, nullptr);
  }
}

TEST_F(NetworkInventory, WithoutADatabaseThereAreNoLogicalPorts) {
  lose_database();
  _ZYMDB_PCI_LogicalPort_List list{};
  _ZYMDB_PCI_Network_Info info{};
  EXPECT_EQ(zymdb_get_network_logical_port_list(1, &list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_network_logical_port_list2(1, 0, &list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_all_network_logical_port_list(1, &list), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_network_info(1, &info), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
