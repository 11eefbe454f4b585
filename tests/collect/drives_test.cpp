// Drives: collected into the inventory, collected again.
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
#include "collect/write/nvme_drives.h"
#include "support/inventory.h"
#include "zymdb_storage.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;

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

  // The example server with another drive beside the one in slot 8.
  std::string folder_with_second_function() const {
    std::string dump = read_file(ZYMDB_EXAMPLE_SERVER "/server.lspci");
    const size_t start = dump.find("e5:00.0 ");
    std::string second = dump.substr(start, dump.find("\n\n", start) + 2 - start);
    second.replace(0, 7, "e5:00.1");
    tree_.write("two.lspci", dump + (dump.ends_with("\n\n") ? "" : "\n") + second);
    return tree_.root() + "/two.lspci";
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
  const std::string before = written();
  const auto summary = collect();
  EXPECT_EQ(summary.changed(), 0u);
  EXPECT_EQ(summary.unchanged, 2u);
  EXPECT_EQ(written(), before);
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

TEST_F(DriveCollection, ADriveWhosePlaceIsNotKnownIsOnTheBoard) {
  tree_.nvme("0000:03:00.0", "nvme0", "S1");
  tree_.virtual_disk("0000:00:17.0", "vda", "V1");
  tree_.disk("0000:ca:00.0", "host0", "rport", "sda", "SEAGATE", true);
  EXPECT_EQ(collect().inserted, 3u);
  EXPECT_THAT(notices_, IsEmpty());
  EXPECT_EQ(
      rows("AimDisks", {"Location", "LocationId", "BayNo", "DriveTypeId", "SerialNo", "Model", "Presence"}),
      "Board 03:00.0|0|NULL|3|S1|SAMSUNG MZQL21T9HCJR-00A07|1\n"
      "Board ca:00.0|0|NULL|2|ZL200001|ST16000NM001G-2K|1\n"
      "Board 00:17.0|0|NULL|NULL|V1|NULL|1\n");
  EXPECT_EQ(collect().changed(), 0u);
  tree_.remove("class/nvme/nvme0");
  tree_.nvme("0000:67:00.0", "nvme1", "S2");
  tree_.remove("block/vda");
  const auto summary = collect();
  EXPECT_EQ(summary.removed, 2u);
  EXPECT_EQ(summary.inserted, 1u);
  EXPECT_EQ(rows("AimDisks", {"Location"}), "Board ca:00.0\nBay 1\n");
}

TEST_F(DriveCollection, ADriveThatGetsABayLeavesTheBoard) {
  sources_.smbios.clear();
  tree_.nvme("0000:67:00.0", "nvme0", "S1");
  collect();
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "Board 67:00.0|1\n");
  sources_.smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios";
  collect();
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "Bay 1|1\n");
  sources_.smbios.clear();
  EXPECT_EQ(collect().changed(), 0u) << "without SMBIOS it stays where it is known to be";
}

TEST_F(DriveCollection, ADriveThatIsKnownToBeOnTheBoardLeavesItsBay) {
  given("AimDisks", {{"Location", "Bay 9"},
                     {"LocationId", 2},
                     {"BayNo", 9},
                     {"DriveTypeId", 3},
                     {"PCIFuncKey", 0x30000},
                     {"Presence", 1}});
  tree_.nvme("0000:03:00.0", "nvme0", "S1");
  collect();
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "Bay 9|0\nBoard 03:00.0|1\n");
}

TEST_F(DriveCollection, SeveralDrivesInOneSlotAreListedEachOnItsOwn) {
  tree_.nvme("0000:e5:00.0", "nvme0", "S1");
  sources_.lspci = folder_with_second_function();
  tree_.nvme("0000:e5:00.1", "nvme1", "S2");
  collect();
  EXPECT_EQ(rows("AimDisks", {"Location", "LocationId", "BayNo", "SerialNo"}),
            "Slot 8 #2|1|NULL|S2\nSlot 8|1|8|S1\n");
  EXPECT_EQ(collect().changed(), 0u);
}

TEST_F(DriveCollection, ADriveOfAFunctionThatNobodyTellsOfIsANotice) {
  tree_.nvme("0000:7a:00.0", "nvme0", "S1");
  EXPECT_EQ(collect().changed(), 0u);
  EXPECT_THAT(notices_,
              testing::Contains("the drive nvme0 hangs on 0000:7a:00.0, which is not there: left out"));
}

TEST_F(DriveCollection, OnTheBoardDrivesStayWhereNothingTellsOfTheirClass) {
  tree_.nvme("0000:03:00.0", "nvme0", "S1");
  tree_.virtual_disk("0000:00:17.0", "vda", "V1");
  collect();
  fs::remove_all(fs::path(tree_.root()) / "block");
  EXPECT_EQ(collect().changed(), 0u);
  fs::remove_all(fs::path(tree_.root()) / "class/nvme");
  EXPECT_EQ(collect().changed(), 0u);
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
  write_nvme_drives({record}, {}, summary);
  EXPECT_EQ(rows("AimDisks", {"Warning", "Temperature", "RemainLife", "InfoMask"}), "4|41|97|15\n");
  EXPECT_EQ(summary.updated, 1u);
  record.drive.Temperature = 44;
  write_nvme_drives({record}, {}, summary);
  EXPECT_EQ(summary.unchanged, 1u);
}

TEST_F(DriveCollection, ADriveInASlotOfAHighNumberIsWrittenOnce) {
  NvmeRecord record{};
  record.drive.LocationId = 1;
  record.drive.BayNo = 300;
  record.drive.PCIFuncKey = 0x670000;
  record.drive.DriveTypeId = 3;
  std::strcpy(record.drive.SerialNo, "S1");
  TableSummary first;
  write_nvme_drives({record}, {}, first);
  EXPECT_EQ(first.inserted, 1u);
  TableSummary second;
  write_nvme_drives({record}, {}, second);
  EXPECT_EQ(second.changed(), 0u);
  const auto former = read_former_drives({get_dmdb_handle(), {}});
  EXPECT_EQ(former.nvme_places.at(FunctionKey(0x670000)), (DrivePlace{ZYMDB_LOCATION_SLOT, 300}));
  TableSummary third;
  write_nvme_drives({}, {}, third);
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "Slot 300|0\n");
}

// A machine with one drive, at a place of its own or on the board.
struct DriveMachine {
  Machine machine;
  DriveFindings findings;

  explicit DriveMachine(Location location) {
    MachineFunction function;
    function.pci.address = {0, 0x67, 0, 0};
    function.key = FunctionKey(0, 0x67, 0, 0);
    function.place_known = true;
    Slot bay;
    bay.location = location;
    bay.number = 1;
    if (location != ZYMDB_LOCATION_BOARD) function.slot = 0;
    machine.slots.push_back(bay);
    machine.functions = {function};
    Drive drive;
    drive.function = function.pci.address;
    drive.health = DriveHealth{4, 41, 97, {}};
    findings.nvme = {drive};
  }
};

TEST(NvmeRecords, HoldTheHealthThatADriveTells) {
  const DriveMachine drive(ZYMDB_LOCATION_BAY);
  const auto [records, rest, silent, notices] = drive_rows(drive.machine, drive.findings, {});
  ASSERT_THAT(records, SizeIs(1));
  EXPECT_TRUE(records[0].has_health);
  EXPECT_EQ(records[0].drive.Warning, 4);
  EXPECT_EQ(records[0].drive.Temperature, 41);
  EXPECT_EQ(records[0].drive.RemainLife, 97);
  EXPECT_EQ(records[0].drive.InfoMask, 15);
  EXPECT_EQ(records[0].drive.BayNo, 1);
  EXPECT_THAT(notices, IsEmpty());
  EXPECT_THAT(rest.rows, IsEmpty());
}

TEST(NvmeRecords, OnTheBoardHoldTheirHealthAndATemperatureThatHardlyChanges) {
  DriveMachine drive(ZYMDB_LOCATION_BOARD);
  const auto value = [&](const char* column, const FormerDrives& former = {}) {
    const auto content = drive_rows(drive.machine, drive.findings, former).rest;
    return content.value_of(content.rows.at(0).values, column);
  };
  EXPECT_EQ(value("Warning"), Value::number(4));
  EXPECT_EQ(value("RemainLife"), Value::number(97));
  EXPECT_EQ(value("InfoMask"), Value::number(15));
  EXPECT_EQ(value("Temperature"), Value::number(41));
  EXPECT_EQ(value("Temperature", {.nvme_places = {}, .temperatures = {{"Board 67:00.0", 44}}}),
            Value::number(44));
  EXPECT_EQ(value("Temperature", {.nvme_places = {}, .temperatures = {{"Board 67:00.0", 45}}}),
            Value::number(41));
}

}  // namespace
}  // namespace zymdb::collect
