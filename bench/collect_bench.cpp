// Collects a generated machine twice into a new inventory and prints how long each run takes and how much
// memory was resident at most: collect_bench [FUNCTIONS [BYTES OF EACH]].
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "collect/collector.h"
#include "peak_memory.h"
#include "support/large_dump.h"
#include "support/temporary_folder.h"

namespace {

using zymdb::collect::collect_inventory;

size_t argument(int argc, char** argv, int index, size_t otherwise) {
  return argc > index ? std::strtoul(argv[index], nullptr, 10) : otherwise;
}

bool collect(const std::string& dump, const char* run) {
  const auto start = std::chrono::steady_clock::now();
  const auto summary = collect_inventory({.lspci = dump, .smbios = "", .sysfs = ""});
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  size_t changed = 0;
  for (const auto& table : summary.tables) changed += table.changed();
  std::printf("%s run: %.2f s, %zu rows written%s%s\n", run, taken.count(), changed, summary.ok() ? "" : ", ",
              summary.error.c_str());
  return summary.ok();
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryFolder folder;
  setenv("ZYMDB_INVENTORY", folder.file("inventory.db").c_str(), 1);
  const std::string dump = folder.file("dump");
  {
    std::ofstream out(dump);
    LargeDump(out, argument(argc, argv, 1, 10'000), argument(argc, argv, 2, 4096)).write();
  }
  const bool is_done = collect(dump, "first") && collect(dump, "second");
  print_peak_memory();
  return is_done ? 0 : 1;
}
