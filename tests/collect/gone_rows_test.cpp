// Rows whose device is gone, or has made room for another, go with it, whatever else a collection could read.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "collect/collector_fixture.h"
#include "zymdb_pci.h"

namespace zymdb::collect {
namespace {

constexpr uint32_t kThere = 0x00170000;
constexpr uint32_t kGone = 0x007A0000;
constexpr uint32_t kManagedAndGone = 0x007B0000;

// The tables with a row for each network port, and what is known of its function.
constexpr const char* kPortTables[] = {"PCINetwork", "PCILogicalPort", "PCIPhysicalPort",
                                       "PCIPhysicalPortStat", "PCIPhysicalPortCounter"};

class GoneRows : public CollectorTest {
 protected:
  void given_ports() const {
    for (const char* table : kPortTables) {
      for (const uint32_t function : {kThere, kGone, kManagedAndGone}) {
        const std::string name = table;
        if (name == "PCINetwork")
          given(table, {{"PCIFuncKey", function}, {"NumberofPhysicalPorts", 1}});
        else
          given(table, {{"PCIFuncKey", function}, {"Idx", 0}});
      }
    }
    given("PCIAdapter", {{"PCIKey", 9}, {"PCIFuncKey", kManagedAndGone}, {"AIMSupported", 1}});
  }

  static std::string functions_of(const char* table, const char* column = "PCIFuncKey") {
    return rows(table, {column});
  }

  std::string with_another_card() const { return dump_with("b1:00.0", "de 10 35 22", "de 10 b8 1e"); }
};

const std::string kCard = "FunKey=11599872";  // b1:00.0, in slot 5
const std::string kCardAdapter = "PCIFuncKey=11599872";

TEST_F(GoneRows, OfAnAdapterGoThoughOnlyItsSlotMadeItOne) {
  ASSERT_TRUE(collect().ok());
  ASSERT_NE(rows("PCIAdapter", {"CardName"}, "PCIFuncKey=9961474"), "");
  sources_.smbios.clear();
  sources_.lspci = dump_with("98:00.2", "b3 15 d3 c2", "b3 15 d4 c2");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "PCIFuncKey=9961474"), "");
  EXPECT_EQ(rows("PCIMisc", {"PackageType"}, "PCIFuncKey=9961474"), "");
}

TEST_F(GoneRows, LeaveTheirSlotToNoNewDevice) {
  ASSERT_TRUE(collect().ok());
  sources_.smbios.clear();
  sources_.lspci = with_another_card();
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", {"DeviceId", "Location", "SlotNo", "SlotDesignation", "DevKey"}, kCard.c_str()),
            "7864|0|0|NULL|11599872\n");
  EXPECT_EQ(rows("PCIAdapter", {"Location", "SlotNo", "CardName"}, kCardAdapter.c_str()),
            "0|0|PCI device 10de:1eb8\n");
  EXPECT_EQ(rows("PCIMisc", {"PackageType"}, kCardAdapter.c_str()), "32768\n");
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
}

TEST_F(GoneRows, LeaveTheirHealthToNoNewDevice) {
  ASSERT_TRUE(collect().ok());
  ASSERT_EQ(zymdb_set_adapter_health_status(1, 5, 2), ZYM_DB_STATUS_OK);
  given("VPDs", {{"HardwareId", 11599872}, {"HardwareTypeId", 3}, {"SerialNo", "the former card's"}});
  sources_.lspci = with_another_card();
  const auto summary = collect();
  EXPECT_EQ(counts(summary)["PCIs"], "1/0/1/57");
  EXPECT_EQ(counts(summary)["PCIAdapter"], "1/0/1/23");
  EXPECT_EQ(counts(summary)["VPDs"], "0/0/1/0");
  EXPECT_EQ(rows("PCIAdapter", {"Location", "SlotNo", "HealthStatus"}, kCardAdapter.c_str()), "1|5|0\n");
}

TEST_F(GoneRows, OfAnotherSubsystemAreAnotherCards) {
  ASSERT_TRUE(collect().ok());
  ASSERT_EQ(zymdb_set_adapter_health_status(1, 1, 2), ZYM_DB_STATUS_OK);
  given("PCIs", {{"FunKey", 0x00310000}, {"HardwareTypeId", 3}, {"VendorId", 1}, {"DeviceId", 2}});
  sources_.lspci = dump_with("17:00.0", "20: 00 00 00 00 00 00 00 00 00 00 00 00 b3 15",
                             "20: 00 00 00 00 00 00 00 00 00 00 00 00 28 10");
  const auto summary = collect();
  EXPECT_EQ(counts(summary)["PCIs"], "1/0/2/57") << "a doubled row is another matter";
  EXPECT_EQ(rows("PCIAdapter", {"HealthStatus"}, "PCIFuncKey=1507328"), "0\n");
}

TEST_F(GoneRows, OfPortsGoWhereNoSourceTellsOfPorts) {
  given_ports();
  ASSERT_TRUE(collect().ok());
  const std::string left = std::to_string(kThere) + "\n" + std::to_string(kManagedAndGone) + "\n";
  for (const char* table : kPortTables) EXPECT_EQ(functions_of(table), left) << table;
}

TEST_F(GoneRows, OfPortsGoWithTheFormerDevice) {
  ASSERT_TRUE(collect().ok());
  given_ports();
  sources_.lspci = dump_with("17:00.0", "b3 15 1d 10", "b3 15 1f 10");
  ASSERT_TRUE(collect().ok());
  for (const char* table : kPortTables)
    EXPECT_EQ(functions_of(table), std::to_string(kManagedAndGone) + "\n") << table;
}

TEST_F(GoneRows, OfPortsThatAreManagedStayWhereATreeTellsOfPorts) {
  given_ports();
  const std::string interface = "sys/devices/pci0000:16/0000:17:00.0/net/eth0";
  files_.write(interface + "/type", "1\n");
  std::filesystem::create_directories(files_.path() / "sys/class/net");
  std::filesystem::create_directory_symlink(files_.path() / interface, files_.path() / "sys/class/net/eth0");
  sources_.sysfs = files_.path().string() + "/sys";
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIPhysicalPort", {"PCIFuncKey"}, "PCIFuncKey=8060928"), "8060928\n");
  EXPECT_EQ(rows("PCIPhysicalPort", {"PCIFuncKey"}, "PCIFuncKey=7995392"), "");
}

TEST_F(GoneRows, OfFirmwareGoWhereNoSourceTellsOfFirmware) {
  for (const uint32_t function : {kThere, kGone}) {
    for (const char* software : {"OS:NIC", "9"})
      given("Firmwares", {{"HardwareId", function}, {"HardwareTypeId", 3}, {"SoftwareID", software}});
  }
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Firmwares", {"HardwareId", "SoftwareID"}),
            "1507328|OS:NIC\n1507328|9\n" + std::to_string(kGone) + "|9\n");
}

TEST_F(GoneRows, OfDrivesGoWhereNoSourceTellsOfDrives) {
  const auto given_drive = [](int type, uint32_t function, const char* location, int bay) {
    given("AimDisks", {{"Location", location},
                       {"LocationId", 2},
                       {"BayNo", bay},
                       {"DriveTypeId", type},
                       {"PCIFuncKey", function},
                       {"Presence", 1}});
  };
  given_drive(1, kThere, "Bay 1", 1);
  given_drive(1, kGone, "Bay 2", 2);
  given_drive(3, kThere, "Bay 3", 3);
  given_drive(3, kGone, "Bay 4", 4);
  given_drive(3, 0, "Bay 5", 5);
  given_drive(5, kGone, "M.2 Bay1", 1);
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("AimDisks", {"Location", "Presence"}), "Bay 1|1\nBay 3|1\nBay 4|0\nBay 5|1\nM.2 Bay1|1\n");
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
}

}  // namespace
}  // namespace zymdb::collect
