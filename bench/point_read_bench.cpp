// One PCI function's record of 26 columns by its key.
#include <benchmark/benchmark.h>

#include "inventory.h"
#include "raw_sqlite.h"
#include "zymdb_pci.h"

namespace {

using Record = _ZYMDB_PCI_Generic;

constexpr int kAdapters = 256;
constexpr char kSql[] =
    "SELECT "
    "_id,BridgeId,SegNo,BusNo,DeviceNo,FunctionNo,VendorId,DeviceId,RevId,ClsCode,SubVendorId,SubDeviceId,"
    "SlotNo,Location,SlotDesignation,SlotType,SlotDataBusWidth,Hotplug,PCIType,BladeSlotPort,NodeIndex,"
    "FunType,"
    "LanesInUse,MaxLanes,MaxPCIeType,PCIeType FROM PCIs WHERE FunKey=?";

bench::Inventory& inventory() {
  static bench::Inventory inventory(kAdapters);
  return inventory;
}

// Walks through all functions, so that no page is the favourite one.
class Keys {
 public:
  uint32_t next() {
    adapter_ = (adapter_ + 37) % kAdapters;
    return bench::Inventory::function_key(adapter_, adapter_ % bench::kFunctionsPerAdapter);
  }

 private:
  int adapter_ = 0;
};

void read_raw(sqlite3_stmt* statement, uint32_t funkey, Record& record) {
  sqlite3_bind_int64(statement, 1, funkey);
  if (sqlite3_step(statement) == SQLITE_ROW) {
    int column = 0;
    const auto read = [&](auto& field) {
      field =
          static_cast<std::remove_reference_t<decltype(field)>>(sqlite3_column_int64(statement, column++));
    };
    read(record._id), read(record.BridgeId), read(record.SegNo), read(record.BusNo), read(record.DeviceNo);
    read(record.FunctionNo), read(record.VendorId), read(record.DeviceId), read(record.RevId);
    read(record.ClsCode), read(record.SubVendorId), read(record.SubDeviceId), read(record.SlotNo);
    read(record.Location);
    bench::copy_column(statement, column++, record.SlotDesignation);
    read(record.SlotType), read(record.SlotDataBusWidth), read(record.Hotplug), read(record.PCIType);
    read(record.BladeSlotPort), read(record.NodeIndex), read(record.FunType), read(record.LanesInUse);
    read(record.MaxLanes), read(record.MaxPCIeType), read(record.PCIeType);
  }
  sqlite3_reset(statement);
}

// A read that found nothing would be fast, and worthless.
void check(benchmark::State& state, const Record& record, uint32_t funkey) {
  if (record.BusNo != static_cast<uint8_t>(funkey >> 8) || record.PCIeType != 3)
    state.SkipWithError("wrong row");
}

void Library(benchmark::State& state) {
  inventory();
  Keys keys;
  Record record{};
  uint32_t funkey = 0;
  for (auto _ : state) {
    funkey = keys.next();
    benchmark::DoNotOptimize(zymdb_get_pci_generic_info(funkey, &record));
  }
  check(state, record, funkey);
}

void KeptStatement(benchmark::State& state) {
  const bench::Connection connection = bench::open_raw(inventory().path());
  const bench::Prepared statement = bench::prepare(connection.get(), kSql);
  Keys keys;
  Record record{};
  uint32_t funkey = 0;
  for (auto _ : state) {
    funkey = keys.next();
    read_raw(statement.get(), funkey, record);
    benchmark::DoNotOptimize(record);
  }
  check(state, record, funkey);
}

void PreparedPerCall(benchmark::State& state) {
  const bench::Connection connection = bench::open_raw(inventory().path());
  Keys keys;
  Record record{};
  uint32_t funkey = 0;
  for (auto _ : state) {
    funkey = keys.next();
    read_raw(bench::prepare(connection.get(), kSql).get(), funkey, record);
    benchmark::DoNotOptimize(record);
  }
  check(state, record, funkey);
}

BENCHMARK(KeptStatement)->Name("point read/kept statement");
BENCHMARK(Library)->Name("point read/library");
BENCHMARK(PreparedPerCall)->Name("point read/prepared per call");

}  // namespace

BENCHMARK_MAIN();
