// Processors and memory of machines without SMBIOS as rows, and what becomes of them when it comes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "collect/collector_fixture.h"
#include "collect/processor_tree.h"

namespace zymdb::collect {
namespace {

class ProcessorCollection : public CollectorTest {
 protected:
  ProcessorCollection() {
    tree_.processors(2, 4, 2);
    tree_.cpuinfo(16, "vendor_id : AuthenticAMD\nmodel name : AMD EPYC 7742\n");
    tree_.memory(0, 0, 8);
    tree_.memory(1, 8, 16);
    smbios_ = sources_.smbios;
    sources_ = {.sysfs = tree_.sysfs(), .pci_ids = sources_.pci_ids};
  }

  static std::string processors() {
    return rows("Processor", {"Socket", "Version", "CoreCount", "ThreadCount"});
  }
  static std::string memory() { return rows("Memory", {"SlotNo", "DevLocator", "MemSize", "iMCNum"}); }

  ProcessorTree tree_;
  std::string smbios_;
};

constexpr char kProcessors[] = "package0|AMD EPYC 7742|4|8\npackage1|AMD EPYC 7742|4|8\n";
constexpr char kMemory[] = "1|node0|1024|NULL\n2|node1|2048|NULL\n";

TEST_F(ProcessorCollection, HasARowPerPackageAndPerNode) {
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(processors(), kProcessors);
  EXPECT_EQ(memory(), kMemory);
  EXPECT_EQ(rows("Processor", {"Status", "MaxSpeed", "L3CacheInstalled"}), "65|3400|24576\n65|3400|24576\n");
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
}

TEST_F(ProcessorCollection, AFrequencyOfTheMomentIsNoChange) {
  ASSERT_TRUE(collect().ok());
  tree_.write("sys/devices/system/cpu/cpu0/cpufreq/base_frequency", "1000000\n");
  for (const auto& table : collect().tables) EXPECT_EQ(table.changed(), 0U) << table.table;
}

TEST_F(ProcessorCollection, SmbiosTakesOverWhenItComes) {
  ASSERT_TRUE(collect().ok());
  sources_.smbios = smbios_;
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("Processor", {"Socket"}), "CPU1\nCPU2\n");
  EXPECT_EQ(rows("Memory", {"SlotNo"}, "DevLocator=\"node0\""), "");
}

TEST_F(ProcessorCollection, TakesNothingBackFromSmbios) {
  sources_.smbios = smbios_;
  ASSERT_TRUE(collect().ok());
  const std::string before = processors() + memory();
  sources_.smbios.clear();
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(processors() + memory(), before);
}

TEST_F(ProcessorCollection, OfTheRunningMachineIsNeverEmpty) {
  sources_ = {};
  ASSERT_TRUE(collect().ok());
  EXPECT_NE(processors(), "");
  EXPECT_NE(memory(), "");
}

}  // namespace
}  // namespace zymdb::collect
