#include "collect/sources/sysfs/sysfs_pci.h"

#include <gtest/gtest.h>

#include <string>

#include "collect/machines.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

// A sysfs tree: functions as folders below their bridges, named again in bus/pci/devices.
class SysfsTree : public testing::Test {
 protected:
  void function(const std::string& folder,
                std::initializer_list<std::pair<const char*, const char*>> attributes) {
    const fs::path real = folder_.path() / "devices" / folder;
    fs::create_directories(real);
    for (const auto& [name, content] : attributes) folder_.write("devices/" + folder + "/" + name, content);
    fs::create_directories(folder_.path() / "bus/pci/devices");
    fs::create_directory_symlink(real, folder_.path() / "bus/pci/devices" / real.filename());
  }

  std::string root() const { return folder_.path().string(); }

  TemporaryFolder folder_;
};

TEST_F(SysfsTree, TellsAFunctionFromItsAttributesWhereConfigIsAbsent) {
  function("pci0000:00/0000:00:01.0",
           {{"vendor", "0x8086\n"}, {"device", "0x3c02\n"}, {"class", "0x060400\n"}});
  function("pci0000:00/0000:00:01.0/0000:01:00.0", {{"vendor", "0x15b3\n"},
                                                    {"device", "0x101d\n"},
                                                    {"class", "0x020000\n"},
                                                    {"revision", "0x02\n"},
                                                    {"subsystem_vendor", "0x15b3\n"},
                                                    {"subsystem_device", "0x0043\n"},
                                                    {"current_link_speed", "8.0 GT/s PCIe\n"},
                                                    {"max_link_speed", "16.0 GT/s PCIe\n"},
                                                    {"current_link_width", "8\n"},
                                                    {"max_link_width", "16\n"},
                                                    {"numa_node", "1\n"}});
  const auto functions = read_sysfs_functions(root());
  ASSERT_TRUE(functions);
  ASSERT_EQ(functions->size(), 2U);
  const auto& card = functions->back();
  EXPECT_EQ(card.vendor, 0x15b3);
  EXPECT_EQ(card.class_code, 0x020000U);
  EXPECT_EQ(card.revision, 2);
  EXPECT_EQ(card.subsystem_device, 0x0043);
  EXPECT_EQ(card.parent, (PciAddress{0, 0, 1, 0}));
  EXPECT_EQ(card.link.generation, 3);
  EXPECT_EQ(card.link.max_generation, 4);
  EXPECT_EQ(card.link.width, 8);
  EXPECT_EQ(card.link.max_width, 16);
  EXPECT_EQ(card.numa_node, 1U);
  EXPECT_FALSE(functions->front().parent);
}

TEST_F(SysfsTree, LeavesUnknownWhatTheSystemDoesNotKnow) {
  function("pci0000:00/0000:00:02.0", {{"vendor", "0x1af4\n"},
                                       {"device", "0x1042\n"},
                                       {"current_link_speed", "Unknown\n"},
                                       {"current_link_width", "63\n"},
                                       {"max_link_width", "255\n"},
                                       {"subsystem_vendor", "0x0000\n"},
                                       {"subsystem_device", "0x0000\n"},
                                       {"numa_node", "-1\n"}});
  const auto functions = read_sysfs_functions(root());
  ASSERT_TRUE(functions);
  const auto& function = functions->front();
  EXPECT_FALSE(function.link.generation);
  EXPECT_FALSE(function.link.width);
  EXPECT_FALSE(function.link.max_width);
  EXPECT_FALSE(function.subsystem_vendor);
  EXPECT_FALSE(function.numa_node);
  EXPECT_FALSE(function.vpd);
}

TEST_F(SysfsTree, TellsALinkThatIsDownFromNoLink) {
  function("pci0000:00/0000:00:01.0", {{"vendor", "0x8086\n"},
                                       {"current_link_speed", "2.5 GT/s PCIe\n"},
                                       {"current_link_width", "0\n"},
                                       {"max_link_speed", "16.0 GT/s PCIe\n"},
                                       {"max_link_width", "16\n"}});
  function("pci0000:00/0000:00:02.0", {{"vendor", "0x8086\n"},
                                       {"current_link_speed", "Unknown\n"},
                                       {"current_link_width", "0\n"},
                                       {"max_link_speed", "Unknown\n"},
                                       {"max_link_width", "255\n"}});
  const auto functions = read_sysfs_functions(root());
  ASSERT_TRUE(functions);
  const PciLink& down = functions->front().link;
  EXPECT_EQ(down.width, 0);
  EXPECT_EQ(down.generation, 1);
  EXPECT_EQ(down.max_width, 16);
  EXPECT_EQ(down.max_generation, 4);
  const PciLink& none = functions->back().link;
  EXPECT_EQ(none.width, 0);
  EXPECT_EQ(none.generation, 0);
  EXPECT_EQ(none.max_width, 0);
  EXPECT_EQ(none.max_generation, 0);
}

TEST_F(SysfsTree, ConfigTellsMoreThanTheAttributes) {
  std::string config(64, '\0');
  config.replace(0, 4, "\x86\x80\x02\x3c");
  config[0x0a] = 0x04;
  config[0x0b] = 0x06;
  config[0x0e] = 0x01;
  config[0x19] = 0x05;
  function("pci0000:00/0000:00:01.0", {});
  folder_.write("devices/pci0000:00/0000:00:01.0/config", config);
  const auto functions = read_sysfs_functions(root());
  ASSERT_TRUE(functions);
  EXPECT_EQ(functions->front().secondary_bus, 5);
  EXPECT_TRUE(functions->front().is_bridge());
}

TEST_F(SysfsTree, NamesTheDriverAndTheIommuGroup) {
  function("pci0000:00/0000:00:01.0", {{"vendor", "0x15b3\n"}});
  function("pci0000:00/0000:00:02.0", {{"vendor", "0x15b3\n"}});
  function("pci0000:00/0000:00:03.0", {{"vendor", "0x15b3\n"}, {"driver", "no link\n"}});
  const fs::path device = folder_.path() / "devices/pci0000:00/0000:00:01.0";
  // In a recorded tree, where they lead to may be missing.
  fs::create_symlink("../../../bus/pci/drivers/mlx5_core", device / "driver");
  fs::create_symlink("../../../kernel/iommu_groups/27", device / "iommu_group");
  fs::create_symlink("/", folder_.path() / "devices/pci0000:00/0000:00:02.0/driver");
  fs::create_symlink("nothing", folder_.path() / "devices/pci0000:00/0000:00:02.0/iommu_group");
  const auto functions = read_sysfs_functions(root());
  ASSERT_TRUE(functions);
  ASSERT_EQ(functions->size(), 3U);
  EXPECT_EQ((*functions)[0].driver, "mlx5_core");
  EXPECT_EQ((*functions)[0].iommu_group, 27U);
  for (const auto& other : {(*functions)[1], (*functions)[2]}) {
    EXPECT_FALSE(other.driver);
    EXPECT_FALSE(other.iommu_group);
  }
}

TEST_F(SysfsTree, SaysWhetherThereAreVitalProductData) {
  function("pci0000:00/0000:00:01.0", {{"vendor", "0x15b3\n"}, {"vpd", "data"}});
  EXPECT_EQ(read_sysfs_functions(root())->front().vpd, "data");
}

TEST_F(SysfsTree, ReadsSlotsWithTheirAddresses) {
  folder_.write("bus/pci/slots/2/address", "0000:83:00\n");
  folder_.write("bus/pci/slots/1-1/address", "0001:82:00\n");
  folder_.write("bus/pci/slots/broken/address", "nowhere\n");
  const auto slots = read_sysfs_slots(root());
  ASSERT_EQ(slots.size(), 2U);
  EXPECT_EQ(slots[0].name, "1-1");
  EXPECT_EQ(slots[0].address, (PciAddress{1, 0x82, 0, 0}));
  EXPECT_EQ(slots[1].name, "2");
}

TEST_F(SysfsTree, TellsAFolderThatIsNoTreeFromAMachineWithoutPci) {
  EXPECT_FALSE(read_sysfs_functions(root()));
  EXPECT_TRUE(read_sysfs_slots(root()).empty());
  fs::create_directories(folder_.path() / "bus/pci/devices");
  ASSERT_TRUE(read_sysfs_functions(root()));
  EXPECT_TRUE(read_sysfs_functions(root())->empty());
}

}  // namespace
}  // namespace zymdb::collect
