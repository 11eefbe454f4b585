// The machine as a whole: what tells of it, whose inventory it is, and when that was collected.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "collect/collector_fixture.h"
#include "collect/machines.h"

namespace zymdb::collect {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class SystemCollection : public CollectorTest {
 protected:
  // A tree with nothing but these attributes of the machine.
  void look_at_tree(std::initializer_list<std::pair<const char*, const char*>> attributes) {
    for (const auto& [name, content] : attributes)
      files_.write("sys/class/dmi/id/" + std::string(name), content);
    std::filesystem::create_directories(files_.path() / "sys");
    sources_ = {.sysfs = files_.file("sys"), .pci_ids = sources_.pci_ids};
  }

  static std::string identity() { return rows("System", {"Manufacturer", "Model", "SerialNo", "UUID"}); }

  // The example server's tables with other texts of the same length in them.
  std::string tables_with(std::initializer_list<std::pair<std::string, std::string>> changes) const {
    std::string tables = read_file(ZYMDB_EXAMPLE_SERVER "/server.smbios");
    for (const auto& [before, after] : changes) {
      const size_t at = tables.find(before);
      EXPECT_NE(at, std::string::npos);
      tables.replace(at, before.size(), after);
    }
    return files_.write("other.smbios", tables);
  }

  static inline const std::string kUuid =
      std::string("\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99\xaa\xbb\xcc\xdd\xee\xff", 16);
  static inline const std::string kOtherUuid = "\x01" + kUuid.substr(1);
};

TEST_F(SystemCollection, IsToldBySysfsWhereSmbiosIsNot) {
  look_at_tree({{"sys_vendor", "Example Systems\n"},
                {"product_name", "ES-2240\n"},
                {"product_version", "A1\n"},
                {"product_serial", "ES2240-000017\n"},
                {"product_uuid", "00112233-4455-6677-8899-AABBCCDDEEFF\n"},
                {"product_sku", "Default string\n"},
                {"product_family", "ES\n"},
                {"board_vendor", "Example Boards\n"},
                {"board_name", "EB-1\n"},
                {"board_version", "02\n"},
                {"board_serial", "ESB-1\n"},
                {"bios_vendor", "Example Firmware\n"},
                {"bios_version", "1.20\n"},
                {"bios_date", "03/14/2024\n"}});
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(identity(), "Example Systems|ES-2240|ES2240-000017|00112233-4455-6677-8899-aabbccddeeff\n");
  EXPECT_EQ(rows("System", {"Version", "SKU", "Family", "BoardManufacturer", "BoardModel", "BoardVersion",
                            "BoardSerialNo", "FirmwareVendor", "FirmwareVersion", "FirmwareDate"}),
            "A1|NULL|ES|Example Boards|EB-1|02|ESB-1|Example Firmware|1.20|03/14/2024\n");
}

TEST_F(SystemCollection, WhatOnlyRootMayReadStaysAsItIs) {
  ASSERT_TRUE(collect().ok());
  const std::string before = identity();
  look_at_tree({{"sys_vendor", "Example Systems\n"}, {"product_name", "ES-2240 Two-Socket Server\n"}});
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(identity(), before);
}

TEST_F(SystemCollection, IsToldByTheDeviceTreeWhereThereIsOne) {
  look_at_tree({});
  files_.write("sys/firmware/devicetree/base/model", std::string("Example Board 4\0", 16));
  files_.write("sys/firmware/devicetree/base/serial-number", std::string("10000000abcdef01\0", 17));
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(identity(), "NULL|Example Board 4|10000000abcdef01|NULL\n");
}

TEST_F(SystemCollection, HasTheHostNameOfItsTree) {
  look_at_tree({{"product_name", "ES-2240\n"}});
  files_.write("etc/hostname", "from-etc\n");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("System", {"HostName"}), "from-etc\n");
  files_.write("proc/sys/kernel/hostname", "node17\n");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("System", {"HostName"}), "node17\n");
}

TEST_F(SystemCollection, KeepsTheHostNameWhereNothingTellsIt) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("System", {"HostName"}), "NULL\n");
  sources_.sysfs = files_.file("sys");
  files_.write("proc/sys/kernel/hostname", "node17\n");
  std::filesystem::create_directories(files_.path() / "sys");
  ASSERT_TRUE(collect().ok());
  sources_.sysfs.clear();
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_EQ(rows("System", {"HostName"}), "node17\n");
}

TEST_F(SystemCollection, OfTheRunningMachineHasItsHostName) {
  sources_ = {};
  ASSERT_TRUE(collect().ok());
  char name[256];
  ASSERT_EQ(gethostname(name, sizeof name), 0);
  EXPECT_EQ(rows("System", {"HostName"}), std::string(name) + "\n");
}

TEST_F(SystemCollection, NeverMixesATreeWithTheRunningMachine) {
  // A folder beside which there is the running machine's proc.
  sources_ = {.sysfs = "/usr", .pci_ids = sources_.pci_ids};
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("System", {"HostName"}), "");
}

// ---- When, by what and from which sources

TEST_F(SystemCollection, SaysWhenByWhatAndFromWhichSourcesItChangedLast) {
  // Not std::time, which is a few milliseconds behind.
  const auto now = [] { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); };
  const auto before = now();
  ASSERT_TRUE(collect().ok());
  const auto at = std::stoll(rows("System", {"CollectedAt"}));
  EXPECT_GE(at, before);
  EXPECT_LE(at, now());
  EXPECT_EQ(rows("System", {"CollectedBy", "CollectedFrom"}),
            "zymdb " ZYMDB_VERSION "|" + sources_.lspci + ", " + sources_.smbios + "\n");
  const auto other = files_.write("copy.smbios", read_file(sources_.smbios));
  const std::string first = sources_.smbios;
  sources_.smbios = other;
  ASSERT_TRUE(collect().ok());
  EXPECT_THAT(rows("System", {"CollectedFrom"}), HasSubstr(first)) << "nothing has changed";
  sources_.lspci = dump_without("b1:00.0");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("System", {"CollectedFrom"}), sources_.lspci + ", " + other + "\n");
}

TEST_F(SystemCollection, SaysSoAlsoWhereNothingTellsOfTheMachine) {
  sources_.smbios.clear();
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("System", {"Model", "CollectedFrom"}), "NULL|" + sources_.lspci + "\n");
  sources_.smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios";
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("System", {"Model"}), "ES-2240 Two-Socket Server\n") << "the same row";
}

// ---- Whose inventory it is

TEST_F(SystemCollection, OfAnotherMachineIsRefused) {
  ASSERT_TRUE(collect().ok());
  const auto before = stored_bytes();
  sources_.smbios = tables_with({{kUuid, kOtherUuid}});
  EXPECT_EQ(collect().error,
            "the inventory is that of Example Systems ES-2240 Two-Socket Server, UUID "
            "00112233-4455-6677-8899-aabbccddeeff, and this machine is Example Systems ES-2240 Two-Socket "
            "Server, UUID 00112201-4455-6677-8899-aabbccddeeff: --replace puts it in the other's place");
  EXPECT_TRUE(stored_bytes() == before);
}

TEST_F(SystemCollection, WithoutAUuidGoesByTheSerialNumber) {
  const std::string none(16, '\0');
  sources_.smbios = tables_with({{kUuid, none}});
  ASSERT_TRUE(collect().ok());
  ASSERT_TRUE(collect().ok());
  sources_.smbios = tables_with({{kUuid, none}, {"ES2240-000017", "ES2240-000018"}});
  EXPECT_THAT(collect().error, HasSubstr("serial number ES2240-000017, and this machine is"));
  sources_.smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios";
  EXPECT_THAT(collect().error, IsEmpty()) << "the same serial number, and now a UUID";
  sources_.smbios = tables_with({{"ES2240-000017", "ES2240-000018"}});
  EXPECT_THAT(collect().error, IsEmpty()) << "the same UUID";
}

TEST_F(SystemCollection, FillersIdentifyNothing) {
  const std::string default_uuid("\x00\x02\x00\x03\x00\x04\x00\x05\x00\x06\x00\x07\x00\x08\x00\x09", 16);
  const std::string ones(16, '\xff');
  ASSERT_TRUE(collect().ok());
  for (const auto& uuid : {std::string(16, '\0'), ones, default_uuid}) {
    sources_.smbios = tables_with({{kUuid, uuid}, {"ES2240-000017", "0000000000000"}});
    EXPECT_THAT(collect().error, IsEmpty());
    EXPECT_EQ(rows("System", {"SerialNo", "UUID"}), "NULL|NULL\n");
  }
}

TEST_F(SystemCollection, ReplacesTheInventoryOfAnotherMachineWholly) {
  ASSERT_TRUE(collect().ok());
  std::vector<std::string> tables;
  for (const auto& line : lines_of(read_file(ZYMDB_EXAMPLE_SERVER "/../../schema/inventory.sql"))) {
    if (line.starts_with("CREATE TABLE \"")) tables.push_back(line.substr(14, line.find('"', 14) - 14));
  }
  // What happened before is not forgotten: the journal has the former machine's rows, and that they went.
  ASSERT_EQ(std::erase(tables, "Journal"), 1U);
  ASSERT_GT(tables.size(), 20U);
  for (const auto& table : tables) given(table.c_str(), {{"_id", 7777}});
  sources_.smbios = tables_with({{kUuid, kOtherUuid}});
  sources_.replace = true;
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  for (const auto& table : tables) EXPECT_EQ(rows(table.c_str(), {"_id"}, "_id=7777"), "") << table;
  EXPECT_EQ(rows("System", {"UUID"}), "00112201-4455-6677-8899-aabbccddeeff\n");
  EXPECT_EQ(counts(summary)["PCIs"], "58/0/0/0");
}

TEST_F(SystemCollection, ReplacesNothingOfTheSameMachine) {
  ASSERT_TRUE(collect().ok());
  given("VPDs", {{"HardwareId", 1}, {"HardwareTypeId", 5}, {"SerialNo", "another's"}});
  sources_.replace = true;
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_EQ(rows("VPDs", {"SerialNo"}), "another's\n");
}

// ---- Some classes only

TEST_F(SystemCollection, WritesOnlyTheClassesThatAreWanted) {
  sources_.only = {"processors", "pci"};
  EXPECT_EQ(counts(collect()), (std::map<std::string, std::string>{{"Processor", "2/0/0/0"},
                                                                   {"PCIs", "58/0/0/0"},
                                                                   {"PCIAdapter", "24/0/0/0"},
                                                                   {"PCIMisc", "24/0/0/0"},
                                                                   {"VPDs", "0/0/0/0"}}));
  EXPECT_EQ(rows("System", {"Model", "CollectedFrom"}),
            "NULL|" + sources_.lspci + ", " + sources_.smbios + " (only processors, pci)\n");
}

TEST_F(SystemCollection, ReadsNoFunctionsForClassesThatHaveNone) {
  sources_.only = {"memory"};
  sources_.lspci = "/nowhere/server.lspci";
  EXPECT_EQ(counts(collect()), (std::map<std::string, std::string>{{"Memory", "32/0/0/0"}}));
  EXPECT_THAT(notices_, IsEmpty());
}

TEST_F(SystemCollection, RefusesAClassThatIsNone) {
  sources_.only = {"memory", "disks"};
  EXPECT_EQ(collect().error,
            "'disks' is none of system, processors, memory, firmware, pci, gpus, ports, drives");
}

}  // namespace
}  // namespace zymdb::collect
