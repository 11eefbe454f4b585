// The example server as its running system shows it: the same machine as its dumps, and more of it.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>

#include "collect/collector.h"
#include "collect/machines.h"
#include "support/inventory.h"

namespace zymdb::collect {
namespace {

constexpr char kWriteTree[] = "python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py '";

class ExampleSystem : public InventoryTest {
 protected:
  ExampleSystem() { output_of(kWriteTree + root() + "'"); }

  std::string root() const { return tree_.path().string(); }

  Summary collect() const { return collect_inventory({.lspci = "", .smbios = "", .sysfs = root()}); }

  TemporaryFolder tree_;
};

TEST_F(ExampleSystem, IsTheSameEveryTimeItIsWritten) {
  const TemporaryFolder other;
  output_of(kWriteTree + other.path().string() + "'");
  EXPECT_EQ(output_of("diff -r --no-dereference '" + root() + "' '" + other.path().string() + "'"), "");
}

TEST_F(ExampleSystem, IsTheMachineOfTheDumps) {
  ASSERT_TRUE(collect().ok());
  const auto dumps = collect_inventory({.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci",
                                        .smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios",
                                        .sysfs = ""});
  ASSERT_TRUE(dumps.ok()) << dumps.error;
  EXPECT_EQ(dumps.tables.size(), 9U);
  for (const auto& table : dumps.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
}

TEST_F(ExampleSystem, CollectedByTwoAtOnceIsThereOnce) {
  Summary first, second;
  std::thread other([&] { second = collect(); });
  first = collect();
  other.join();
  EXPECT_TRUE(first.ok()) << first.error;
  EXPECT_TRUE(second.ok()) << second.error;
  ASSERT_EQ(first.tables.size(), second.tables.size());
  for (size_t i = 0; i < first.tables.size(); ++i) {
    const auto& [one, another] = std::pair(first.tables[i], second.tables[i]);
    EXPECT_EQ(one.inserted + another.inserted, one.inserted + one.unchanged) << one.table;
    EXPECT_EQ(one.updated + one.removed + another.updated + another.removed, 0U) << one.table;
  }
}

TEST_F(ExampleSystem, HasDrivesInItsBaysAndInASlot) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(
      rows("AimDisks", {"Location", "DriveTypeId", "MediaTypeId", "Manufacture", "Capacity", "InfoMask"}),
      "Bay 7|1|1|Micron|480GB|NULL\n"
      "Bay 8|1|0|Seagate|4.00TB|NULL\n"
      "Bay 1|3|1|Samsung|1.92TB|0\n"
      "Bay 2|3|1|Samsung|1.92TB|0\n"
      "Bay 3|3|1|Samsung|1.92TB|0\n"
      "Bay 5|3|1|Intel|3.84TB|0\n"
      "Slot 8|3|1|Intel|375GB|0\n");
}

TEST_F(ExampleSystem, HasConnectorsWhereASystemTellsThem) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIPhysicalPort", {"PCIFuncKey", "ConnectorLayout"}, "ConnectorLayout IS NOT NULL"),
            "9961473|0x8008\n13303808|0x8007\n13303809|0x8007\n");
}

TEST_F(ExampleSystem, HasFirmwareAndVitalProductData) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Firmwares", {"HardwareId", "SoftwareID", "VersionString"}, "HardwareId<8000000"),
            "6750208|OS:NVME|GDC5602Q\n6815744|OS:NVME|GDC5602Q\n6881280|OS:NVME|GDC5302Q\n"
            "1507328|OS:FABRIC|22.35.2000\n1507329|OS:FABRIC|22.35.2000\n");
  EXPECT_EQ(rows("VPDs", {"HardwareId", "PartNo", "SerialNo"}, "HardwareId=1507328"),
            "1507328|MCX623106AN-CDAT|MT2135X00017\n");
}

}  // namespace
}  // namespace zymdb::collect
