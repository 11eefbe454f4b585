// The journal read as what became of parts.
#include "documents/history.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <set>

#include "collect/collector.h"
#include "collect/machines.h"
#include "common/client_extensions.h"
#include "common/client_objects.h"
#include "documents/inventory_types.h"
#include "records/pci.h"
#include "records/pci_settings.h"
#include "support/inventory.h"
#include "support/parsing_marker.h"
#include "support/sql.h"

namespace zymdb::documents {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class HistoryTest : public InventoryTest {
 protected:
  // The example's running system.
  std::string example_system() const {
    const std::string tree = folder() / "tree";
    collect::output_of("python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py " + tree);
    return tree;
  }

  static void collect_example(const std::string& tree) {
    const auto summary = collect::collect_inventory({.lspci = "", .smbios = "", .sysfs = tree});
    ASSERT_TRUE(summary.ok()) << summary.error;
  }

  static std::vector<std::string> texts(const std::vector<Event>& events) {
    std::vector<std::string> lines;
    for (const Event& event : events) {
      const std::string generation = std::to_string(event.generation) + " ";
      if (event.is_baseline) lines.push_back(generation + "baseline");
      for (const Change& change : event.changes) {
        if (!event.is_baseline) lines.push_back(generation + text_of(change));
      }
    }
    return lines;
  }

  // A setting whose every column can be read.
  static void given_setting() {
    const ValuesPtr values(zym_db_get_content_values(get_dmdb_handle()));
    for (const auto& field : records::settings().fields) {
      if (!field.is_derived) zym_db_content_put_text(values.get(), field.key, "1");
    }
    EXPECT_EQ(zym_db_insert(get_dmdb_handle(), "PCISetting", values.get(), 0, nullptr), 0);
  }

  const std::vector<RecordType> types_ = inventory_types(records::kPciIdsFile);
  ParsingMarker marker_;  // nobody stores settings meanwhile
};

TEST_F(HistoryTest, OfAnInventoryThatNobodyWroteIsNone) {
  EXPECT_THAT(read_history(types_, 0), IsEmpty());
}

TEST_F(HistoryTest, BeginsWithABaseline) {
  collect_example(example_system());
  EXPECT_THAT(texts(read_history(types_, 0)), ElementsAre("1 baseline"));
}

TEST_F(HistoryTest, TellsEachTransactionInItsOrder) {
  const std::string tree = example_system();
  collect_example(tree);
  const std::string serial = tree + "/class/nvme/nvme0/serial";
  std::ofstream(serial) << "REPLACED1\n";
  collect_example(tree);
  std::ofstream(serial) << "REPLACED2\n";
  collect_example(tree);
  const auto lines = texts(read_history(types_, 0));
  ASSERT_THAT(lines, SizeIs(3));
  EXPECT_THAT(lines[1], testing::MatchesRegex("2 replaced  drives  Bay .*->.*REPLACED1.*"));
  EXPECT_THAT(lines[2], testing::MatchesRegex("3 replaced  drives  Bay .*REPLACED1.*->.*REPLACED2.*"));
}

TEST_F(HistoryTest, ReachesBackAsFarAsAsked) {
  given("EmbeddedDeviceFirmware", {{"DeviceName", "a"}, {"DeviceIndex", 1}, {"SoftwareID", "X"}});
  given("EmbeddedDeviceFirmware", {{"DeviceName", "b"}, {"DeviceIndex", 2}, {"SoftwareID", "X"}});
  given("EmbeddedDeviceFirmware", {{"DeviceName", "c"}, {"DeviceIndex", 3}, {"SoftwareID", "X"}});
  EXPECT_THAT(read_history(types_, 3), SizeIs(1));
}

TEST_F(HistoryTest, LeavesOutWhatIsNoPartOfAnything) {
  given("EmbeddedDeviceFirmware", {{"DeviceName", "a"}, {"DeviceIndex", 1}, {"SoftwareID", "X"}});
  given("DPUEvents", {{"Slot", 1}});
  given("SensorSlotMap", {{"SlotNo", 1}});
  EXPECT_THAT(texts(read_history(types_, 0)), ElementsAre("1 baseline"));
}

TEST_F(HistoryTest, KnowsWhatWasDropped) {
  setenv("ZYMDB_HISTORY", "1K", 1);
  zym_db_close(get_dmdb_handle());
  for (int i = 0; i < 50; ++i)
    given("EmbeddedDeviceFirmware", {{"DeviceName", "a"}, {"DeviceIndex", i}, {"SoftwareID", "X"}});
  EXPECT_TRUE(read_entries().front().follows_others);
  EXPECT_FALSE(read_history(types_, 0).empty());
  unsetenv("ZYMDB_HISTORY");
}

TEST(GenerationAt, IsTheNewestOfThatTime) {
  const std::vector<Entry> entries = {{.generation = 3, .time = 1000, .account = {}},
                                      {.generation = 7, .time = 2000, .account = {}}};
  EXPECT_EQ(generation_at(entries, 999), std::nullopt);
  EXPECT_EQ(generation_at(entries, 1000), 3u);
  EXPECT_EQ(generation_at(entries, 1999), 3u);
  EXPECT_EQ(generation_at(entries, 2000), 7u);
  EXPECT_EQ(generation_at({}, 2000), std::nullopt);
}

// A class that is read from a table which is not declared would keep former parts in its history.
TEST_F(HistoryTest, KnowsTheTablesOfEachClass) {
  collect_example(example_system());
  const auto declared = [&](const std::string& name, const std::string& table) {
    return is_read_from(name, table);
  };
  given("PldmDeviceFirmware", {{"DeviceName", "a"}, {"SoftwareID", "X"}, {"PCIKey", 65537}});
  given_setting();
  given("NCSIPackageID", {{"Location", 1}, {"SlotNo", 1}, {"PackageID1", 1}});
  given("SensorSlotMap", {{"SlotNo", 1}, {"HardwareTypeId", 4}, {"HealthStatusId", 1}});
  given("NVMeDrives", {{"Location", 2}, {"SlotNo", 40}, {"ModelName", "a"}});
  const Document whole = read_document(types_);
  const std::string inventory = folder() / "inventory.db";
  std::set<std::string> found;
  for (const char* table : {"System",
                            "Processor",
                            "Memory",
                            "PCIAdapter",
                            "PCIs",
                            "NCSIPackageID",
                            "VPDs",
                            "PCIGPU",
                            "PCIGPUChip",
                            "PCIPhysicalPort",
                            "PCIPhysicalPortStat",
                            "PCILogicalPort",
                            "PCINetwork",
                            "PCIMisc",
                            "Firmwares",
                            "PldmDeviceFirmware",
                            "EmbeddedDeviceFirmware",
                            "AimDisks",
                            "NVMeDrives",
                            "SensorSlotMap",
                            "PCISetting",
                            "PCIPhysicalPortCounter",
                            "DPUEvents"}) {
    const std::string copy = folder() / (std::string(table) + ".db");
    copy_inventory(copy);
    zym_db_close(get_dmdb_handle());
    run_sql_on(copy, std::string("DELETE FROM ") + table);
    setenv("ZYMDB_INVENTORY", copy.c_str(), 1);
    const Document without = read_document(types_);
    for (const PartClass& of : whole.classes) {
      if (of.parts == without.find(of.name)->parts) continue;
      EXPECT_TRUE(declared(of.name, table)) << of.name << " is read from " << table;
      found.insert(of.name);
    }
    zym_db_close(get_dmdb_handle());
    setenv("ZYMDB_INVENTORY", inventory.c_str(), 1);
  }
  for (const PartClass& of : whole.classes)
    EXPECT_TRUE(found.contains(of.name)) << of.name << " is read from no table";
}

}  // namespace
}  // namespace zymdb::documents
