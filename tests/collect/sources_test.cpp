// Sources that are missing, empty, cut short or beside one another.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "collect/collector_fixture.h"
#include "common/bytes.h"

namespace zymdb::collect {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SourcesTest : public CollectorTest {};

TEST_F(SourcesTest, WithoutSmbiosKeepsProcessorsAndPlaces) {
  ASSERT_TRUE(collect().ok());
  sources_.smbios.clear();
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  EXPECT_THAT(notices_, ElementsAre(HasSubstr("no source has SMBIOS tables")));
  for (const auto& table : summary.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_EQ(rows("Processor", {"Socket"}), "CPU1\nCPU2\n");
  EXPECT_EQ(rows("PCIs", {"SlotDesignation"}, "FunKey=9961472"), "PCIe Slot 4\n");
}

TEST_F(SourcesTest, WithoutPciFunctionsKeepsThem) {
  ASSERT_TRUE(collect().ok());
  sources_.lspci.clear();
  const auto summary = collect();
  EXPECT_THAT(notices_, ElementsAre(HasSubstr("no source describes PCI functions")));
  EXPECT_EQ(counts(summary), (std::map<std::string, std::string>{{"System", "0/0/0/1"},
                                                                 {"Processor", "0/0/0/2"},
                                                                 {"Memory", "0/0/0/32"},
                                                                 {"EmbeddedDeviceFirmware", "0/0/0/1"}}));
  EXPECT_NE(rows("PCIs", {"FunKey"}), "");
}

TEST_F(SourcesTest, WithoutNamesSaysSoAndUsesNumbers) {
  sources_.pci_ids = "/nowhere/pci.ids";
  ASSERT_TRUE(collect().ok());
  EXPECT_THAT(notices_, ElementsAre("no names of PCI devices: /nowhere/pci.ids: No such file or directory"));
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "Location=1 AND SlotNo=5"), "PCI device 10de:2235\n");
}

TEST_F(SourcesTest, RefusesACutOrForeignFileAndWritesNothing) {
  const std::string dump = read_file(sources_.lspci);
  const std::string tables = read_file(sources_.smbios);
  const struct {
    std::string lspci, smbios;
    const char* error;
  } kCases[] = {
      {files_.write("a", dump.substr(0, dump.size() / 2)), sources_.smbios, "/a, line "},
      {files_.write("b", tables), sources_.smbios, "/b, line 1: "},
      {sources_.lspci, files_.write("c", tables.substr(0, 20)), "/c, offset 0x0: a damaged SMBIOS"},
      {sources_.lspci, files_.write("d", dump), "/d, offset 0x0: no SMBIOS entry point"},
      {"/nowhere/server.lspci", sources_.smbios, "/nowhere/server.lspci: No such file or directory"},
      {sources_.lspci, files_.path().string(), "Is a directory"},
  };
  const auto before = stored_bytes();
  for (const auto& [lspci, smbios, error] : kCases) {
    sources_.lspci = lspci;
    sources_.smbios = smbios;
    const auto summary = collect();
    EXPECT_THAT(summary.error, HasSubstr(error));
    EXPECT_THAT(summary.tables, IsEmpty());
    EXPECT_EQ(summary.error.find('\n'), std::string::npos);
  }
  EXPECT_TRUE(stored_bytes() == before);
}

// ---- SMBIOS tables that break off

TEST_F(SourcesTest, TablesThatBreakOffRemoveNothingAndForgetNothing) {
  ASSERT_TRUE(collect().ok());
  const auto all = [] {
    return rows("System", {"Model", "BoardModel"}) +
           rows("Processor", {"Socket", "CoreCount", "L3CacheInstalled", "Status"}) +
           rows("Memory", {"SlotNo", "ArrayId", "SerialNo", "MemSize"}) +
           rows("EmbeddedDeviceFirmware", {"SoftwareID", "DeviceName"}) +
           rows("PCIs", {"FunKey", "Location", "SlotNo", "SlotDesignation"});
  };
  const std::string before = all();
  const std::string tables = read_file(sources_.smbios);
  for (size_t size = 0x20 + 200; size < tables.size(); size += 150) {
    sources_.smbios = files_.write("cut.smbios", tables.substr(0, size));
    const auto summary = collect();
    ASSERT_TRUE(summary.ok()) << summary.error;
    EXPECT_THAT(notices_, testing::Contains(HasSubstr("/cut.smbios, offset 0x"))) << size;
    ASSERT_EQ(all(), before) << size;
  }
  EXPECT_EQ(counts(collect())["PCIs"], "0/0/0/58") << "the other sources are read";
}

TEST_F(SourcesTest, TablesThatBreakOffWriteWhatTheyTell) {
  const std::string tables = read_file(sources_.smbios);
  std::string former = tables;
  former.replace(former.find(std::string("CPU1\0", 5)), 5, std::string("CPU7\0", 5));
  sources_.smbios = files_.write("former.smbios", former);
  ASSERT_TRUE(collect().ok());
  ASSERT_EQ(rows("Processor", {"Socket"}), "CPU7\nCPU2\n");
  sources_.smbios = files_.write("cut.smbios", tables.substr(0, tables.find("CPU2") + 100));
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Processor", {"Socket"}), "CPU7\nCPU2\nCPU1\n") << "perhaps it is further down";
  sources_.smbios = files_.write("whole.smbios", tables);
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Processor", {"Socket"}), "CPU2\nCPU1\n");
}

TEST_F(SourcesTest, AnotherModuleIsBelievedThoughTheTablesBreakOffLater) {
  const std::string tables = read_file(sources_.smbios);
  ASSERT_TRUE(collect().ok());
  const std::string first = rows("Memory", {"SerialNo"}, "SlotNo=1");
  const std::string name = first.substr(0, first.size() - 1);
  std::string changed = tables;
  changed.replace(changed.find(name), name.size(), std::string(name.size(), 'Z'));
  sources_.smbios = files_.write("cut.smbios", changed.substr(0, changed.size() - 200));
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Memory", {"SerialNo"}, "SlotNo=1"), std::string(name.size(), 'Z') + "\n");
}

TEST_F(SourcesTest, TablesOfATreeThatAreNoTablesAreANotice) {
  const std::string dump = read_file(sources_.smbios);
  files_.write("sys/firmware/dmi/tables/smbios_entry_point", "nothing");
  files_.write("sys/firmware/dmi/tables/DMI", dump.substr(32));
  sources_.smbios.clear();
  sources_.sysfs = files_.path().string() + "/sys";
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  EXPECT_THAT(notices_, testing::Contains(HasSubstr("/DMI, offset 0x0: no SMBIOS entry point")));
  EXPECT_EQ(counts(summary)["PCIs"], "58/0/0/0");
}

// ---- Sources with nothing in them

TEST_F(SourcesTest, WhereNoFunctionIsOrAnswersNoneIsToldOf) {
  ASSERT_TRUE(collect().ok());
  const std::string before = rows("PCIs", {"FunKey"}) + rows("PCIAdapter", {"PCIFuncKey", "CardName"});
  std::filesystem::create_directories(files_.path() / "sys/bus/pci/devices");
  const std::string tree = files_.path().string() + "/sys";
  std::string silent = "00:00.0 ffff: ffff:ffff\n";
  for (const char* offset : {"00", "10", "20", "30"}) {
    silent += std::string(offset) + ":";
    for (int i = 0; i < 16; ++i) silent += " ff";
    silent += "\n";
  }
  const struct {
    std::string lspci, sysfs, notice;
  } kCases[] = {{"", tree, "no PCI functions in " + tree + "/bus/pci/devices: they are left as they are"},
                {files_.write("silent", silent + "\n"), "", "/silent: they are left as they are"}};
  for (const auto& [lspci, sysfs, notice] : kCases) {
    sources_.lspci = lspci;
    sources_.sysfs = sysfs;
    ASSERT_TRUE(collect().ok());
    EXPECT_THAT(notices_, testing::Contains(HasSubstr(notice)));
    EXPECT_EQ(rows("PCIs", {"FunKey"}) + rows("PCIAdapter", {"PCIFuncKey", "CardName"}), before);
  }
  sources_.allow_empty = true;
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", {"FunKey"}) + rows("PCIAdapter", {"PCIFuncKey"}), "");
}

TEST_F(SourcesTest, SmbiosTablesWithoutAClassLeaveItAsItIs) {
  ASSERT_TRUE(collect().ok());
  // An entry point and a table of nothing but its end.
  std::string tables("_SM3_\0\x18\x03\x03\0\x01\0\x06\0\0\0\x20\0\0\0\0\0\0\0", 24);
  tables[5] = static_cast<char>(-checksum(as_bytes(tables)));
  tables += std::string(8, '\0') + std::string("\x7f\x04\0\0\0\0", 6);
  sources_.smbios = files_.write("nothing.smbios", tables);
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  for (const auto& table : summary.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  const std::string end = " in the SMBIOS tables: they are left as they are";
  EXPECT_THAT(notices_, ElementsAre("no system" + end, "no processors" + end, "no memory positions" + end,
                                    "no firmware versions" + end));
  EXPECT_EQ(rows("Processor", {"Socket"}), "CPU1\nCPU2\n");
  EXPECT_EQ(rows("PCIs", {"SlotDesignation"}, "FunKey=9961472"), "PCIe Slot 4\n");

  sources_.allow_empty = true;
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Processor", {"Socket"}) + rows("Memory", {"SlotNo"}), "");
}

// ---- A sysfs tree

TEST_F(SourcesTest, TakesVitalProductDataAndLinksFromSysfsBesideADump) {
  const std::string function = "sys/bus/pci/devices/0000:17:00.0/";
  files_.write(function + "vendor", "0x15b3\n");
  files_.write(function + "device", "0x101d\n");
  files_.write(function + "current_link_width", "8\n");
  files_.write(function + "vpd", std::string("\x90\x0d\x00SN\x04"
                                             "A\"'1PN\x03"
                                             "P-1\x78",
                                             17));
  sources_.sysfs = files_.path().string() + "/sys";
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("VPDs", {"HardwareId", "HardwareTypeId", "SerialNo", "PartNo", "UUID"}),
            "1507328|3|A\"'1|P-1|NULL\n");
  EXPECT_EQ(rows("PCIs", {"LanesInUse"}, "FunKey=1507328"), "8\n");
  EXPECT_EQ(rows("PCIs", {"LanesInUse"}, "FunKey=1507329"), "16\n") << "the dump's own";

  files_.write(function + "vpd", "");
  ASSERT_TRUE(collect().ok());
  EXPECT_NE(rows("VPDs", {"SerialNo"}), "") << "there, but not readable now";

  sources_.lspci = dump_without("17:00.0");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("VPDs", {"SerialNo"}), "");
}

TEST_F(SourcesTest, KeepsWhatADumpTellsWhereSysfsTellsNothing) {
  const std::initializer_list<const char*> links{"LanesInUse", "MaxLanes", "PCIeType", "MaxPCIeType",
                                                 "BridgeId"};
  ASSERT_TRUE(collect().ok());
  const std::string before = rows("PCIs", links, "FunKey=1507328");
  const std::string function = "sys/bus/pci/devices/0000:17:00.0/";
  files_.write(function + "vendor", "0x15b3\n");
  files_.write(function + "device", "0x101d\n");
  sources_.sysfs = files_.path().string() + "/sys";
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", links, "FunKey=1507328"), before);
  EXPECT_EQ(rows("PCIs", {"Driver", "IOMMUGroup", "NUMANode"}, "FunKey=1507328"), "NULL|NULL|NULL\n");
  std::filesystem::create_symlink("../../bus/pci/drivers/mlx5_core", files_.path() / (function + "driver"));
  std::filesystem::create_symlink("../../kernel/iommu_groups/27", files_.path() / (function + "iommu_group"));
  files_.write(function + "numa_node", "1\n");
  files_.write(function + "max_link_width", "32\n");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", {"LanesInUse", "MaxLanes"}, "FunKey=1507328"), "16|32\n");
  EXPECT_EQ(rows("PCIs", {"Driver", "IOMMUGroup", "NUMANode"}, "FunKey=1507328"), "mlx5_core|27|1\n");
  std::filesystem::remove(files_.path() / (function + "driver"));
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", {"Driver", "IOMMUGroup"}, "FunKey=1507328"), "NULL|27\n");
  sources_.sysfs.clear();
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", {"IOMMUGroup", "NUMANode"}, "FunKey=1507328"), "27|1\n")
      << "a dump knows of neither";
}

TEST_F(SourcesTest, WritesZerosForALinkThatIsDownOrNotThere) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", {"LanesInUse", "MaxLanes"}, "FunKey=3146752"), "0|8\n") << "nothing in that slot";
  EXPECT_EQ(rows("PCIs", {"LanesInUse", "MaxLanes", "PCIeType", "MaxPCIeType"}, "FunKey=5888"), "0|0|0|0\n")
      << "a SATA controller of the chipset";
  EXPECT_EQ(rows("PCIMisc", {"MaxDataWidth"}, "PCIFuncKey=5888"), "NULL\n");
}

TEST_F(SourcesTest, TellsTheBridgeAtTheFirstAddressOfAllFromARoot) {
  const auto function = [](const char* slot, const char* class_and_header, const char* buses) {
    return std::string(slot) + " 0604: 8086:3c00\n00: 86 80 00 3c 00 00 00 00 00 00 " + class_and_header +
           " 00\n10: 00 00 00 00 00 00 00 00 " + buses +
           " 00 00 00 00 00\n20: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
           "30: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n\n";
  };
  sources_.lspci = files_.write("first", function("00:00.0", "04 06 00 00 01", "00 01 01") +
                                             function("00:1f.0", "00 02 00 00 00", "00 00 00") +
                                             function("01:00.0", "00 02 00 00 00", "00 00 00"));
  given("PCIs", {{"FunKey", 0x1f00}, {"HardwareTypeId", 3}, {"BridgeId", 0}});
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", {"BridgeId"}, "FunKey=0"), "NULL\n");
  EXPECT_EQ(rows("PCIs", {"BridgeId"}, "FunKey=7936"), "NULL\n");
  EXPECT_EQ(rows("PCIs", {"BridgeId"}, "FunKey=65536"), "0\n");
}

TEST_F(SourcesTest, ReadsSmbiosTablesOfASysfsTree) {
  const std::string dump = read_file(sources_.smbios);
  files_.write("sys/firmware/dmi/tables/smbios_entry_point", dump.substr(0, 24));
  files_.write("sys/firmware/dmi/tables/DMI", dump.substr(32));
  sources_ = {.lspci = sources_.lspci,
              .smbios = "",
              .sysfs = files_.path().string() + "/sys",
              .pci_ids = sources_.pci_ids};
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Processor", {"Socket"}), "CPU1\nCPU2\n");
  EXPECT_EQ(rows("PCIs", {"SlotNo"}, "FunKey=9961472"), "4\n");
}

}  // namespace
}  // namespace zymdb::collect
