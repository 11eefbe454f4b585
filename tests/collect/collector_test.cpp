// Whole collections on the embedded database, read back through the library.
#include "collect/collector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>

#include "collect/collector_fixture.h"
#include "support/large_dump.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_pci.h"

namespace zymdb::collect {
namespace {

using testing::IsEmpty;

TEST_F(CollectorTest, FillsTheInventoryWithTheExampleServer) {
  const auto summary = collect();
  ASSERT_TRUE(summary.ok()) << summary.error;
  EXPECT_THAT(notices_, IsEmpty());
  EXPECT_EQ(counts(summary), (std::map<std::string, std::string>{{"System", "1/0/0/0"},
                                                                 {"Processor", "2/0/0/0"},
                                                                 {"Memory", "32/0/0/0"},
                                                                 {"EmbeddedDeviceFirmware", "1/0/0/0"},
                                                                 {"PCIs", "58/0/0/0"},
                                                                 {"PCIAdapter", "24/0/0/0"},
                                                                 {"PCIMisc", "24/0/0/0"},
                                                                 {"VPDs", "0/0/0/0"},
                                                                 {"PCIGPU", "3/0/0/0"},
                                                                 {"PCIGPUChip", "3/0/0/0"}}));
}

TEST_F(CollectorTest, TellsTheMachineAsAWholeInOneRow) {
  ASSERT_TRUE(collect().ok());
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("System", {"Manufacturer", "Model", "Version", "SerialNo", "UUID", "SKU", "Family"}),
            "Example Systems|ES-2240 Two-Socket Server|A1|ES2240-000017|00112233-4455-6677-8899-aabbccddeeff|"
            "ES-2240-24|ES\n");
  EXPECT_EQ(rows("System", {"BoardManufacturer", "BoardModel", "BoardVersion", "BoardSerialNo",
                            "FirmwareVendor", "FirmwareVersion", "FirmwareDate"}),
            "Example Systems|ES-2240 System Board|02|ESB-000017|Example Firmware|1.20|03/14/2024\n");
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
  sources_.lspci = dump_with("b1:00.0", "02 03", "03 03");
  const auto summary = collect();
  EXPECT_EQ(counts(summary)["PCIs"], "0/1/0/57");
  EXPECT_EQ(counts(summary)["PCIAdapter"], "0/0/0/24");
  sources_.pci_ids = files_.write("other.ids", "10de  NVIDIA Corporation\n\t2235  GA102GL [A40]\n");
  EXPECT_NE(counts(collect())["PCIAdapter"], "0/0/0/24");
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "Location=1 AND SlotNo=5"), "NVIDIA GA102GL [A40]\n");
}

TEST_F(CollectorTest, LeavesHealthToWhoeverAssessesIt) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIAdapter", {"HealthStatus"}, "Location=1 AND SlotNo=5"), "0\n");
  ASSERT_EQ(zymdb_set_adapter_health_status(1, 5, 2), ZYM_DB_STATUS_OK);
  sources_.pci_ids = files_.write("other.ids", "10de  NVIDIA Corporation\n\t2235  GA102GL [A40]\n");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIAdapter", {"CardName"}, "Location=1 AND SlotNo=5"), "NVIDIA GA102GL [A40]\n");
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

TEST_F(CollectorTest, SaysThatThereIsNoDatabase) {
  lose_database();
  EXPECT_EQ(collect().error, "the inventory cannot be opened");
}

TEST_F(CollectorTest, ReportsItsProgressFromFirstToLast) {
  std::vector<std::pair<size_t, size_t>> steps;
  collect_inventory(
      sources_, {.notice = {}, .progress = [&](auto done, auto total) { steps.emplace_back(done, total); }});
  constexpr size_t kRows = 148;
  ASSERT_EQ(steps.size(), kRows + 1);
  for (size_t i = 0; i < steps.size(); ++i) EXPECT_EQ(steps[i], std::pair(i, kRows));
}

TEST_F(CollectorTest, ALargeMachineIsWrittenOnce) {
  constexpr size_t kFunctions = 10'000;
  const std::string dump = files_.file("large.lspci");
  {
    std::ofstream out(dump);
    LargeDump(out, kFunctions, 256).write();
  }
  sources_.lspci = dump;
  const auto first = collect();
  ASSERT_TRUE(first.ok()) << first.error;
  EXPECT_EQ(counts(first)["PCIs"], "10000/0/0/0");
  const auto before = stored_bytes();
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
  EXPECT_TRUE(stored_bytes() == before);
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
