// Drives: read from sysfs trees, collected into the inventory, collected again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>

#include "collect/collector.h"
#include "collect/drive_tree.h"
#include "collect/machines.h"
#include "collect/rows/drive_rows.h"
#include "collect/sources/sysfs/sysfs_drives.h"
#include "collect/write/nvme_drives.h"
#include "support/inventory.h"
#include "zymdb_storage.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
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

TEST_F(SysfsDrives, ThatCanBePulledOutAreNotTheServers) {
  tree_.disk("0000:00:17.0", "usb1/1-1/host2/target2:0:0", "2:0:0:0", "sda", "Stick", false);
  tree_.disk("0000:00:17.0", "ata1/host1/target1:0:0", "1:0:0:0", "sdb", "ATA", false);
  tree_.write("devices/pci0000:00/0000:00:17.0/ata1/host1/target1:0:0/1:0:0:0/block/sdb/removable", "1\n");
  EXPECT_THAT(drives(), IsEmpty());
}

class DriveCollection : public InventoryTest {
 protected:
  DriveCollection() {
    sources_.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci";
    sources_.smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios";
    sources_.sysfs = tree_.root();
  }

  TableSummary collect() {
    notices_.clear();
    const Summary summary = collect_inventory(
        sources_, {.notice = [&](std::string_view line) { notices_.emplace_back(line); }, .progress = {}});
    EXPECT_TRUE(summary.ok()) << summary.error;
    for (const auto& table : summary.tables)
      if (table.table == "AimDisks") return table;
    return {};
  }
  static std::string drives() {
    return rows("AimDisks", {"Location", "DriveTypeId", "MediaTypeId", "Presence", "SerialNo", "FwVersion",
                             "Manufacture", "PartNo", "Capacity", "PCIFuncKey"});
  }
  std::string files() const {
    std::string text;
    for (const char* name : {"inventory.db", "inventory.db-wal"}) {
      std::ifstream file(folder() / name, std::ios::binary);
      text.append(std::istreambuf_iterator<char>(file), {});
    }
    return text;
  }

  DriveTree tree_;
  Sources sources_;
  std::vector<std::string> notices_;
};

TEST_F(DriveCollection, DrivesAreWrittenToTheirBays) {
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  tree_.nvme("0000:e5:00.0", "nvme1", "S2");
  tree_.disk("0000:00:17.0", "ata3/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
  const auto summary = collect();
  EXPECT_EQ(summary.inserted, 3u);
  EXPECT_EQ(drives(),
            "Bay 3|1|0|1|ZL200001|SN02|Seagate|NULL|16.00TB|5888\n"
            "Bay 1|3|1|1|S1|GDC5302Q|Samsung|MZQL21T9HCJR-00A07|1.92TB|6750208\n"
            "Slot 8|3|1|1|S2|GDC5302Q|Samsung|MZQL21T9HCJR-00A07|1.92TB|15007744\n");
}

TEST_F(DriveCollection, AQuietMachineWritesNoByte) {
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  tree_.disk("0000:00:17.0", "ata3/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
  collect();
  const std::string before = files();
  const auto summary = collect();
  EXPECT_EQ(summary.changed(), 0u);
  EXPECT_EQ(summary.unchanged, 2u);
  EXPECT_EQ(files(), before);
}

TEST_F(DriveCollection, NewFirmwareAndNewDrivesAreUpdates) {
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  tree_.nvme("0000:68:00.0", "nvme1", "S2");
  collect();
  tree_.write("devices/pci0000:00/0000:67:00.0/nvme/nvme0/firmware_rev", "NEW\n");
  tree_.write("devices/pci0000:00/0000:68:00.0/nvme/nvme1/serial", "S3\n");
  const auto summary = collect();
  EXPECT_EQ(summary.updated, 2u);
  EXPECT_EQ(rows("AimDisks", {"Location", "SerialNo", "FwVersion"}), "Bay 1|S1|NEW\nBay 2|S3|GDC5302Q\n");
}

TEST_F(DriveCollection, NvmeDrivesThatAreGoneAreNotPresentAndDisksThatAreGoneAreRemoved) {
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  tree_.nvme("0000:69:00.0", "nvme1", "S2");
  tree_.disk("0000:00:17.0", "ata4/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
  tree_.disk("0000:00:17.0", "ata5/host3/target3:0:0", "3:0:0:0", "sdb", "ATA", true);
  collect();
  tree_.remove("class/nvme/nvme0");
  tree_.remove("block/sda");
  const auto summary = collect();
  EXPECT_EQ(summary.updated, 1u);
  EXPECT_EQ(summary.removed, 1u);
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "Bay 5|1\nBay 1|0\nBay 3|1\n");
  EXPECT_EQ(collect().changed(), 0u);
  tree_.nvme("0000:68:00.0", "nvme0", "S1");
  EXPECT_EQ(collect().inserted, 1u);
}

TEST_F(DriveCollection, FoldersWithNothingInThemTellOfNoDrives) {
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  tree_.disk("0000:00:17.0", "ata3/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
  collect();
  tree_.remove("class/nvme/nvme0");
  tree_.remove("block/sda");
  EXPECT_EQ(collect().changed(), 0u);
  EXPECT_THAT(notices_,
              IsSupersetOf({"no NVMe drives in " + tree_.root() + "/class/nvme: they are left as they are",
                            "no disks in " + tree_.root() + "/block: they are left as they are"}));
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "Bay 3|1\nBay 1|1\n");

  sources_.allow_empty = true;
  const auto summary = collect();
  EXPECT_EQ(summary.removed, 1u);
  EXPECT_EQ(summary.updated, 1u);
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "Bay 1|0\n");
}

TEST_F(DriveCollection, DrivesWhoseFolderIsNotThereStay) {
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  tree_.disk("0000:00:17.0", "ata3/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
  collect();
  fs::remove_all(fs::path(tree_.root()) / "block");
  EXPECT_EQ(collect().changed(), 0u);
  tree_.link("block", "devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0/block/sda", "sda");
  fs::remove_all(fs::path(tree_.root()) / "class/nvme");
  EXPECT_EQ(collect().changed(), 0u);
}

TEST_F(DriveCollection, TheLastDiskIsGoneWhereOtherBlockDevicesAreSeen) {
  tree_.disk("0000:00:17.0", "ata3/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
  tree_.write("block/loop0/removable", "0\n");
  collect();
  tree_.remove("block/sda");
  EXPECT_EQ(collect().removed, 1u);
}

TEST_F(DriveCollection, ADiskMakesRoomForANvmeDriveInItsBay) {
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  tree_.disk("0000:00:17.0", "ata1/host1/target1:0:0", "1:0:0:0", "sda", "ATA", true);
  tree_.disk("0000:00:17.0", "ata2/host2/target2:0:0", "2:0:0:0", "sdb", "ATA", false);
  collect();
  EXPECT_EQ(rows("AimDisks", {"Location", "DriveTypeId", "MediaTypeId"}),
            "Bay 2|1|0\nBay 3|1|1\nBay 1|3|1\n");
}

TEST_F(DriveCollection, AnNvmeDriveInNoBayIsToldAndLeftOut) {
  tree_.nvme("0000:03:00.0", "nvme0", "S1");
  EXPECT_EQ(collect().changed(), 0u);
  EXPECT_THAT(notices_, testing::Contains("the NVMe drive nvme0 is in no slot or bay: left out"));
}

TEST_F(DriveCollection, DrivesOfOtherReportersStay) {
  given("AimDisks", {{"Location", "M.2 Bay1"}, {"LocationId", 3}, {"DriveTypeId", 5}, {"Presence", 1}});
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  collect();
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "M.2 Bay1|1\nBay 1|1\n");
}

TEST_F(DriveCollection, HealthIsWrittenWhereTheDriveTellsIt) {
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  collect();
  EXPECT_EQ(rows("AimDisks", {"Warning", "Temperature", "RemainLife", "InfoMask"}), "0|0|0|0\n");

  NvmeRecord record{};
  record.drive.LocationId = 2;
  record.drive.BayNo = 1;
  std::strcpy(record.drive.SerialNo, "S1");
  record.drive.Warning = 4;
  record.drive.Temperature = 41;
  record.drive.RemainLife = 97;
  record.drive.InfoMask = 15;
  record.has_health = true;
  TableSummary summary;
  write_nvme_drives({record}, summary);
  EXPECT_EQ(rows("AimDisks", {"Warning", "Temperature", "RemainLife", "InfoMask"}), "4|41|97|15\n");
  EXPECT_EQ(summary.updated, 1u);
  record.drive.Temperature = 44;
  write_nvme_drives({record}, summary);
  EXPECT_EQ(summary.unchanged, 1u);
}

TEST(NvmeRecords, HoldTheHealthThatADriveTells) {
  Machine machine;
  machine.functions.emplace();
  MachineFunction function;
  function.pci.address = {0, 0x67, 0, 0};
  function.slot = 0;
  machine.functions->push_back(function);
  Slot bay;
  bay.location = Location::kBay;
  bay.number = 1;
  machine.slots.push_back(bay);
  Drive drive;
  drive.function = function.pci.address;
  drive.health = DriveHealth{4, 41, 97, {}};
  std::vector<std::string> notices;
  const auto records = nvme_records(machine, {drive}, notices);
  ASSERT_THAT(records, SizeIs(1));
  EXPECT_TRUE(records[0].has_health);
  EXPECT_EQ(records[0].drive.Warning, 4);
  EXPECT_EQ(records[0].drive.Temperature, 41);
  EXPECT_EQ(records[0].drive.RemainLife, 97);
  EXPECT_EQ(records[0].drive.InfoMask, 15);
  EXPECT_EQ(records[0].drive.BayNo, 1);
  EXPECT_THAT(notices, IsEmpty());
}

}  // namespace
}  // namespace zymdb::collect
