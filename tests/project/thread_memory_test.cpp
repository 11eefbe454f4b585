// What a thread costs that lists things: its connection to the database, mostly.
#include <gtest/gtest.h>

#include <barrier>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "support/inventory.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_pci.h"

namespace {

constexpr int kThreads = 16;
constexpr long kMostKiB = 240;

long resident_kib() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmRSS:")) return std::atol(line.c_str() + 6);
  return 0;
}

void list_everything() {
  _ZYMDB_PCI_Adapter_List adapters{};
  EXPECT_EQ(zymdb_get_pci_adapter_list(&adapters), 0);
  std::free(adapters.adapters);
  _ZYMDB_Processor_List processors{};
  EXPECT_EQ(zymdb_get_processor_list(&processors), 0);
  std::free(processors.ids);
  _ZYMDB_Memory_List modules{};
  EXPECT_EQ(zymdb_get_memory_list(&modules), 0);
  std::free(modules.ids);
}

class ThreadMemoryTest : public InventoryTest {};

TEST_F(ThreadMemoryTest, AThreadCostsAFewHundredKibibytes) {
  list_everything();
  const long before = resident_kib();
  std::barrier listed(kThreads + 1);
  std::barrier measured(kThreads + 1);
  std::vector<std::jthread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      list_everything();
      listed.arrive_and_wait();
      measured.arrive_and_wait();
    });
  }
  listed.arrive_and_wait();
  const long each = (resident_kib() - before) / kThreads;
  measured.arrive_and_wait();
  RecordProperty("KiB", std::to_string(each));
  EXPECT_LT(each, kMostKiB);
}

}  // namespace
