// Firmware of PCI functions in made-up sysfs trees, and its way into the inventory.
#include <gmock/gmock.h>

#include <filesystem>

#include "collect/collector.h"
#include "collect/machines.h"
#include "collect/rows/firmware_rows.h"
#include "collect/sources/sysfs/ethtool.h"
#include "collect/sources/sysfs/sysfs_firmware.h"
#include "support/inventory.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// "17:00.0 network 22.31.1014", with "-" for no version.
std::string text_of(const FirmwareComponent& component) {
  constexpr const char* kKinds[] = {"nvme", "network", "fabric", "video", "rom", "fibre"};
  return to_string(component.function) + " " + kKinds[static_cast<size_t>(component.kind)] + " " +
         component.version.value_or("-");
}

// A sysfs tree with functions and what the classes of devices say of them.
class SysfsTree {
 public:
  std::string root() const { return (folder_.path() / "sys").string(); }

  // The function's folder gets `file`.
  void add(const std::string& function, const std::string& file, std::string_view content) const {
    folder_.write("sys/devices/pci0000:00/" + function + "/" + file, content);
    link("bus/pci/devices/" + function, "devices/pci0000:00/" + function);
  }
  // A device of a class, in the function's folder.
  void add_device(const std::string& function, const std::string& device, const std::string& name,
                  const std::string& file, std::string_view content) const {
    add(function, device + "/" + name + "/" + file, content);
    link("class/" + device + "/" + name, "devices/pci0000:00/" + function + "/" + device + "/" + name);
  }
  std::string write(const std::string& name, std::string_view content) const {
    return folder_.write(name, content);
  }
  std::string path(const std::string& name) const { return (folder_.path() / name).string(); }

 private:
  void link(const std::string& name, const std::string& target) const {
    const fs::path place = fs::path(root()) / name;
    fs::create_directories(place.parent_path());
    if (!fs::is_symlink(place)) fs::create_symlink(fs::path(root()) / target, place);
  }

  TemporaryFolder folder_;
};

class SysfsFirmware : public testing::Test {
 protected:
  std::vector<std::string> read(const FirmwareDrivers& drivers = {}) const {
    std::vector<std::string> texts;
    for (const auto& component : read_sysfs_firmware(tree_.root(), drivers))
      texts.push_back(text_of(component));
    return texts;
  }
  SysfsTree tree_;
};

TEST_F(SysfsFirmware, DrivesAndRdmaDevicesTellTheirVersions) {
  tree_.add_device("0000:65:00.0", "nvme", "nvme0", "firmware_rev", "2B4QFXO7  \n");
  tree_.add_device("0000:17:00.0", "infiniband", "mlx5_0", "fw_ver", "20.31.1014\n");
  EXPECT_THAT(read(), UnorderedElementsAre("0000:65:00.0 nvme 2B4QFXO7", "0000:17:00.0 fabric 20.31.1014"));
}

TEST_F(SysfsFirmware, AVersionThatNobodyFilledInIsNone) {
  tree_.add_device("0000:65:00.0", "nvme", "nvme0", "firmware_rev", "        \n");
  tree_.add_device("0000:66:00.0", "nvme", "nvme1", "model", "a drive without the file\n");
  tree_.add("0000:67:00.0", "vbios_version", "N/A\n");
  EXPECT_THAT(read(), IsEmpty());
}

TEST_F(SysfsFirmware, OptionRomsArePresentWithoutAVersion) {
  tree_.add("0000:17:00.0", "rom", "");
  tree_.add("0000:17:00.1", "vendor", "0x15b3\n");
  EXPECT_THAT(read(), ElementsAre("0000:17:00.0 rom -"));
}

TEST_F(SysfsFirmware, DriversAreAskedAboutInterfacesOfFunctionsOnce) {
  for (const char* name : {"ens1", "ens1p1"}) tree_.add_device("0000:17:00.0", "net", name, "type", "1\n");
  fs::create_directories(tree_.root() + "/class/net/lo");
  std::vector<std::string> asked;
  const auto versions = read({.network =
                                  [&](const std::string& interface) {
                                    asked.push_back(interface);
                                    return std::optional<std::string>("22.31");
                                  },
                              .nvidia_folder = ""});
  EXPECT_THAT(versions, ElementsAre("0000:17:00.0 network 22.31"));
  EXPECT_THAT(asked, UnorderedElementsAre("ens1", "ens1p1"));
  EXPECT_THAT(read(), IsEmpty());
}

TEST_F(SysfsFirmware, GraphicsDriversKeepTheVideoBios) {
  tree_.add("0000:c1:00.0", "vbios_version", "113-D3430500-030\n");
  tree_.write("nvidia/0000:ca:00.0/information",
              "Model: \t\t NVIDIA A100\nIRQ:   \t\t 123\nVideo BIOS: \t 92.00.19.00.08\nBus Type: \t PCIe\n");
  tree_.write("nvidia/0000:cb:00.0/information", "Model: \t\t NVIDIA A100\n");
  tree_.write("nvidia/0000:cc:00.0/information", "Video BIOS: \t ??.??.??.??.??\n");
  EXPECT_THAT(read({.network = {}, .nvidia_folder = tree_.path("nvidia")}),
              ElementsAre("0000:c1:00.0 video 113-D3430500-030", "0000:ca:00.0 video 92.00.19.00.08"));
}

TEST_F(SysfsFirmware, FibreChannelHostsTellTheirVersions) {
  const auto host = [this](const char* function, const char* name, const char* file, const char* content) {
    tree_.add_device(function, "fc_host", name, "port_name", "0x21000024ff123456\n");
    tree_.add_device(function, "scsi_host", name, file, content);
  };
  host("0000:17:00.0", "host1", "fwrev", "14.0.390.1, sli-4:2:b\n");
  host("0000:18:00.0", "host2", "fw_version", "9.08.02 (d0d5)\n");
  host("0000:19:00.0", "host3", "fwrev", "\n");
  tree_.add_device("0000:1a:00.0", "fc_host", "host4", "symbolic_name",
                   "Emulex LPe32002-M2 FV12.8.340.8 DV12.8.0.5 HN:node OS:Linux\n");
  tree_.add_device("0000:1b:00.0", "fc_host", "host5", "symbolic_name",
                   "QLE2562 FW:v8.07.00 DVR:v10.00.00.12-k\n");
  tree_.add_device("0000:1c:00.0", "fc_host", "host6", "symbolic_name", "a host of no known maker\n");
  tree_.add_device("0000:1d:00.0", "scsi_host", "host7", "fw_version", "of a disk controller\n");
  EXPECT_THAT(read(), ElementsAre("0000:17:00.0 fibre 14.0.390.1", "0000:18:00.0 fibre 9.08.02",
                                  "0000:1a:00.0 fibre 12.8.340.8", "0000:1b:00.0 fibre 8.07.00"));
}

TEST_F(SysfsFirmware, NothingIsToldWithoutATree) {
  EXPECT_THAT(read({.network = {}, .nvidia_folder = "/nowhere"}), IsEmpty());
}

TEST(NetworkFirmware, OfAnInterfaceThatIsNotThereIsUnknown) {
  for (const char* name : {"", "lo", "no-such-if", "a-name-that-is-longer-than-any"})
    EXPECT_EQ(read_firmware_version(name), std::nullopt) << name;
}

class FirmwareCollection : public InventoryTest {
 protected:
  FirmwareCollection() {
    for (const char* function : {"0000:17:00.0", "0000:65:00.0"}) {
      tree_.add(function, "vendor", "0x15b3\n");
      tree_.add(function, "device", "0x101d\n");
      tree_.add(function, "class", "0x020000\n");
    }
    tree_.add("0000:65:00.0", "class", "0x010802\n");
    tree_.add_device("0000:65:00.0", "nvme", "nvme0", "firmware_rev", "VERSION1\n");
    tree_.write("pci.ids", "15b3  Mellanox Technologies, Inc.\n");
  }

  TableSummary collect(const char* table) const {
    const Summary summary = collect_inventory({.lspci = "",
                                               .smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios",
                                               .sysfs = tree_.root(),
                                               .pci_ids = tree_.path("pci.ids")});
    EXPECT_TRUE(summary.ok()) << summary.error;
    for (const auto& each : summary.tables)
      if (each.table == table) return each;
    ADD_FAILURE() << table;
    return {};
  }
  static std::string stored() {
    return rows("Firmwares", {"HardwareId", "HardwareTypeId", "SoftwareID", "FirmwareName", "VersionString",
                              "Manufacture", "Classification"});
  }

  SysfsTree tree_;
};

constexpr char kDriveRow[] = "6619136|3|OS:NVME|NVMe firmware|VERSION1|Mellanox|10\n";

TEST_F(FirmwareCollection, FillsTheTableOfComponents) {
  tree_.add("0000:17:00.0", "rom", "");
  EXPECT_EQ(collect("Firmwares").inserted, 2u);
  EXPECT_EQ(stored(), std::string(kDriveRow) + "1507328|3|OS:OPROM|Option ROM|NULL|Mellanox|32773\n");
}

TEST_F(FirmwareCollection, WritesNothingAgainAndFollowsAnUpdate) {
  EXPECT_EQ(collect("Firmwares").changed(), 1u);
  EXPECT_EQ(collect("Firmwares").changed(), 0u);
  tree_.add_device("0000:65:00.0", "nvme", "nvme0", "firmware_rev", "VERSION2\n");
  EXPECT_EQ(collect("Firmwares").updated, 1u);
  EXPECT_EQ(rows("Firmwares", {"VersionString"}), "VERSION2\n");
}

TEST_F(FirmwareCollection, LeavesTheRowsOfOthersAlone) {
  for (const char* software_id : {"15B3A2D4", "OSNVME"})
    given("Firmwares", {{"HardwareId", 0x650000}, {"HardwareTypeId", 3}, {"SoftwareID", software_id}});
  given("Firmwares", {{"HardwareId", 0x650000}, {"HardwareTypeId", 3}, {"SoftwareID", nullptr}});
  given("Firmwares", {{"HardwareId", 0x990000}, {"HardwareTypeId", 3}, {"SoftwareID", "OS:NVME"}});
  const TableSummary summary = collect("Firmwares");
  EXPECT_EQ(summary.inserted, 1u);
  EXPECT_EQ(summary.removed, 1u);
  EXPECT_EQ(rows("Firmwares", {"SoftwareID"}), "15B3A2D4\nOSNVME\nNULL\nOS:NVME\n");
}

TEST_F(FirmwareCollection, KeepsWhatDriversToldWhereNoneCanBeAsked) {
  given("Firmwares", {{"HardwareId", 0x170000}, {"HardwareTypeId", 3}, {"SoftwareID", "OS:NIC"}});
  EXPECT_EQ(collect("Firmwares").removed, 0u);
  EXPECT_EQ(rows("Firmwares", {"SoftwareID"}), "OS:NIC\nOS:NVME\n");
}

TEST_F(FirmwareCollection, WhereNothingTellsOfAnyKeepsThatOfFunctionsThatAreThere) {
  collect("Firmwares");
  given("Firmwares", {{"HardwareId", 0x990000}, {"HardwareTypeId", 3}, {"SoftwareID", "OS:NVME"}});
  fs::remove_all(fs::path(tree_.root()) / "class/nvme");
  EXPECT_EQ(collect("Firmwares").removed, 1u);
  EXPECT_EQ(stored(), kDriveRow);
}

TEST_F(FirmwareCollection, LongVersionsAreCutToTheirColumn) {
  tree_.add_device("0000:65:00.0", "nvme", "nvme0", "firmware_rev", std::string(40, '7') + "\n");
  collect("Firmwares");
  EXPECT_EQ(rows("Firmwares", {"VersionString"}), std::string(32, '7') + "\n");
  EXPECT_EQ(collect("Firmwares").changed(), 0u);
}

TEST_F(FirmwareCollection, TheSystemsFirmwareIsAnEmbeddedDevice) {
  given("EmbeddedDeviceFirmware", {{"SoftwareID", "TPM"}, {"DeviceName", "another writer's"}});
  EXPECT_EQ(collect("EmbeddedDeviceFirmware").inserted, 1u);
  EXPECT_EQ(collect("EmbeddedDeviceFirmware").changed(), 0u);
  EXPECT_EQ(rows("EmbeddedDeviceFirmware", {"SoftwareID", "DeviceIndex", "DeviceName", "Version"}),
            "TPM|NULL|another writer's|NULL\n"
            "SYSTEM|0|System firmware 1.20, 03/14/2024, Example Firmware|1\n");
}

// The names and versions of the rows.
std::vector<std::string> embedded_rows(const SmbiosFirmware& firmware) {
  std::vector<std::string> texts;
  for (const Row& row : embedded_firmware_rows({firmware}).rows)
    texts.push_back(*row.values[0].as_text() + " " + *row.values[2].as_text() + " " +
                    (row.values[3].is_null() ? "-" : std::to_string(*row.values[3].as_number())));
  return texts;
}

TEST(EmbeddedFirmwareRows, OfAControllerThatTellsBothReleases) {
  SmbiosFirmware firmware;
  firmware.controller_major_release = 1;
  EXPECT_THAT(embedded_rows(firmware), ElementsAre("SYSTEM System firmware -"));
  firmware.version = "2.1";
  firmware.controller_minor_release = 86;
  EXPECT_THAT(embedded_rows(firmware),
              ElementsAre("SYSTEM System firmware 2.1 -", "EC Embedded controller 1.86 1"));
}

TEST(EmbeddedFirmwareRows, WithoutTheStructureThereAreNone) {
  EXPECT_THAT(embedded_firmware_rows({}).rows, IsEmpty());
}

}  // namespace
}  // namespace zymdb::collect
