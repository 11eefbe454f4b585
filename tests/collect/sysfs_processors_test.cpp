// What lscpu and lsmem make of a tree is what the readers must make of it.
#include "collect/sources/sysfs/sysfs_processors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "collect/machines.h"
#include "collect/processor_tree.h"
#include "collect/sources/sysfs/proc_cpuinfo.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

using Fields = std::map<std::string, std::string>;

Fields fields_of(const std::string& command) {
  Fields fields;
  for (const auto& line : lines_of(output_of(command))) {
    const size_t colon = line.find(':');
    if (colon != std::string::npos)
      fields.emplace(trimmed(line.substr(0, colon)), trimmed(line.substr(colon + 1)));
  }
  return fields;
}

// 0 where it does not say.
uint64_t number(const Fields& fields, const char* name) {
  const auto found = fields.find(name);
  return found == fields.end() ? 0 : leading_number(found->second).value_or(0);
}

uint64_t sum_of(const std::vector<SmbiosProcessor>& processors, size_t level) {
  uint64_t kilobytes = 0;
  for (const auto& processor : processors) kilobytes += processor.caches.at(level - 1).installed.value_or(0);
  return kilobytes << 10;
}

void expect_processors_of_lscpu(const std::string& root) {
  const auto processors = read_sysfs_processors(root + "/sys");
  ASSERT_TRUE(processors);
  const auto fields = fields_of("LC_ALL=C lscpu -B -s '" + root + "'");
  ASSERT_EQ(processors->size(), number(fields, "Socket(s)"));
  for (const auto& processor : *processors) {
    EXPECT_EQ(processor.core_count, number(fields, "Core(s) per socket"));
    EXPECT_EQ(processor.thread_count,
              number(fields, "Core(s) per socket") * number(fields, "Thread(s) per core"));
    EXPECT_EQ(processor.max_speed.value_or(0), number(fields, "CPU max MHz"));
    if (fields.contains("Model name")) {
      EXPECT_EQ(processor.version.value_or("-"), fields.at("Model name"));
    }
  }
  EXPECT_EQ(sum_of(*processors, 1), number(fields, "L1d cache") + number(fields, "L1i cache"));
  EXPECT_EQ(sum_of(*processors, 2), number(fields, "L2 cache"));
  EXPECT_EQ(sum_of(*processors, 3), number(fields, "L3 cache"));
}

void expect_memory_of_lsmem(const std::string& root) {
  const auto memory = read_sysfs_memory(root + "/sys");
  ASSERT_TRUE(memory);
  uint64_t mebibytes = 0;
  for (const auto& node : *memory) mebibytes += node.size.value();
  const auto fields = fields_of("LC_ALL=C lsmem -b --summary=only -s '" + root + "'");
  EXPECT_EQ(mebibytes << 20, number(fields, "Total online memory") + number(fields, "Total offline memory"));
}

constexpr char kXeon[] =
    "vendor_id\t: GenuineIntel\ncpu family\t: 6\nmodel\t\t: 106\n"
    "model name\t: Intel(R) Xeon(R) Platinum 8358 CPU @ 2.60GHz\nstepping\t: 6\ncpu MHz\t\t: "
    "2600.000\nflags\t\t: fpu\n";

TEST(SysfsProcessors, AreThoseOfLscpu) {
  for (const auto& [packages, cores, threads] :
       {std::tuple{1U, 1U, 1U}, {1U, 4U, 1U}, {2U, 4U, 2U}, {4U, 2U, 2U}}) {
    SCOPED_TRACE(std::to_string(packages) + "/" + std::to_string(cores) + "/" + std::to_string(threads));
    const ProcessorTree tree;
    tree.processors(packages, cores, threads);
    tree.cpuinfo(packages * cores * threads, kXeon);
    expect_processors_of_lscpu(tree.root());
  }
}

TEST(SysfsProcessors, OfTheRunningMachineAreThoseOfLscpu) {
  expect_processors_of_lscpu("");
}

TEST(SysfsProcessors, HaveCodesAndNamesAsSmbiosHasThem) {
  const ProcessorTree tree;
  tree.processors(2, 4, 2);
  tree.cpuinfo(16, kXeon);
  const auto processors = read_sysfs_processors(tree.sysfs()).value();
  ASSERT_EQ(processors.size(), 2U);
  const auto& second = processors[1];
  EXPECT_EQ(second.socket, "package1");
  EXPECT_EQ(second.type, 3) << "a central processor";
  EXPECT_TRUE(second.populated());
  EXPECT_EQ(second.manufacturer, "Intel");
  EXPECT_EQ(second.cores_enabled, 4);
  EXPECT_EQ(second.current_speed, 2600);
  EXPECT_EQ(second.caches[0].type, 1) << "data and instructions: other";
  EXPECT_EQ(second.caches[1].type, 5) << "unified";
  EXPECT_EQ(second.caches[2].installed, 24576U);
  EXPECT_FALSE(second.id);
  EXPECT_FALSE(second.serial_number);
}

TEST(SysfsProcessors, ThatAreSwitchedOffAreNotCounted) {
  const ProcessorTree tree;
  tree.processors(1, 2, 2);
  std::filesystem::remove_all(tree.sysfs() + "/devices/system/cpu/cpu3/topology");
  const auto processors = read_sysfs_processors(tree.sysfs()).value();
  ASSERT_EQ(processors.size(), 1U);
  EXPECT_EQ(processors[0].thread_count, 3);
  EXPECT_EQ(processors[0].core_count, 2);
}

TEST(SysfsProcessors, AreThoseOfProcWhereTheTreeTellsOfNone) {
  const ProcessorTree tree;
  EXPECT_FALSE(read_sysfs_processors(tree.sysfs()));
  std::filesystem::create_directories(tree.sysfs());
  tree.write("proc/cpuinfo",
             "processor : 0\nmodel name : A\nphysical id : 0\ncore id : 0\n\n"
             "processor : 1\nmodel name : A\nphysical id : 0\ncore id : 0\n\n"
             "processor : 2\nmodel name : A\nphysical id : 3\ncore id : 0\n\n");
  const auto processors = read_sysfs_processors(tree.sysfs()).value();
  ASSERT_EQ(processors.size(), 2U);
  EXPECT_EQ(processors[0].socket, "package0");
  EXPECT_EQ(processors[0].thread_count, 2);
  EXPECT_EQ(processors[0].core_count, 1);
  EXPECT_EQ(processors[1].socket, "package3");
  EXPECT_EQ(processors[1].version, "A");
  EXPECT_FALSE(processors[1].caches[0].installed);
}

TEST(SysfsProcessors, OfArmAreNamedAsLscpuNamesThem) {
  constexpr std::pair<const char*, const char*> kIds[] = {
      {"0x41", "0xd03"}, {"0x41", "0xd08"}, {"0x41", "0xd0c"}, {"0x41", "0xd40"},
      {"0x41", "0xd49"}, {"0x41", "0xd07"}, {"0x41", "0xc07"}, {"0x43", "0x0af"},
      {"0x43", "0x0a1"}, {"0x46", "0x001"}, {"0x48", "0xd01"}, {"0x70", "0x662"},
      {"0x70", "0x663"}, {"0x42", "0x516"}, {"0x4e", "0x004"}, {"0x51", "0xc00"},
  };
  for (const auto& [implementer, part] : kIds) {
    const ProcessorTree tree;
    tree.processors(1, 2, 1);
    tree.cpuinfo(2, "BogoMIPS\t: 50.00\nCPU implementer\t: " + std::string(implementer) +
                        "\nCPU architecture: 8\nCPU variant\t: 0x3\nCPU part\t: " + part +
                        "\nCPU revision\t: 1\n");
    const auto fields = fields_of("LC_ALL=C lscpu -s '" + tree.root() + "'");
    const auto processor = read_sysfs_processors(tree.sysfs()).value().at(0);
    EXPECT_EQ(processor.manufacturer.value_or("-"), fields.at("Vendor ID")) << implementer;
    EXPECT_EQ(processor.version.value_or("-"), fields.at("Model name")) << implementer << part;
  }
}

TEST(SysfsProcessors, OfAnUnknownImplementerAreNamedByNothing) {
  const ProcessorTree tree;
  tree.cpuinfo(1, "CPU implementer : 0x77\nCPU part : 0xfff\n");
  std::filesystem::create_directories(tree.sysfs());
  const auto processor = read_sysfs_processors(tree.sysfs()).value().at(0);
  EXPECT_FALSE(processor.manufacturer);
  EXPECT_FALSE(processor.version);
}

TEST(SysfsProcessors, SurviveWhateverStandsInTheirFiles) {
  const ProcessorTree tree;
  tree.processors(1, 1, 1);
  const std::string folder = "sys/devices/system/cpu/cpu0/";
  for (const char* content : {"", "\n", "99999999999999999999", "-1", "x", "4294967295\n"}) {
    for (const char* file : {"topology/physical_package_id", "cache/index0/level", "cache/index0/size",
                             "cpufreq/cpuinfo_max_freq", "cpufreq/base_frequency"})
      tree.write(folder + file, content);
    tree.write("proc/cpuinfo", content);
    const auto processors = read_sysfs_processors(tree.sysfs());
    ASSERT_TRUE(processors);
    EXPECT_EQ(processors->at(0).thread_count, 1);
  }
}

TEST(SysfsMemory, IsThatOfLsmem) {
  const ProcessorTree tree;
  tree.memory(0, 0, 8);
  tree.memory(1, 8, 24);
  expect_memory_of_lsmem(tree.root());
  const auto memory = read_sysfs_memory(tree.sysfs()).value();
  ASSERT_EQ(memory.size(), 2U);
  EXPECT_EQ(memory[0].locator, "node0");
  EXPECT_EQ(memory[0].size, 1024U);
  EXPECT_EQ(memory[1].locator, "node1");
  EXPECT_EQ(memory[1].size, 3072U);
}

TEST(SysfsMemory, OfTheRunningMachineIsThatOfLsmem) {
  expect_memory_of_lsmem("");
}

TEST(SysfsMemory, IsThatOfANodeOrTheSystemWhereThereAreNoBlocks) {
  const ProcessorTree tree;
  EXPECT_FALSE(read_sysfs_memory(tree.sysfs()));
  std::filesystem::create_directories(tree.sysfs());
  tree.write("proc/meminfo", "MemTotal:       32768000 kB\nMemFree: 1 kB\n");
  auto memory = read_sysfs_memory(tree.sysfs()).value();
  ASSERT_EQ(memory.size(), 1U);
  EXPECT_EQ(memory[0].locator, "node0");
  EXPECT_EQ(memory[0].size, 32000U);
  tree.write("sys/devices/system/node/node1/meminfo", "Node 1 MemTotal:       4096 kB\n");
  tree.write("sys/devices/system/node/node0/meminfo", "Node 0 MemTotal:       0 kB\n");
  memory = read_sysfs_memory(tree.sysfs()).value();
  ASSERT_EQ(memory.size(), 1U) << "a node without memory has none";
  EXPECT_EQ(memory[0].locator, "node1");
  EXPECT_EQ(memory[0].size, 4U);
}

// The recorded machines' own trees.
class RecordedProcessors : public testing::TestWithParam<RecordedFile> {};
INSTANTIATE_TEST_SUITE_P(Machines, RecordedProcessors, testing::ValuesIn(recorded_sysfs_archives()),
                         [](const auto& instance) { return name_of(instance.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RecordedProcessors);

TEST_P(RecordedProcessors, AreThoseOfLscpu) {
  const TemporaryFolder folder;
  output_of("tar -xf '" + GetParam().path + "' -C '" + folder.path().string() + "' --no-same-owner");
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
    if (!entry.path().string().ends_with("/sys/devices/system/cpu/cpu0/topology")) continue;
    const std::string path = entry.path().string();
    const std::string root = path.substr(0, path.rfind("/sys/devices/"));
    if (std::filesystem::exists(root + "/proc/cpuinfo") &&
        std::filesystem::exists(root + "/sys/devices/system/cpu/possible"))
      expect_processors_of_lscpu(root);
    if (std::filesystem::exists(root + "/sys/devices/system/memory")) expect_memory_of_lsmem(root);
  }
}

}  // namespace
}  // namespace zymdb::collect
