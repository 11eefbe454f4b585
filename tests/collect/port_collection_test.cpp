// Network ports in the inventory: collected, read back through the library, collected again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>

#include "collect/collector.h"
#include "collect/machines.h"
#include "support/inventory.h"
#include "zymdb_network.h"

namespace zymdb::collect {
namespace {

// Functions of the example server.
constexpr unsigned kOnBoard = 0x040000;
constexpr unsigned kFastCard = 0x170000;
constexpr unsigned kFabric = 0x980001;
constexpr unsigned kFibreChannel = 0xCB0000;

class PortCollection : public InventoryTest {
 protected:
  PortCollection() {
    output_of("python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py '" + root() + "'");
    sources_.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci";
    sources_.smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios";
    sources_.sysfs = root();
    setenv("ZYMDB_COUNTERS", counters_.path().c_str(), 1);
  }
  ~PortCollection() override { unsetenv("ZYMDB_COUNTERS"); }

  std::string root() const { return files_.path().string(); }

  std::map<std::string, TableSummary> collect() {
    const Summary summary = collect_inventory(sources_);
    EXPECT_TRUE(summary.ok()) << summary.error;
    std::map<std::string, TableSummary> tables;
    for (const auto& table : summary.tables) tables.emplace(table.table, table);
    return tables;
  }

  // An attribute of the interface on the fast card's first port.
  void set_attribute(const std::string& name, const std::string& value) const {
    files_.write("devices/pci0000:16/0000:16:02.0/0000:17:00.0/net/ens1f0np0/" + name, value + "\n");
  }

  static _ZYMDB_PCI_PhysicalPort physical_port(unsigned function) {
    _ZYMDB_PCI_PhysicalPort_List list{};
    EXPECT_EQ(zymdb_get_network_physical_port_list(function, &list), ZYM_DB_STATUS_OK);
    EXPECT_EQ(list.count, 1U);
    const _ZYMDB_PCI_PhysicalPort port = list.count > 0 ? list.ports[0] : _ZYMDB_PCI_PhysicalPort{};
    std::free(list.ports);
    return port;
  }
  static _ZYMDB_PCI_LogicalPort logical_port(unsigned function) {
    _ZYMDB_PCI_LogicalPort_List list{};
    EXPECT_EQ(zymdb_get_network_logical_port_list(function, &list), ZYM_DB_STATUS_OK);
    EXPECT_EQ(list.count, 1U);
    const _ZYMDB_PCI_LogicalPort port = list.count > 0 ? list.ports[0] : _ZYMDB_PCI_LogicalPort{};
    std::free(list.ports);
    return port;
  }

  // What is kept of the counters.
  std::string sample_file() const { return std::filesystem::directory_iterator(counters_.path())->path(); }
  // Of the fast card's first port.
  void change_sample(const std::string& sample) const {
    const std::string text = std::regex_replace(read_file(sample_file()), std::regex("1507328 0 .*"), sample);
    std::ofstream(sample_file()) << text;
  }

  TemporaryFolder files_;
  TemporaryFolder counters_;
  Sources sources_;
};

TEST_F(PortCollection, AnEthernetPortIsReadBackWhole) {
  collect();
  _ZYMDB_PCI_Network_Info info{};
  EXPECT_EQ(zymdb_get_network_info(kFastCard, &info), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info.NumberofPhysicalPorts, 1);
  EXPECT_EQ(info.MaxNumberofLogicalPorts, 1);
  const auto physical = physical_port(kFastCard);
  EXPECT_STREQ(physical.PermanentAddress, "B8:CE:F6:00:20:00");
  EXPECT_EQ(physical.NumberofLogicalPorts, 1);
  EXPECT_EQ(physical.LinkStatus, 1U);
  EXPECT_EQ(physical.LinkSpeed, 100'000U);
  EXPECT_EQ(physical.TxUtil | physical.RxUtil, 0U);
  const auto logical = logical_port(kFastCard);
  EXPECT_STREQ(logical.PermanentAddress, "B8:CE:F6:00:20:00");
  EXPECT_EQ(logical.MaxDataSize, 9000U);
  EXPECT_STREQ(logical.LinkTechnologyName, "Ethernet");
  EXPECT_STREQ(logical.ProtocolTypeName, "Ethernet");
  EXPECT_EQ(logical.Ethernet, 1);
  EXPECT_EQ(logical.FCoEFC, 0);
}

TEST_F(PortCollection, OtherTechnologiesAreReadBackAsSuch) {
  collect();
  const auto fabric = logical_port(kFabric);
  EXPECT_STREQ(fabric.LinkTechnologyName, "IB");
  EXPECT_STREQ(fabric.ProtocolTypeName, "Infiniband");
  EXPECT_STREQ(fabric.ConnectionTypeName, "RDMA");
  EXPECT_STREQ(physical_port(kFabric).ConnectorLayoutName, "QSFP28");
  const auto storage = logical_port(kFibreChannel);
  EXPECT_STREQ(storage.LinkTechnologyName, "FC");
  EXPECT_STREQ(storage.ProtocolTypeName, "Fibre Channel");
  EXPECT_STREQ(storage.ConnectionTypeName, "Fibre Channel");
  EXPECT_STREQ(storage.RoleName, "Initiator");
  EXPECT_STREQ(storage.FCoENetworkAddressess, "21000024FF005000");
  EXPECT_EQ(storage.MaxSpeed, 32'000'000'000U);
  EXPECT_STREQ(physical_port(kFibreChannel).ConnectorLayoutName, "SFP28");
}

TEST_F(PortCollection, AnAdapterHasThePortsOfItsFunctions) {
  collect();
  _ZYMDB_PCI_PhysicalPort_List list{};
  ASSERT_EQ(zymdb_get_all_network_physical_port_list(0x040000, &list), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list.count, 2U);
  EXPECT_EQ(list.ports[0].LinkStatus, 1U);
  EXPECT_EQ(list.ports[1].LinkStatus, 2U);
  EXPECT_EQ(list.ports[1].LinkSpeed, 0U);
  std::free(list.ports);
}

TEST_F(PortCollection, ASecondRunChangesNothing) {
  const auto first = collect();
  EXPECT_EQ(first.at("PCINetwork").inserted, 12U);
  EXPECT_EQ(first.at("PCIPhysicalPort").inserted, 12U);
  EXPECT_EQ(first.at("PCIPhysicalPortStat").inserted, 12U);
  EXPECT_EQ(first.at("PCILogicalPort").inserted, 12U);
  for (const auto& [table, summary] : collect()) EXPECT_EQ(summary.changed(), 0U) << table;
}

TEST_F(PortCollection, AChangedLinkIsWrittenToItsPortAlone) {
  collect();
  set_attribute("carrier", "0");
  const auto second = collect();
  EXPECT_EQ(second.at("PCIPhysicalPortStat").updated, 1U);
  EXPECT_EQ(second.at("PCIPhysicalPort").changed(), 0U);
  EXPECT_EQ(physical_port(kFastCard).LinkStatus, 2U);
  EXPECT_EQ(physical_port(kFastCard).LinkSpeed, 0U);
  EXPECT_EQ(physical_port(kFastCard + 1).LinkStatus, 1U);
}

TEST_F(PortCollection, UtilisationIsWhatTheCountersCountedSinceTheFormerRun) {
  using std::chrono::milliseconds;
  using std::chrono::seconds;
  collect();
  // The former run is made to have been 1000 s ago.
  const auto then = std::chrono::system_clock::now().time_since_epoch() - seconds(1000);
  change_sample("1507328 0 0 0 " + std::to_string(std::chrono::duration_cast<milliseconds>(then).count()));
  // A link of 100 Gbit/s carries 12.5 TB in that time.
  set_attribute("statistics/tx_bytes", "6250000000000");
  set_attribute("statistics/rx_bytes", "1250000000000");
  const auto second = collect();
  EXPECT_EQ(second.at("PCIPhysicalPortStat").updated, 1U);
  EXPECT_NEAR(physical_port(kFastCard).TxUtil, 50, 1);
  EXPECT_NEAR(physical_port(kFastCard).RxUtil, 10, 1);
  // Idle since.
  collect();
  EXPECT_EQ(physical_port(kFastCard).TxUtil, 0U);
}

TEST_F(PortCollection, CountersThatStartAgainTellNoUtilisation) {
  set_attribute("statistics/tx_bytes", "6250000000000");
  collect();
  set_attribute("statistics/tx_bytes", "10");
  collect();
  EXPECT_EQ(physical_port(kFastCard).TxUtil, 0U);
  EXPECT_THAT(read_file(sample_file()), testing::ContainsRegex("(^|\n)1507328 0 10 0 "));
}

TEST_F(PortCollection, CountersThatMoveWriteNothingToTheInventory) {
  collect();
  collect();
  const std::string before = written();
  for (const char* sent : {"1000", "2000", "3000"}) {
    set_attribute("statistics/tx_bytes", sent);
    for (const auto& [table, summary] : collect()) EXPECT_EQ(summary.changed(), 0U) << table;
    EXPECT_THAT(read_file(sample_file()), testing::HasSubstr(std::string("1507328 0 ") + sent + " 0 "));
  }
  EXPECT_EQ(written(), before);
}

TEST_F(PortCollection, CountersAreKeptForEachInventory) {
  collect();
  zym_db_close(get_dmdb_handle());
  setenv("ZYMDB_INVENTORY", (folder() / "other.db").c_str(), 1);
  collect();
  const std::filesystem::directory_iterator kept(counters_.path());
  EXPECT_EQ(std::distance(begin(kept), end(kept)), 2);
}

TEST_F(PortCollection, WithoutAFolderForCountersThereIsNoUtilisation) {
  setenv("ZYMDB_COUNTERS", counters_.file("missing").c_str(), 1);
  collect();
  set_attribute("statistics/tx_bytes", "6250000000000000");
  collect();
  EXPECT_EQ(physical_port(kFastCard).TxUtil, 0U);
}

TEST_F(PortCollection, SamplesThatNobodyCanReadAreNone) {
  collect();
  for (const char* sample : {"", "1507328", "1507328 0 x 0 1", "\xFF\xFE", "-1 -1 -1 -1 -1",
                             "1507328 0 99999999999999999999 0 1"}) {
    std::ofstream(sample_file()) << sample;
    set_attribute("statistics/tx_bytes", "6250000000000000");
    collect();
    EXPECT_EQ(physical_port(kFastCard).TxUtil, 0U) << sample;
  }
  std::filesystem::remove(sample_file());
  std::filesystem::create_directory(counters_.path() / "x");
  collect();
}

TEST_F(PortCollection, RowsOfFormerCountersGo) {
  collect();
  given("PCIPhysicalPortCounter", {{"PCIFuncKey", kFastCard}, {"Idx", 0}, {"TxBytes", 10}});
  collect();
  EXPECT_EQ(rows("PCIPhysicalPortCounter", {"_id"}), "");
}

TEST_F(PortCollection, PortsThatAreGoneGo) {
  collect();
  std::filesystem::remove(files_.path() / "class/net/eno1");
  const auto second = collect();
  EXPECT_EQ(second.at("PCIPhysicalPort").removed, 1U);
  EXPECT_EQ(second.at("PCIPhysicalPortStat").removed, 1U);
  EXPECT_EQ(second.at("PCILogicalPort").removed, 1U);
  // The function is still there, with a number of ports that nobody knows.
  EXPECT_EQ(rows("PCINetwork", {"NumberofPhysicalPorts"}, "PCIFuncKey=262144"), "NULL\n");
  _ZYMDB_PCI_PhysicalPort_List list{};
  EXPECT_EQ(zymdb_get_network_physical_port_list(kOnBoard, &list), ZYM_DB_STATUS_NOT_FOUND);
}

TEST_F(PortCollection, ATreeThatShowsNoPortOfAnyNetworkFunctionTellsOfNone) {
  collect();
  const auto remove_ports = [this](const char* kind) {
    for (const auto& entry : std::filesystem::directory_iterator(files_.path() / "class" / kind))
      std::filesystem::remove(entry.path());
  };
  for (const char* kind : {"net", "infiniband", "fc_host"}) remove_ports(kind);
  files_.write("class/net/lo/type", "772\n");
  std::vector<std::string> notices;
  const auto summary = collect_inventory(
      sources_, {.notice = [&](std::string_view line) { notices.emplace_back(line); }, .progress = {}});
  EXPECT_TRUE(summary.ok()) << summary.error;
  for (const auto& table : summary.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_THAT(notices, testing::Contains("no ports of network functions in " + root() +
                                         "/class: they are left as they are"));
  EXPECT_EQ(physical_port(kFastCard).LinkStatus, 1U);

  sources_.allow_empty = true;
  EXPECT_EQ(collect().at("PCIPhysicalPort").removed, 12U);
}

TEST_F(PortCollection, RowsThatLostTheirOrderAreWrittenAnew) {
  collect();
  const auto card = [this](const std::string& name, const std::string& port) {
    const std::string folder = "devices/pci0000:16/0000:16:02.0/0000:17:00.0/net/" + name;
    files_.write(folder + "/type", "1\n");
    files_.write(folder + "/dev_port", port + "\n");
    std::filesystem::create_directory_symlink("../../" + folder, files_.path() / "class/net" / name);
  };
  card("third", "2");
  collect();
  card("second", "1");
  collect();
  const std::string order = "0\n1\n2\n";
  EXPECT_EQ(rows("PCIPhysicalPort", {"Idx"}, "PCIFuncKey=1507328"), order);
  EXPECT_EQ(rows("PCIPhysicalPortStat", {"Idx"}, "PCIFuncKey=1507328"), order);
}

TEST_F(PortCollection, PortsOfAManagedAdapterAreItsManagersToDescribe) {
  given("PCIAdapter", {{"PCIFuncKey", kFastCard}, {"PCIKey", 1}, {"AIMSupported", 1}});
  given("PCIPhysicalPort", {{"PCIFuncKey", kFastCard}, {"Idx", 7}});
  given("PCIPhysicalPort", {{"PCIFuncKey", 1}, {"Idx", 7}});
  const auto summary = collect();
  EXPECT_EQ(summary.at("PCIPhysicalPort").inserted, 11U);
  EXPECT_EQ(rows("PCIPhysicalPort", {"Idx"}, "PCIFuncKey=1507328"), "7\n");
  EXPECT_EQ(rows("PCIPhysicalPort", {"Idx"}, "PCIFuncKey=1"), "");
}

TEST_F(PortCollection, WithoutASourceThatTellsOfThemStayAsTheyAre) {
  collect();
  sources_.sysfs.clear();
  EXPECT_EQ(collect().count("PCIPhysicalPort"), 0U);
  EXPECT_EQ(physical_port(kFastCard).LinkStatus, 1U);
}

// The recorded machines' trees, unpacked; without recordings there is the example server above.
class RecordedPorts : public InventoryTest, public testing::WithParamInterface<RecordedFile> {};

TEST_P(RecordedPorts, AreTheInterfacesOfNetworkFunctions) {
  const TemporaryFolder folder;
  output_of("tar xf '" + GetParam().path + "' -C '" + folder.path().string() + "' 2>/dev/null; true");
  const std::string roots =
      output_of("find '" + folder.path().string() + "' -type d -name sys -path '*/sys'");
  for (const auto& root : lines_of(roots)) {
    if (!std::filesystem::exists(root + "/class/net")) continue;
    ASSERT_TRUE(collect_inventory({.lspci = {}, .smbios = {}, .sysfs = root}).ok());
    // What `find` sees: Ethernet interfaces in the folder of a PCI function of class 02.
    const std::string listed = output_of("cd '" + root +
                                         "'/class/net && for i in *; do d=$(readlink -f $i/device); "
                                         "grep -q '^0x02' \"$d/class\" 2>/dev/null && grep -qx 1 $i/type && "
                                         "cat $i/address; done | sort; true");
    std::string expected;
    for (const char c : listed) expected += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    std::vector<std::string> stored = lines_of(rows("PCIPhysicalPort", {"PermanentAddress"},
                                                    "PCIFuncKey IN (SELECT PCIFuncKey FROM PCILogicalPort "
                                                    "WHERE LinkTechnology='2')"));
    std::ranges::sort(stored);
    EXPECT_EQ(stored, lines_of(expected));
  }
}

INSTANTIATE_TEST_SUITE_P(Machines, RecordedPorts, testing::ValuesIn(recorded_sysfs_archives()),
                         [](const auto& machine) { return machine.param.name; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RecordedPorts);

}  // namespace
}  // namespace zymdb::collect
