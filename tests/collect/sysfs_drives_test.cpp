// Drives read from sysfs trees.
#include "collect/sources/sysfs/sysfs_drives.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "collect/drive_tree.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

using testing::IsEmpty;
using testing::SizeIs;

class SysfsDrives : public testing::Test {
 protected:
  // NVMe drives, then disks.
  std::vector<Drive> drives(const HealthReader& health = {}) const {
    auto all = read_nvme_drives(tree_.root(), health).value_or(std::vector<Drive>{});
    for (auto& disk : read_disks(tree_.root()).value_or(std::vector<Drive>{})) all.push_back(disk);
    return all;
  }

  DriveTree tree_;
};

TEST_F(SysfsDrives, WithoutTheirFoldersAreNotTold) {
  EXPECT_FALSE(read_nvme_drives(tree_.root(), {}));
  EXPECT_FALSE(read_disks(tree_.root()));
  fs::create_directories(fs::path(tree_.root()) / "class/nvme");
  fs::create_directories(fs::path(tree_.root()) / "block");
  EXPECT_THAT(read_nvme_drives(tree_.root(), {}).value(), IsEmpty());
  EXPECT_THAT(read_disks(tree_.root()).value(), IsEmpty());
}

TEST_F(SysfsDrives, OfNvmeTellWhoTheyAre) {
  tree_.nvme("0000:67:00.0", "nvme0", "S64HNE0T100001");
  const auto found = drives();
  ASSERT_THAT(found, SizeIs(1));
  const Drive& drive = found[0];
  EXPECT_EQ(drive.bus, DriveBus::kNvme);
  EXPECT_EQ(drive.name, "nvme0");
  EXPECT_EQ(to_string(drive.function), "0000:67:00.0");
  EXPECT_EQ(drive.model, "SAMSUNG MZQL21T9HCJR-00A07");
  EXPECT_EQ(drive.serial, "S64HNE0T100001");
  EXPECT_EQ(drive.firmware, "GDC5302Q");
  EXPECT_EQ(drive.capacity, 1'920'383'410'176u);
  EXPECT_FALSE(drive.health);
}

TEST_F(SysfsDrives, AreAskedForTheirHealth) {
  tree_.nvme("0000:67:00.0", "nvme0", "A");
  tree_.nvme("0000:68:00.0", "nvme1", "B");
  const auto found = drives([](const std::string& name) {
    return name == "nvme0" ? std::optional(DriveHealth{4, 41, 97, 7'000'000'000'000}) : std::nullopt;
  });
  ASSERT_THAT(found, SizeIs(2));
  ASSERT_TRUE(found[0].health);
  EXPECT_EQ(found[0].health->temperature, 41);
  EXPECT_EQ(found[0].capacity, 7'000'000'000'000u);
  EXPECT_FALSE(found[1].health);
}

TEST_F(SysfsDrives, AcrossANetworkAreNotTheServers) {
  tree_.write("devices/virtual/nvme-fabrics/ctl/nvme3/model", "remote\n");
  fs::create_directories(fs::path(tree_.root()) / "class/nvme");
  fs::create_directory_symlink(fs::path(tree_.root()) / "devices/virtual/nvme-fabrics/ctl/nvme3",
                               fs::path(tree_.root()) / "class/nvme/nvme3");
  EXPECT_THAT(drives(), IsEmpty());
}

TEST_F(SysfsDrives, OfSataAndSasAreDisks) {
  tree_.disk("0000:00:17.0", "ata3/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
  tree_.disk("0000:ca:00.0", "host0/target0:2:5", "0:2:5:0", "sdb", "SEAGATE", false);
  const auto found = drives();
  ASSERT_THAT(found, SizeIs(2));
  EXPECT_EQ(found[0].bus, DriveBus::kSata);
  EXPECT_EQ(found[0].port, 3);
  EXPECT_TRUE(found[0].rotates);
  EXPECT_FALSE(found[0].maker);
  EXPECT_EQ(found[0].serial, "ZL200001");
  EXPECT_EQ(found[0].unique_id, "naa.5000c500c3000001");
  EXPECT_EQ(found[0].capacity, 16'000'900'661'248u);
  EXPECT_EQ(found[1].bus, DriveBus::kSas);
  EXPECT_EQ(found[1].port, 5);
  EXPECT_FALSE(found[1].rotates);
  EXPECT_EQ(found[1].maker, "SEAGATE");
}

TEST_F(SysfsDrives, AreFoundWhereARecordingLacksTheLinkToTheirDevice) {
  tree_.disk("0000:00:17.0", "ata3/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
  tree_.remove("devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0/block/sda/device");
  const auto found = drives();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(to_string(found[0].function), "0000:00:17.0");
  EXPECT_EQ(found[0].port, 3);
  EXPECT_EQ(found[0].serial, "ZL200001");
}

TEST_F(SysfsDrives, OfVirtualMachinesAreDisks) {
  tree_.virtual_disk("0000:00:04.0", "vda", "root-disk");
  const auto found = drives();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].bus, DriveBus::kVirtio);
  EXPECT_EQ(to_string(found[0].function), "0000:00:04.0");
  EXPECT_EQ(found[0].serial, "root-disk");
  EXPECT_EQ(found[0].capacity, 21'474'836'480u);
  EXPECT_FALSE(found[0].model);
  EXPECT_FALSE(found[0].port);
}

TEST_F(SysfsDrives, BehindAVirtualControllerHaveNoPort) {
  tree_.disk("0000:02:00.0", "virtio6/host0/target0:0:1", "0:0:1:0", "sda", "QEMU", false);
  const auto found = drives();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].bus, DriveBus::kVirtio);
  EXPECT_FALSE(found[0].port);
  EXPECT_EQ(found[0].model, "ST16000NM001G-2K");
}

TEST_F(SysfsDrives, AreNoVolumesOfRaidControllers) {
  const char* const function = "0000:ca:00.0";
  const std::string folder = "devices/pci0000:00/" + std::string(function) + "/host0/target0:1:0/0:1:0:0";
  tree_.disk(function, "host0/target0:1:0", "0:1:0:0", "sda", "HPE", false);
  EXPECT_THAT(drives(), SizeIs(1));
  for (const char* level : {"RAID 1(+0)\n", "RAID 5\n"}) {
    tree_.write(folder + "/raid_level", level);
    EXPECT_THAT(drives(), IsEmpty()) << level;
  }
  tree_.write(folder + "/raid_level", "N/A\n");
  EXPECT_THAT(drives(), SizeIs(1)) << "a disk that the controller hands through";
  for (const char* model :
       {"LOGICAL VOLUME\n", "Virtual Disk\n", "PERC H730 Mini\n", "MR9361-8i\n", "RAID 930-8i-2GB\n"}) {
    tree_.write(folder + "/model", model);
    EXPECT_THAT(drives(), IsEmpty()) << model;
  }
  tree_.write(folder + "/model", "MRAID Drive Inc\n");
  EXPECT_THAT(drives(), SizeIs(1));
  tree_.write(folder + "/raid_devices/0:1:0:0/level", "raid1\n");
  EXPECT_THAT(drives(), IsEmpty()) << "the kernel's own class of volumes";
}

TEST_F(SysfsDrives, OfMegaraidAreThoseOfItsFirstTwoChannels) {
  tree_.driver("0000:ca:00.0", "megaraid_sas");
  tree_.disk("0000:ca:00.0", "host0/target0:0:5", "0:0:5:0", "sda", "SEAGATE", false);
  tree_.disk("0000:ca:00.0", "host0/target0:2:0", "0:2:0:0", "sdb", "LSI", false);
  tree_.disk("0000:ca:00.0", "host0/target0:3:1", "0:3:1:0", "sdc", "LSI", false);
  const auto found = drives();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_EQ(found[0].name, "sda");
}

TEST_F(SysfsDrives, OfControllersThatShowOnlyVolumesAreNone) {
  tree_.disk("0000:ca:00.0", "host0/target0:0:5", "0:0:5:0", "sda", "AMCC", false);
  tree_.write("devices/pci0000:00/0000:ca:00.0/host0/scsi_host/host0/proc_name", "3w-9xxx\n");
  EXPECT_THAT(drives(), IsEmpty());
}

TEST_F(SysfsDrives, AreNotMadeOfOthers) {
  tree_.write("block/md127/size", "1024\n");
  tree_.write("block/dm-0/size", "1024\n");
  EXPECT_THAT(drives(), IsEmpty());
}

TEST_F(SysfsDrives, ThatCanBePulledOutAreNotTheServers) {
  tree_.disk("0000:00:17.0", "usb1/1-1/host2/target2:0:0", "2:0:0:0", "sda", "Stick", false);
  tree_.disk("0000:00:17.0", "ata1/host1/target1:0:0", "1:0:0:0", "sdb", "ATA", false);
  tree_.write("devices/pci0000:00/0000:00:17.0/ata1/host1/target1:0:0/1:0:0:0/block/sdb/removable", "1\n");
  EXPECT_THAT(drives(), IsEmpty());
}

}  // namespace
}  // namespace zymdb::collect
