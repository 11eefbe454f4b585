// Collects a generated machine into a new inventory, then again and again while nothing has changed, beside
// reading its sources alone; prints how long each takes and how much memory was resident at most:
// collect_bench [FUNCTIONS [BYTES OF EACH [MEMORY MODULES]]].
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <vector>

#include "collect/collector.h"
#include "collect/steps/classes.h"
#include "peak_memory.h"
#include "support/large_dump.h"
#include "support/large_tables.h"
#include "support/temporary_folder.h"

namespace {

using zymdb::collect::Sources;

constexpr int kRounds = 9;

size_t argument(int argc, char** argv, int index, size_t otherwise) {
  return argc > index ? std::strtoul(argv[index], nullptr, 10) : otherwise;
}

template <class Body>
double seconds_of(Body body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

// Rows written; nothing for a collection that failed.
std::optional<size_t> collect(const Sources& sources) {
  const auto summary = zymdb::collect::collect_inventory(sources);
  if (!summary.ok()) std::fprintf(stderr, "collect_bench: %s\n", summary.error.c_str());
  size_t changed = 0;
  for (const auto& table : summary.tables) changed += table.changed();
  return summary.ok() ? std::optional(changed) : std::nullopt;
}

void read(const Sources& sources) {
  const zymdb::collect::Observer observer;
  const auto steps = zymdb::collect::steps_of({});
  const zymdb::collect::Survey survey(sources, observer, true);
  zymdb::collect::read_sources(steps, survey);
}

bool compare(const Sources& sources) {
  std::vector<double> reading;
  std::vector<double> whole;
  std::vector<double> ratios;
  bool is_unchanged = true;
  for (int round = 0; round < kRounds; ++round) {
    reading.push_back(seconds_of([&] { read(sources); }));
    whole.push_back(seconds_of([&] { is_unchanged = collect(sources) == 0U && is_unchanged; }));
    ratios.push_back(whole.back() / reading.back());
  }
  std::printf("unchanged: %.3f s, its sources alone %.3f s: %.2f x\n", median(whole), median(reading),
              median(ratios));
  return is_unchanged;
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
  const auto modules = static_cast<unsigned>(argument(argc, argv, 3, 192));
  const Sources sources{.lspci = dump, .smbios = folder.write("tables", LargeTables(modules).dump())};
  std::optional<size_t> rows;
  const double first = seconds_of([&] { rows = collect(sources); });
  if (rows) std::printf("first: %.3f s, %zu rows written\n", first, *rows);
  const bool is_done = rows && compare(sources);
  print_peak_memory();
  return is_done ? 0 : 1;
}
