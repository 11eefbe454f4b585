// Whole collections on the embedded database, read back through the library.
#include "collect/collector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "collect/machines.h"
#include "common/bytes.h"
#include "support/inventory.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_pci.h"

namespace zymdb::collect {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Few names, so that expectations do not depend on the version of the system's list.
constexpr char kNames[] =
    "15b3  Mellanox Technologies\n\ta2d6  BlueField-2\n\t101d  ConnectX-6 Dx\n"
    "1b4b  Marvell Technology Group Ltd.\n\t2241  88NR2241 Non-Volatile memory controller\n"
    "8086  Intel Corporation\n\t1521  I350\n\t\t8086 0000  The Motherboard\n\t0b60  P5510\n\t\t8086 8008  SE "
    "2.5\" U.2 (P5510)\n";

class CollectorTest : public InventoryTest {
 protected:
  CollectorTest() {
    sources_.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci";
    sources_.smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios";
    sources_.pci_ids = files_.write("pci.ids", kNames);
  }

  Summary collect() {
    notices_.clear();
    return collect_inventory(sources_,
                             {.notice = [this](auto line) { notices_.emplace_back(line); }, .progress = {}});
  }

  // "inserted/updated/removed/unchanged" by table.
  static std::map<std::string, std::string> counts(const Summary& summary) {
    std::map<std::string, std::string> result;
    for (const auto& [table, inserted, updated, removed, unchanged] : summary.tables) {
      result[std::string(table)] = std::to_string(inserted) + "/" + std::to_string(updated) + "/" +
                                   std::to_string(removed) + "/" + std::to_string(unchanged);
    }
    return result;
  }

  // Every file of the inventory with its content.
  std::map<std::string, std::string> stored_bytes() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
      // The wal-index holds locks and hints of readers, no data.
      if (entry.path().extension() == ".db-shm") continue;
      files[entry.path().filename().string()] = read_file(entry.path().string());
    }
    return files;
  }

  // The example server's dump without one function, or with other bytes in it.
  std::string dump_without(const std::string& slot) const {
    std::string dump = read_file(ZYMDB_EXAMPLE_SERVER "/server.lspci");
    const size_t at = dump.find(slot + " ");
    dump.erase(at, dump.find("\n\n", at) + 2 - at);
    return files_.write("changed.lspci", dump);
  }

  std::string dump_with(const std::string& slot, const std::string& before, const std::string& after) const {
    std::string dump = read_file(ZYMDB_EXAMPLE_SERVER "/server.lspci");
    const size_t at = dump.find(before, dump.find(slot + " "));
    dump.replace(at, before.size(), after);
    return files_.write("changed.lspci", dump);
  }

  TemporaryFolder files_;
  Sources sources_;
  std::vector<std::string> notices_;
};

TEST_F(CollectorTest, FillsTheInventoryWithTheExampleServer) {
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  EXPECT_THAT(notices_, IsEmpty());
  EXPECT_EQ(counts(summary), (std::map<std::string, std::string>{{"Processor", "2/0/0/0"},
                                                                 {"Memory", "32/0/0/0"},
                                                                 {"EmbeddedDeviceFirmware", "1/0/0/0"},
                                                                 {"PCIs", "58/0/0/0"},
                                                                 {"PCIAdapter", "24/0/0/0"},
                                                                 {"PCIMisc", "24/0/0/0"},
                                                                 {"VPDs", "0/0/0/0"},
                                                                 {"PCIGPU", "3/0/0/0"},
                                                                 {"PCIGPUChip", "3/0/0/0"}}));
}

TEST_F(CollectorTest, IsReadBackThroughTheLibrary) {
  ASSERT_TRUE(collect().ok());
  _ZYMDB_Processor processor{};
  processor._id = 2;
  ASSERT_EQ(zymdb_get_processor(&processor), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(processor.Socket, "CPU2");
  EXPECT_EQ(processor.ProcId, 0xBFEBFBFF000606A6ULL);
  EXPECT_EQ(processor.CoreCount, 32);
  EXPECT_EQ(processor.L3CacheInstalled, 49152);

  _ZYMDB_PCI_Key_List dpus{};
  ASSERT_EQ(zymdb_get_dpu_keys(&dpus), ZYM_DB_STATUS_OK);
  ASSERT_EQ(dpus.count, 1U);
  EXPECT_EQ(dpus.keys[0], 0x10004U);
  free(dpus.keys);

  _ZYMDB_PCI_Generic function{};
  ASSERT_EQ(zymdb_get_pci_generic_info(0x00980001, &function), ZYM_DB_STATUS_OK);
  EXPECT_EQ(function.BridgeId, 0x00970200U);
  EXPECT_STREQ(function.SlotDesignation, "PCIe Slot 4");
  EXPECT_EQ(function.MaxPCIeType, 4);

  _ZYMDB_PCI_Misc misc{};
  ASSERT_EQ(zymdb_get_pci_misc_info(0x00030000, &misc), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(misc.ConnectorTypeName, "Onboard");
  EXPECT_STREQ(misc.PackageTypeName, "Onboard");
}

TEST_F(CollectorTest, ListsEveryAdapterWithItsPlace) {
  ASSERT_TRUE(collect().ok());
  _ZYMDB_PCI_Adapter_List list{};
  ASSERT_EQ(zymdb_get_pci_adapter_list(&list), ZYM_DB_STATUS_OK);
  std::map<uint32_t, std::string> adapters;
  for (uint32_t i = 0; i < list.count; ++i) {
    adapters[list.adapters[i].PCIKey] =
        std::string(list.adapters[i].CardName) + ", " + list.adapters[i].ConnectorTypeName;
  }
  free(list.adapters);
  EXPECT_EQ(adapters.size(), 16U);
  EXPECT_EQ(adapters[0x10001], "Mellanox ConnectX-6 Dx, PCI-E Gen 4 x16");
  EXPECT_EQ(adapters[0x10006], "PCI device 1000:10e2, PCI-E Gen 4 x8");
  EXPECT_EQ(adapters[0x30000], "Marvell 88NR2241 Non-Volatile memory controller, Onboard");
  EXPECT_EQ(adapters[0x20005], "SE 2.5\" U.2 (P5510), Unknown");
}

TEST_F(CollectorTest, NamesDevicesOnTheBoardByThemselvesNotByTheBoard) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "PCIFuncKey=262144"), "Intel I350\n");
}

TEST_F(CollectorTest, WithoutSmbiosNamesNewDevicesByThemselvesAndKeepsTheNamesOfCards) {
  sources_.smbios.clear();
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "PCIFuncKey=262144 OR PCIFuncKey=14876672"),
            "Intel I350\nIntel P5510\n");
  sources_.smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios";
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "PCIFuncKey=14876672"), "SE 2.5\" U.2 (P5510)\n");
  sources_.smbios.clear();
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
}

TEST_F(CollectorTest, ChangesNoRowAndWritesNoByteTheSecondTime) {
  ASSERT_TRUE(collect().ok());
  const auto before = stored_bytes();
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  for (const auto& table : summary.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_TRUE(stored_bytes() == before);
}

TEST_F(CollectorTest, RemovesHardwareThatIsGone) {
  ASSERT_TRUE(collect().ok());
  sources_.lspci = dump_without("b1:00.0");
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  EXPECT_EQ(counts(summary)["PCIs"], "0/0/1/57");
  EXPECT_EQ(counts(summary)["PCIAdapter"], "0/0/1/23");
  EXPECT_EQ(counts(summary)["PCIMisc"], "0/0/1/23");
  EXPECT_EQ(rows("PCIAdapter", {"PCIKey"}, "Location=1 AND SlotNo=5"), "");
}

TEST_F(CollectorTest, UpdatesOnlyTheRowsThatChanged) {
  ASSERT_TRUE(collect().ok());
  sources_.lspci = dump_with("b1:00.0", "de 10 35 22", "de 10 b8 1e");
  const auto summary = collect();
  EXPECT_EQ(counts(summary)["PCIs"], "0/1/0/57");
  EXPECT_EQ(counts(summary)["PCIAdapter"], "0/1/0/23");
  EXPECT_EQ(counts(summary)["PCIMisc"], "0/0/0/24");
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "Location=1 AND SlotNo=5"), "PCI device 10de:1eb8\n");
}

TEST_F(CollectorTest, LeavesHealthToWhoeverAssessesIt) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIAdapter", {"HealthStatus"}, "Location=1 AND SlotNo=5"), "0\n");
  ASSERT_EQ(zymdb_set_adapter_health_status(1, 5, 2), ZYM_DB_STATUS_OK);
  sources_.lspci = dump_with("b1:00.0", "de 10 35 22", "de 10 b8 1e");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIAdapter", {"HealthStatus"}, "Location=1 AND SlotNo=5"), "2\n");
}

TEST_F(CollectorTest, LeavesRowsOfOtherWritersAlone) {
  given("PCIAdapter",
        {{"PCIKey", 7}, {"PCIFuncKey", 0x00980000}, {"AIMSupported", 1}, {"CardName", "its own name"}});
  given("PCIAdapter", {{"PCIKey", 8}, {"PCIFuncKey", 0x7F000000}, {"AIMSupported", 3}});
  given("PCIMisc", {{"PCIFuncKey", 0x7F000000}, {"AIMSpecVersion", "1.1"}});
  given("VPDs", {{"HardwareId", 0x7F000000}, {"HardwareTypeId", 5}, {"SerialNo", "123"}});
  const auto summary = collect();
  EXPECT_EQ(counts(summary)["PCIAdapter"], "23/0/0/1");
  EXPECT_EQ(rows("PCIAdapter", {"PCIKey", "CardName"}, "PCIFuncKey=9961472"), "7|its own name\n");
  EXPECT_EQ(rows("PCIAdapter", {"PCIKey"}, "AIMSupported=3"), "8\n");
  EXPECT_EQ(rows("PCIMisc", {"AIMSpecVersion"}, "PCIFuncKey=2130706432"), "1.1\n");
  EXPECT_EQ(rows("VPDs", {"SerialNo"}), "123\n");
}

TEST_F(CollectorTest, RemovesDoubledRows) {
  ASSERT_TRUE(collect().ok());
  given("PCIs", {{"FunKey", 0x00980000}, {"HardwareTypeId", 3}});
  EXPECT_EQ(counts(collect())["PCIs"], "0/0/1/58");
}

TEST_F(CollectorTest, WithoutSmbiosKeepsProcessorsAndPlaces) {
  ASSERT_TRUE(collect().ok());
  sources_.smbios.clear();
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  EXPECT_THAT(notices_, ElementsAre(HasSubstr("no source has SMBIOS tables")));
  for (const auto& table : summary.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_EQ(rows("Processor", {"Socket"}), "CPU1\nCPU2\n");
  EXPECT_EQ(rows("PCIs", {"SlotDesignation"}, "FunKey=9961472"), "PCIe Slot 4\n");
}

TEST_F(CollectorTest, WithoutPciFunctionsKeepsThem) {
  ASSERT_TRUE(collect().ok());
  sources_.lspci.clear();
  const auto summary = collect();
  EXPECT_THAT(notices_, ElementsAre(HasSubstr("no source describes PCI functions")));
  EXPECT_EQ(counts(summary),
            (std::map<std::string, std::string>{
                {"Processor", "0/0/0/2"}, {"Memory", "0/0/0/32"}, {"EmbeddedDeviceFirmware", "0/0/0/1"}}));
  EXPECT_NE(rows("PCIs", {"FunKey"}), "");
}

TEST_F(CollectorTest, WithoutNamesSaysSoAndUsesNumbers) {
  sources_.pci_ids = "/nowhere/pci.ids";
  ASSERT_TRUE(collect().ok());
  EXPECT_THAT(notices_, ElementsAre("no names of PCI devices: /nowhere/pci.ids: No such file or directory"));
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "Location=1 AND SlotNo=5"), "PCI device 10de:2235\n");
}

TEST_F(CollectorTest, RefusesACutOrForeignFileAndWritesNothing) {
  const std::string dump = read_file(sources_.lspci);
  const std::string tables = read_file(sources_.smbios);
  const struct {
    std::string lspci, smbios;
    const char* error;
  } kCases[] = {
      {files_.write("a", dump.substr(0, dump.size() / 2)), sources_.smbios, "/a, line "},
      {files_.write("b", tables), sources_.smbios, "/b, line 1: "},
      {sources_.lspci, files_.write("c", tables.substr(0, tables.size() / 2)), "/c, offset 0x"},
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

TEST_F(CollectorTest, SaysThatThereIsNoDatabase) {
  lose_database();
  EXPECT_EQ(collect().error, "the inventory cannot be opened");
}

TEST_F(CollectorTest, ReportsItsProgressFromFirstToLast) {
  std::vector<std::pair<size_t, size_t>> steps;
  collect_inventory(
      sources_, {.notice = {}, .progress = [&](auto done, auto total) { steps.emplace_back(done, total); }});
  constexpr size_t kRows = 147;
  ASSERT_EQ(steps.size(), kRows + 1);
  for (size_t i = 0; i < steps.size(); ++i) EXPECT_EQ(steps[i], std::pair(i, kRows));
}

// ---- Sources with nothing in them

TEST_F(CollectorTest, WhereNoFunctionIsOrAnswersNoneIsToldOf) {
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

TEST_F(CollectorTest, SmbiosTablesWithoutAClassLeaveItAsItIs) {
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
  EXPECT_THAT(notices_,
              ElementsAre("no processors" + end, "no memory positions" + end, "no firmware versions" + end));
  EXPECT_EQ(rows("Processor", {"Socket"}), "CPU1\nCPU2\n");
  EXPECT_EQ(rows("PCIs", {"SlotDesignation"}, "FunKey=9961472"), "PCIe Slot 4\n");

  sources_.allow_empty = true;
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Processor", {"Socket"}) + rows("Memory", {"SlotNo"}), "");
}

// ---- A sysfs tree

TEST_F(CollectorTest, TakesVitalProductDataAndLinksFromSysfsBesideADump) {
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

TEST_F(CollectorTest, ReadsSmbiosTablesOfASysfsTree) {
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

TEST_F(CollectorTest, CollectsTheRunningMachine) {
  sources_ = {};
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  const auto again = collect();
  for (const auto& table : again.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
}

}  // namespace
}  // namespace zymdb::collect
