// The adapter list: adapters of four functions each, folded into records, with the slots' package ids.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "inventory.h"
#include "pci/slot_type.h"
#include "raw_sqlite.h"
#include "zymdb_pci.h"

namespace {

using Record = _ZYMDB_PCI_Adapter;

constexpr char kAdapterSql[] =
    "SELECT "
    "PCIKey,NodeNo,SlotNo,HealthStatus,ConnectorType,CardName,AIMSupported,Location,PCIFuncKey,count(*) "
    "FROM PCIAdapter WHERE 1 GROUP BY PCIKey";
constexpr char kPackageSql[] = "SELECT SlotNo,Location,PackageID1,PackageID2 FROM NCSIPackageID";

// One inventory at a time is open in a process.
bench::Inventory& inventory(int adapters) {
  static std::unique_ptr<bench::Inventory> current;
  static int size = 0;
  if (size != adapters) {
    current.reset();
    current = std::make_unique<bench::Inventory>(adapters);
    size = adapters;
  }
  return *current;
}

void check(benchmark::State& state, uint32_t count, const Record* records) {
  if (count != state.range(0) || std::strcmp(records[count - 1].ConnectorTypeName, "PCI-E Gen 3 x16") != 0)
    state.SkipWithError("wrong list");
}

void Library(benchmark::State& state) {
  inventory(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    _ZYMDB_PCI_Adapter_List list{};
    zymdb_get_pci_adapter_list(&list);
    check(state, list.count, list.adapters);
    std::free(list.adapters);
  }
}

void read_record(sqlite3_stmt* row, Record& record) {
  record.PCIKey = static_cast<uint32_t>(sqlite3_column_int64(row, 0));
  record.NodeNo = static_cast<uint16_t>(sqlite3_column_int(row, 1));
  record.SlotNo = static_cast<uint16_t>(sqlite3_column_int(row, 2));
  record.HealthStatus = static_cast<uint8_t>(sqlite3_column_int(row, 3));
  const auto* connector = reinterpret_cast<const char*>(sqlite3_column_text(row, 4));
  record.ConnectorType =
      connector != nullptr ? static_cast<uint16_t>(std::strtoul(connector, nullptr, 0)) : 0;
  bench::copy_column(row, 5, record.CardName);
  record.AIMSupported = static_cast<uint8_t>(sqlite3_column_int(row, 6));
  record.Location = static_cast<uint8_t>(sqlite3_column_int(row, 7));
  benchmark::DoNotOptimize(sqlite3_column_int64(row, 8) + sqlite3_column_int64(row, 9));
  std::strncpy(record.ConnectorTypeName, zymdb::slot_type_name(record.ConnectorType), 64);
  record.NcsiIdValid = 0;
  record.PackageID1 = record.PackageID2 = 0xFF;
}

// Grows the array as the rows come: the engine does not tell their number beforehand.
void list_raw(benchmark::State& state, sqlite3_stmt* adapters, sqlite3_stmt* packages) {
  while (sqlite3_step(packages) == SQLITE_ROW) benchmark::DoNotOptimize(sqlite3_column_int(packages, 0));
  sqlite3_reset(packages);
  Record* records = nullptr;
  uint32_t count = 0;
  uint32_t room = 0;
  while (sqlite3_step(adapters) == SQLITE_ROW) {
    if (count == room) {
      room = room == 0 ? 64 : room * 2;
      records = static_cast<Record*>(std::realloc(records, room * sizeof(Record)));
    }
    std::memset(static_cast<void*>(&records[count]), 0, sizeof(Record));
    read_record(adapters, records[count++]);
  }
  sqlite3_reset(adapters);
  check(state, count, records);
  std::free(records);
}

void KeptStatement(benchmark::State& state) {
  const auto connection = bench::open_raw(inventory(static_cast<int>(state.range(0))).path());
  const auto adapters = bench::prepare(connection.get(), kAdapterSql);
  const auto packages = bench::prepare(connection.get(), kPackageSql);
  for (auto _ : state) list_raw(state, adapters.get(), packages.get());
}

void PreparedPerCall(benchmark::State& state) {
  const auto connection = bench::open_raw(inventory(static_cast<int>(state.range(0))).path());
  for (auto _ : state) {
    const auto adapters = bench::prepare(connection.get(), kAdapterSql);
    const auto packages = bench::prepare(connection.get(), kPackageSql);
    list_raw(state, adapters.get(), packages.get());
  }
}

BENCHMARK(KeptStatement)->Name("adapter list/kept statement")->Arg(64)->Arg(1024);
BENCHMARK(Library)->Name("adapter list/library")->Arg(64)->Arg(1024);
BENCHMARK(PreparedPerCall)->Name("adapter list/prepared per call")->Arg(64)->Arg(1024);

}  // namespace

BENCHMARK_MAIN();
