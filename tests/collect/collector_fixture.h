// Collections of the example server's dumps on an embedded database of their own.
#ifndef ZYMDB_TESTS_COLLECT_COLLECTOR_FIXTURE_H
#define ZYMDB_TESTS_COLLECT_COLLECTOR_FIXTURE_H

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "collect/collector.h"
#include "collect/machines.h"
#include "support/inventory.h"

namespace zymdb::collect {

// Few names, so that expectations do not depend on the version of the system's list.
inline constexpr char kNames[] =
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

}  // namespace zymdb::collect

#endif
