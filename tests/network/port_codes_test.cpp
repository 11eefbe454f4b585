// The texts of the port codes, over every code that a field can hold.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "support/scripted_client.h"
#include "zymdb_network.h"

using scripted::Cell;
using scripted::Row;

namespace {

using Texts = std::map<unsigned, std::string>;

// Every code has the text listed for it, and `other` when none is.
template <class Shown>
void expect_texts(const Texts& texts, Shown shown, const char* other = "Unknown", unsigned last = 0xFFFF) {
  for (unsigned code = 0; code <= last; ++code) {
    const auto listed = texts.find(code);
    ASSERT_EQ(shown(code), listed != texts.end() ? listed->second : other) << code;
  }
}

class PortCodes : public scripted::ClientTest {
 protected:
  // A logical port with one column set, as the list shows it.
  _ZYMDB_PCI_LogicalPort logical_port(size_t column, Cell code) {
    Row row;
    row.resize(17, nullptr);
    row[1] = "3C:FD:FE:00:00:01";
    row[column] = std::move(code);
    answer({row});
    _ZYMDB_PCI_LogicalPort_List list{};
    EXPECT_EQ(zymdb_get_network_logical_port_list(1, &list), ZYM_DB_STATUS_OK);
    _ZYMDB_PCI_LogicalPort port = list.ports[0];
    std::free(list.ports);
    return port;
  }
  _ZYMDB_PCI_PhysicalPort physical_port(Cell layout) {
    answer({Row(1, 1)});
    Row row(nullptr, nullptr, nullptr, nullptr);
    row[0] = std::move(layout);
    answer({row});
    answer(std::vector<Row>{});
    _ZYMDB_PCI_PhysicalPort_List list{};
    EXPECT_EQ(zymdb_get_network_physical_port_list(1, &list), ZYM_DB_STATUS_OK);
    _ZYMDB_PCI_PhysicalPort port = list.ports[0];
    std::free(list.ports);
    return port;
  }
};

TEST_F(PortCodes, LinkTechnologies) {
  expect_texts({{2, "Ethernet"}, {3, "IB"}, {4, "FC"}}, [this](unsigned code) {
    const auto port = logical_port(5, std::to_string(code));
    EXPECT_EQ(port.LinkTechnology, code);
    return std::string(port.LinkTechnologyName);
  });
}

TEST_F(PortCodes, VirtualNicModes) {
  expect_texts(
      {{0, "Disabled"},
       {1, "Vot Virtual Fabric mode"},
       {2, "Switch Independent mode"},
       {3, "Unified Fabric Protocol Mode"}},
      [this](unsigned code) {
        const auto port = logical_port(6, std::to_string(code));
        EXPECT_EQ(port.vNICMode, code);
        return std::string(port.vNICModeName);
      },
      "Unknown", 0xFF);
}

TEST_F(PortCodes, ProtocolTypes) {
  expect_texts(
      {{6, "Ethernet"}, {56, "Fibre Channel"}, {199, "Infiniband"}},
      [this](unsigned code) {
        const auto port = logical_port(8, int64_t{code});
        EXPECT_EQ(port.ProtocolType, code);
        return std::string(port.ProtocolTypeName);
      },
      "Other");
}

TEST_F(PortCodes, ConnectionTypes) {
  expect_texts({{2, "Fibre Channel"},
                {3, "Parallel SCSI"},
                {4, "SSA"},
                {5, "IEEE1394"},
                {6, "RDMA"},
                {7, "iSCSI"},
                {8, "SAS"},
                {9, "ADT"}},
               [this](unsigned code) {
                 const auto port = logical_port(14, std::to_string(code));
                 EXPECT_EQ(port.ConnectionType, code);
                 return std::string(port.ConnectionTypeName);
               });
}

TEST_F(PortCodes, Roles) {
  expect_texts({{2, "Initiator"}, {3, "Target"}, {4, "Both Initiator and Target"}}, [this](unsigned code) {
    const auto port = logical_port(15, std::to_string(code));
    EXPECT_EQ(port.Role, code);
    return std::string(port.RoleName);
  });
}

TEST_F(PortCodes, ConnectorLayouts) {
  expect_texts({{1, "Reserved"},
                {2, "RS232"},
                {3, "BNC"},
                {4, "RJ11"},
                {5, "RJ45"},
                {6, "DB9"},
                {7, "Slot"},
                {8, "SCSI High Density"},
                {9, "SCSI Low Density"},
                {10, "Ribbon"},
                {11, "AUI"},
                {12, "Fiber SC"},
                {13, "Fiber ST"},
                {14, "FDDI-MIC"},
                {15, "Fiber-RTMJ"},
                {0x8000, "Corvex Mezzanine Connector"},
                {0x8001, "Corvex Mid-Mezzanine Connector"},
                {0x8002, "Tallis CFFh Connector"},
                {0x8003, "Tallis CIOv Connector"},
                {0x8004, "Onboard"},
                {0x8005, "SFP+"},
                {0x8006, "QSFP+"},
                {0x8007, "SFP28"},
                {0x8008, "QSFP28"},
                {0x8009, "QSFP56"},
                {0x800A, "SFP56"},
                {0x800C, "QSFP112"},
                {0x800D, "DSFP"}},
               [this](unsigned code) {
                 const auto port = physical_port(std::to_string(code));
                 EXPECT_EQ(port.ConnectorLayout, code);
                 return std::string(port.ConnectorLayoutName);
               });
}

TEST_F(PortCodes, StoredAsTextAreReadInTheBaseThatTheirPrefixTells) {
  EXPECT_STREQ(physical_port("0x8005").ConnectorLayoutName, "SFP+");
  EXPECT_STREQ(physical_port("0x800B").ConnectorLayoutName, "Unknown");
  EXPECT_EQ(physical_port("0x800B").ConnectorLayout, 0x800B);
  EXPECT_STREQ(physical_port("1").ConnectorLayoutName, "Reserved");
  EXPECT_STREQ(physical_port("017").ConnectorLayoutName, "Fiber-RTMJ");
  EXPECT_STREQ(physical_port("text").ConnectorLayoutName, "Unknown");
  EXPECT_STREQ(logical_port(5, "0x4").LinkTechnologyName, "FC");
  EXPECT_STREQ(logical_port(14, "010").ConnectionTypeName, "SAS");
  EXPECT_STREQ(logical_port(15, "0x3").RoleName, "Target");
}

TEST_F(PortCodes, AnUnreadableConnectorIsZeroAndUnknown) {
  const auto port = physical_port(nullptr);
  EXPECT_EQ(port.ConnectorLayout, 0);
  EXPECT_STREQ(port.ConnectorLayoutName, "Unknown");
}

}  // namespace
