// Network ports of sysfs trees.
#include "collect/sources/sysfs/sysfs_network.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "collect/machines.h"
#include "collect/sources/sysfs/sysfs_ports.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Attributes = std::vector<std::pair<std::string, std::string>>;

constexpr char kCard[] = "pci0000:00/0000:00:01.0/0000:3b:00.0";
constexpr PciAddress kCardAddress{0, 0x3b, 0, 0};

class SysfsPorts : public testing::Test {
 protected:
  // A folder of a class in the folder of its device, and the link to it.
  void device(const std::string& parent, const std::string& kind, const std::string& name,
              const Attributes& attributes) {
    const fs::path real = folder_.path() / "devices" / parent / kind / name;
    fs::create_directories(real);
    for (const auto& [attribute, content] : attributes)
      folder_.write("devices/" + parent + "/" + kind + "/" + name + "/" + attribute, content + "\n");
    fs::create_directories(folder_.path() / "class" / kind);
    fs::create_directory_symlink(real, folder_.path() / "class" / kind / name);
  }

  static Attributes ethernet(const Attributes& more = {}) {
    Attributes attributes = {{"type", "1"}, {"address", "3c:fd:fe:00:00:01"}};
    attributes.insert(attributes.end(), more.begin(), more.end());
    return attributes;
  }

  std::vector<NetworkPort> ports(const EthtoolReader& ethtool = {}) const {
    return read_sysfs_ports(folder_.path().string(), ethtool).value();
  }
  std::vector<unsigned> indices() const {
    std::vector<unsigned> indices;
    for (const auto& port : ports()) indices.push_back(port.index);
    return indices;
  }

  TemporaryFolder folder_;
};

TEST_F(SysfsPorts, WithoutTheirFoldersAreNotTold) {
  EXPECT_FALSE(read_sysfs_ports(folder_.path().string(), {}));
  fs::create_directories(folder_.path() / "class/net");
  EXPECT_THAT(ports(), IsEmpty());
}

TEST_F(SysfsPorts, AnInterfaceTellsItsPort) {
  device(kCard, "net", "eth0",
         ethernet({{"addr_assign_type", "0"},
                   {"mtu", "9000"},
                   {"carrier", "1"},
                   {"speed", "25000"},
                   {"dev_port", "0"},
                   {"statistics/tx_bytes", "12345678901234"},
                   {"statistics/rx_bytes", "5"}}));
  ASSERT_THAT(ports(), SizeIs(1));
  const NetworkPort port = ports().front();
  EXPECT_EQ(port.function, kCardAddress);
  EXPECT_EQ(port.index, 0U);
  EXPECT_EQ(port.technology, LinkTechnology::kEthernet);
  EXPECT_EQ(port.permanent_address, "3C:FD:FE:00:00:01");
  EXPECT_EQ(port.current_address, "3C:FD:FE:00:00:01");
  EXPECT_EQ(port.mtu, 9000U);
  EXPECT_EQ(port.has_link, true);
  EXPECT_EQ(port.speed, 25'000U);
  ASSERT_TRUE(port.counters);
  EXPECT_EQ(port.counters->sent, 12'345'678'901'234U);
  EXPECT_EQ(port.counters->received, 5U);
  EXPECT_FALSE(port.max_speed || port.connector);
}

TEST_F(SysfsPorts, WhatAnInterfaceDoesNotTellIsUnknown) {
  device(kCard, "net", "eth0", {{"type", "1"}});
  ASSERT_THAT(ports(), SizeIs(1));
  const NetworkPort port = ports().front();
  EXPECT_FALSE(port.permanent_address || port.current_address || port.mtu || port.has_link.has_value());
  EXPECT_FALSE(port.speed || port.counters.has_value());
}

struct LinkCase {
  Attributes attributes;
  std::optional<bool> has_link;
  std::optional<uint32_t> speed;
};

TEST_F(SysfsPorts, LinksAreToldByTheCarrierAndWhereThatIsSilentByTheState) {
  const LinkCase cases[] = {
      {{{"carrier", "1"}, {"speed", "1000"}}, true, 1000},
      {{{"carrier", "0"}, {"speed", "-1"}}, false, {}},
      {{{"carrier", "0"}, {"speed", "4294967295"}}, false, {}},
      {{{"carrier", "1"}, {"speed", "65535"}}, true, {}},
      {{{"carrier", "1"}, {"speed", "0"}}, true, {}},
      {{{"operstate", "down"}}, false, {}},
      {{{"operstate", "unknown"}}, {}, {}},
      {{}, {}, {}},
  };
  for (const auto& [attributes, has_link, speed] : cases) {
    fs::remove_all(folder_.path() / "devices");
    fs::remove_all(folder_.path() / "class");
    device(kCard, "net", "eth0", ethernet(attributes));
    EXPECT_EQ(ports().at(0).has_link, has_link);
    EXPECT_EQ(ports().at(0).speed, speed);
  }
}

TEST_F(SysfsPorts, AnAddressThatSomebodySetIsNotThePermanentOne) {
  device(kCard, "net", "eth0", ethernet({{"addr_assign_type", "3"}}));
  EXPECT_EQ(ports().at(0).permanent_address, std::nullopt);
  EXPECT_EQ(ports().at(0).current_address, "3C:FD:FE:00:00:01");
  folder_.write(std::string("devices/") + kCard + "/net/eth0/bonding_slave/perm_hwaddr",
                "3c:fd:fe:00:00:99\n");
  EXPECT_EQ(ports().at(0).permanent_address, "3C:FD:FE:00:00:99");
}

TEST_F(SysfsPorts, TheDriverKnowsBetter) {
  device(kCard, "net", "eth0", ethernet({{"addr_assign_type", "3"}}));
  const auto port = ports([](const std::string& name) {
                      EXPECT_EQ(name, "eth0");
                      return EthtoolSettings{"3C:FD:FE:00:00:42", 100'000, Connector::kQsfp28};
                    }).at(0);
  EXPECT_EQ(port.permanent_address, "3C:FD:FE:00:00:42");
  EXPECT_EQ(port.max_speed, 100'000U);
  EXPECT_EQ(port.connector, Connector::kQsfp28);
}

TEST_F(SysfsPorts, OfOneFunctionHaveTheNumbersThatTheDriverGives) {
  device(kCard, "net", "eth0", ethernet({{"dev_port", "1"}}));
  device(kCard, "net", "eth1", ethernet({{"dev_port", "0"}}));
  device("pci0000:00/0000:00:01.0/0000:3b:00.1", "net", "eth2", ethernet({{"dev_port", "0"}}));
  EXPECT_THAT(indices(), ElementsAre(0, 1, 0));
}

TEST_F(SysfsPorts, BearTheNamesOfTheirInterfaces) {
  device(kCard, "net", "ens1f0", ethernet({{"dev_port", "0"}}));
  device(kCard, "net", "ens1f1", ethernet({{"dev_port", "1"}}));
  device(std::string(kCard) + "/host3", "fc_host", "host3", {{"port_name", "0x21000024ff123456"}});
  const std::string infiniband = "pci0000:00/0000:00:02.0/0000:5e:00.0";
  device(infiniband, "infiniband", "mlx5_0",
         {{"ports/1/state", "4: ACTIVE"}, {"ports/2/state", "4: ACTIVE"}});
  device(infiniband, "net", "ib0", {{"type", "32"}, {"dev_port", "0"}});
  device("pci0000:00/0000:00:03.0/host4", "fc_host", "host4", {{"port_name", "0x21000024ff123456"}});
  std::vector<std::string> names;
  for (const auto& port : ports()) names.push_back(port.interface.value_or("-"));
  EXPECT_THAT(names, testing::ElementsAre("host4", "ens1f0", "ens1f1", "ib0", "mlx5_0"))
      << "the system has no interface for the second InfiniBand port";
}

TEST_F(SysfsPorts, WithOneNumberForAllAreToldApartByTheirNames) {
  device(kCard, "net", "eth0", ethernet({{"dev_port", "0"}, {"phys_port_name", "p2"}}));
  device(kCard, "net", "eth1", ethernet({{"dev_port", "0"}, {"phys_port_name", "p0"}}));
  device(kCard, "net", "eth2", ethernet({{"dev_port", "0"}}));
  EXPECT_THAT(indices(), ElementsAre(0, 1, 2));
}

TEST_F(SysfsPorts, ANumberThatNoIndexHoldsIsNone) {
  device(kCard, "net", "eth0", ethernet({{"dev_port", "4294967295"}, {"phys_port_name", "p65536"}}));
  EXPECT_THAT(indices(), ElementsAre(0));
}

TEST_F(SysfsPorts, WhatHasNoPortOfItsOwnIsLeftOut) {
  device("virtual", "net", "bond0", ethernet());
  device(kCard, "net", "eth0_0", ethernet({{"phys_port_name", "pf0vf0"}}));
  device(kCard, "net", "eth0_1", ethernet({{"phys_port_name", "c1pf0sf1"}}));
  device(kCard, "net", "can0", {{"type", "280"}});
  device(kCard, "net", "odd", {{"address", "3c:fd:fe:00:00:01"}});
  EXPECT_THAT(ports(), IsEmpty());
}

TEST_F(SysfsPorts, AnInterfaceBelowABusOfItsOwnBelongsToTheNearestFunction) {
  device("pci0000:00/0000:00:03.0/virtio2", "net", "eth0", ethernet());
  EXPECT_EQ(ports().at(0).function, (PciAddress{0, 0, 3, 0}));
}

TEST_F(SysfsPorts, AnInfiniBandPortTakesAddressAndFrameSizeOfItsInterface) {
  device(kCard, "infiniband", "mlx4_0",
         {{"ports/1/state", "4: ACTIVE"},
          {"ports/1/rate", "56 Gb/sec (4X FDR)"},
          {"ports/1/gids/0", "fe80:0000:0000:0000:0002:c903:00fa:1234"},
          {"ports/1/counters/port_xmit_data", "100"},
          {"ports/1/counters/port_rcv_data", "200"},
          {"ports/2/state", "1: DOWN"},
          {"ports/2/rate", "10 Gb/sec (4X)"},
          {"ports/2/link_layer", "InfiniBand"}});
  const std::string address = "80:00:02:08:fe:80:00:00:00:00:00:00:00:02:c9:03:00:fa:12:34";
  device(kCard, "net", "ib0", {{"type", "32"}, {"address", address}, {"mtu", "2044"}});
  device(kCard, "net", "ib0.8001", {{"type", "32"}, {"address", address}, {"mtu", "999"}});
  const auto both = ports();
  ASSERT_THAT(both, SizeIs(2));
  EXPECT_EQ(both[0].technology, LinkTechnology::kInfiniBand);
  EXPECT_EQ(both[0].permanent_address, "00:02:C9:03:00:FA:12:34");
  EXPECT_EQ(both[0].current_address, "80:00:02:08:FE:80:00:00:00:00:00:00:00:02:C9:03:00:FA:12:34");
  EXPECT_EQ(both[0].mtu, 2044U);
  EXPECT_EQ(both[0].has_link, true);
  EXPECT_EQ(both[0].speed, 56'000U);
  EXPECT_EQ(both[0].connector, Connector::kQsfpPlus);
  EXPECT_EQ(both[0].counters->sent, 400U);
  EXPECT_EQ(both[0].counters->received, 800U);
  EXPECT_EQ(both[1].index, 1U);
  EXPECT_EQ(both[1].has_link, false);
  EXPECT_FALSE(both[1].speed || both[1].current_address || both[1].permanent_address);
}

TEST_F(SysfsPorts, AnEthernetPortWithRemoteMemoryAccessIsListedOnce) {
  device(kCard, "infiniband", "mlx5_0", {{"ports/1/link_layer", "Ethernet"}, {"ports/1/state", "4: ACTIVE"}});
  device(kCard, "net", "eth0", ethernet());
  ASSERT_THAT(ports(), SizeIs(1));
  EXPECT_EQ(ports()[0].technology, LinkTechnology::kEthernet);
}

TEST_F(SysfsPorts, AFibreChannelHostIsAPort) {
  device(std::string(kCard) + "/host3", "fc_host", "host3",
         {{"port_name", "0x21000024ff123456"},
          {"permanent_port_name", "0x21000024ff123457"},
          {"port_state", "Online"},
          {"speed", "16 Gbit"},
          {"supported_speeds", "8 Gbit, 32 Gbit, 16 Gbit"},
          {"statistics/tx_words", "0x10"},
          {"statistics/rx_words", "0x20"}});
  device(std::string(kCard) + "/host3", "scsi_host", "host3", {{"active_mode", "Initiator, Target"}});
  device(std::string(kCard) + "/host3/vport-3:0-1/host4", "fc_host", "host4", {{"port_name", "0x1"}});
  ASSERT_THAT(ports(), SizeIs(1));
  const NetworkPort port = ports().front();
  EXPECT_EQ(port.function, kCardAddress);
  EXPECT_EQ(port.technology, LinkTechnology::kFibreChannel);
  EXPECT_EQ(port.permanent_address, "21:00:00:24:FF:12:34:57");
  EXPECT_EQ(port.current_address, "21:00:00:24:FF:12:34:56");
  EXPECT_EQ(port.permanent_fibre_address, "21000024FF123457");
  EXPECT_EQ(port.current_fibre_address, "21000024FF123456");
  EXPECT_EQ(port.role, StorageRole::kBoth);
  EXPECT_EQ(port.has_link, true);
  EXPECT_EQ(port.speed, 16'000U);
  EXPECT_EQ(port.max_speed, 32'000U);
  EXPECT_EQ(port.connector, Connector::kSfp28);
  EXPECT_EQ(port.counters->sent, 64U);
  EXPECT_EQ(port.counters->received, 128U);
}

TEST_F(SysfsPorts, AFibreChannelHostWithoutALinkHasNoSpeedAndMayCountNothing) {
  device(std::string(kCard) + "/host3", "fc_host", "host3",
         {{"port_name", "0x21000024ff123456"},
          {"port_state", "Linkdown"},
          {"speed", "16 Gbit"},
          {"statistics/tx_words", "0xffffffffffffffff"},
          {"statistics/rx_words", "0xffffffffffffffff"}});
  const NetworkPort port = ports().at(0);
  EXPECT_EQ(port.has_link, false);
  EXPECT_FALSE(port.speed || port.counters.has_value() || port.role.has_value());
  EXPECT_EQ(port.permanent_address, port.current_address);
}

TEST_F(SysfsPorts, AFibreChannelHostOnAnEthernetPortIsItsStorageEndpoint) {
  device(kCard, "net", "eth0", ethernet());
  device(std::string(kCard) + "/host3", "fc_host", "host3", {{"port_name", "0x21000024ff123456"}});
  ASSERT_THAT(ports(), SizeIs(1));
  EXPECT_EQ(ports()[0].technology, LinkTechnology::kEthernet);
  EXPECT_EQ(ports()[0].current_fibre_address, "21000024FF123456");
}

TEST(PortTexts, AddressesAreReadFromTheirDigits) {
  EXPECT_EQ(address_of_digits("3c:fd:fe:00:00:01"), "3C:FD:FE:00:00:01");
  EXPECT_EQ(address_of_digits("0x21000024ff123456"), "21:00:00:24:FF:12:34:56");
  EXPECT_EQ(address_of_digits("0002:c903:00fa:1234"), "00:02:C9:03:00:FA:12:34");
  for (const char* text : {"", "0x", "00:00:00:00:00:00", "3c:fd:f", "zz:zz", "-1", "+1+1", " 1"})
    EXPECT_EQ(address_of_digits(text), std::nullopt) << text;
}

TEST(PortTexts, SpeedsAreReadInGigabits) {
  EXPECT_EQ(gigabits("16 Gbit"), 16'000U);
  EXPECT_EQ(gigabits(" 2.5 Gb/sec (1X SDR)"), 2500U);
  for (const char* text : {"", "unknown", "Not Negotiated", "16", "16 Mbit", "0 Gbit", "-4 Gbit", "nan Gbit",
                           "inf Gbit", "1e99 Gbit"})
    EXPECT_EQ(gigabits(text), std::nullopt) << text;
}

}  // namespace
}  // namespace zymdb::collect
