// One record by its key.
#include <benchmark/benchmark.h>

#include <cstring>

#include "comparison.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_network.h"
#include "zymdb_pci.h"
#include "zymdb_storage.h"

using bench::Columns;
using bench::Comparison;
using bench::Statements;

namespace {

constexpr int kRows = 1000;

uint32_t key_of(int turn) {
  return bench::function_key(bench::row_of(turn, kRows));
}

bool is_read(int turn, const _ZYMDB_PCI_Generic& function) {
  return function.BusNo == static_cast<uint8_t>(bench::row_of(turn, kRows)) && function.PCIeType == 3;
}

bool read_by_library(int turn) {
  _ZYMDB_PCI_Generic function{};
  zymdb_get_pci_generic_info(key_of(turn), &function);
  return is_read(turn, function);
}

void add_function() {
  bench::add({"function, 26 columns",
              kRows,
              {"SELECT " ZYMDB_FUNCTION_COLUMNS " FROM PCIs WHERE FunKey=?"},
              read_by_library,
              [](Statements& raw, int turn) {
                _ZYMDB_PCI_Generic function{};
                raw.one(
                    0, [&](Columns row) { bench::read_function(row, function); }, key_of(turn));
                return is_read(turn, function);
              }});
}

void add_card_name() {
  constexpr auto is_name = [](const char* name) { return std::strncmp(name, "a dual-port", 11) == 0; };
  bench::add({"card name",
              kRows,
              {"SELECT CardName FROM PCIAdapter WHERE PCIFuncKey=?"},
              [=](int turn) {
                char name[129];
                return zymdb_get_pci_cardname_by_funkey(key_of(turn), name, sizeof name) == 0 &&
                       is_name(name);
              },
              [=](Statements& raw, int turn) {
                char name[129];
                return raw.one(
                           0, [&](Columns row) { row.text(name); }, key_of(turn)) &&
                       is_name(name);
              }});
}

void add_pci_ids() {
  struct Ids {
    uint16_t vendor, device, subvendor, subdevice;
    bool are_read() const {
      return vendor == 0x15B3 && device == 0x1017 && subvendor == 0x15B3 && subdevice == 8;
    }
  };
  bench::add({"PCI ids",
              kRows,
              {"SELECT VendorId,DeviceId,SubVendorId,SubDeviceId FROM PCIs WHERE FunKey=?"},
              [](int turn) {
                Ids ids{};
                zymdb_get_pci_id_by_funkey(static_cast<int>(key_of(turn)), &ids.vendor, &ids.device,
                                           &ids.subvendor, &ids.subdevice);
                return ids.are_read();
              },
              [](Statements& raw, int turn) {
                Ids ids{};
                raw.one(
                    0,
                    [&](Columns row) {
                      ids.vendor = row.number(), ids.device = row.number();
                      ids.subvendor = row.number(), ids.subdevice = row.number();
                    },
                    key_of(turn));
                return ids.are_read();
              }});
}

// Two reads: the function's hardware id and type, and their product data.
void add_vpd() {
  constexpr auto is_vpd = [](const _ZYMDB_PCI_VPD& vpd) { return std::strcmp(vpd.FRUNo, "01PG001") == 0; };
  bench::add({"vital product data",
              kRows,
              {"SELECT HardwareId,HardwareTypeId FROM PCIs WHERE FunKey=?",
               "SELECT UUID,ProductName,Manufacture,SerialNo,PartNo,Model,FRUNo FROM VPDs "
               "WHERE HardwareId=? AND HardwareTypeId=?"},
              [=](int turn) {
                _ZYMDB_PCI_VPD vpd{};
                return zymdb_get_pci_vpd_info(key_of(turn), &vpd) == 0 && is_vpd(vpd);
              },
              [=](Statements& raw, int turn) {
                uint32_t id = 0;
                uint32_t type = 0;
                raw.one(
                    0, [&](Columns row) { id = row.number(), type = row.number(); }, key_of(turn));
                _ZYMDB_PCI_VPD vpd{};
                const auto read = [&](Columns row) {
                  row.text(vpd.UUID), row.text(vpd.ProductName), row.text(vpd.Manufacture),
                      row.text(vpd.SerialNo);
                  row.text(vpd.PartNo), row.text(vpd.Model), row.text(vpd.FRUNo);
                };
                return raw.one(1, read, id, type) && is_vpd(vpd);
              }});
}

void add_link_state() {
  constexpr auto is_state = [](const _ZYMDB_PCI_PortLinkState& state, int turn) {
    return state.LinkSpeed == 25000 &&
           state.RxUtil == static_cast<unsigned>(bench::row_of(turn, kRows) % 100);
  };
  bench::add({"port link state",
              kRows,
              {"SELECT Idx,LinkStatus,LinkSpeed,TxUtil,RxUtil FROM PCIPhysicalPortStat WHERE PCIFuncKey=?"},
              [=](int turn) {
                _ZYMDB_PCI_PortLinkState state{};
                return zymdb_get_network_physical_port_link_state(key_of(turn), &state, 0) == 0 &&
                       is_state(state, turn);
              },
              [=](Statements& raw, int turn) {
                _ZYMDB_PCI_PortLinkState state{};
                const auto read = [&](Columns row) {
                  state.Idx = row.number(), state.LinkStatus = row.number(), state.LinkSpeed = row.number();
                  state.TxUtil = row.number(), state.RxUtil = row.number();
                };
                return raw.one(0, read, key_of(turn)) && is_state(state, turn);
              }});
}

void add_memory_health() {
  bench::add({"memory health",
              kRows,
              {"SELECT MajorHealth,MinorHealth,RepairStatus FROM Memory WHERE SlotNo=?"},
              [](int turn) {
                unsigned major = 0, minor = 0, repair = 1;
                zymdb_get_mpfa_health_by_slot(bench::row_of(turn, kRows), &major, &minor, &repair);
                return major == 1 && minor == 1 && repair == 0;
              },
              [](Statements& raw, int turn) {
                unsigned major = 0, minor = 0, repair = 1;
                raw.one(
                    0,
                    [&](Columns row) { major = row.number(), minor = row.number(), repair = row.number(); },
                    bench::row_of(turn, kRows));
                return major == 1 && minor == 1 && repair == 0;
              }});
}

void add_processor() {
  constexpr auto is_processor = [](const _ZYMDB_Processor& processor, uint32_t id) {
    return processor._id == id && processor.L3CacheConfig == 898;
  };
  bench::add(
      {"processor by name, 33 columns",
       kRows,
       {"SELECT * FROM Processor WHERE _id=?"},
       [=](int turn) {
         _ZYMDB_Processor processor{};
         const uint32_t id = processor._id = static_cast<uint32_t>(bench::row_of(turn, kRows) + 1);
         return zymdb_get_processor(&processor) == 0 && is_processor(processor, id);
       },
       [=](Statements& raw, int turn) {
         _ZYMDB_Processor p{};
         const uint32_t id = static_cast<uint32_t>(bench::row_of(turn, kRows) + 1);
         const auto read = [&](Columns row) {
           p._id = row.number(), p.ProcId = row.number(), p.ProcType = row.number(), p.Family = row.number();
           row.text(p.Socket), row.text(p.Manufacturer), row.text(p.Version);
           p.Voltage = row.number(), p.ExtClock = row.number(), p.MaxSpeed = row.number();
           p.CurSpeed = row.number(), p.Status = row.number(), p.Upgrade = row.number();
           row.text(p.SerialNo), row.text(p.AssetTag), row.text(p.PartNo);
           p.CoreCount = row.number(), p.CoreEnabled = row.number(), p.ThreadCount = row.number();
           p.Characteristics = row.number(), p.L1CacheMaxSize = row.number();
           p.L1CacheInstalled = row.number(), p.L1CacheType = row.number(), p.L1CacheConfig = row.number();
           p.L2CacheMaxSize = row.number(), p.L2CacheInstalled = row.number(), p.L2CacheType = row.number();
           p.L2CacheConfig = row.number(), p.L3CacheMaxSize = row.number(), p.L3CacheInstalled = row.number();
           p.L3CacheType = row.number(), p.L3CacheConfig = row.number(), p.NodeIndex = row.number();
         };
         return raw.one(0, read, id) && is_processor(p, id);
       }});
}

void add_memory() {
  constexpr auto is_memory = [](const _ZYMDB_Memory& memory, uint32_t id) {
    return memory._id == id && memory.Capacity == uint64_t{32} << 30 && memory.MinorHealth == 1;
  };
  bench::add({"memory module by name, 44 columns",
              kRows,
              {"SELECT * FROM Memory WHERE _id=?"},
              [=](int turn) {
                _ZYMDB_Memory memory{};
                const uint32_t id = static_cast<uint32_t>(bench::row_of(turn, kRows) + 1);
                return zymdb_get_memory_by_id(&memory, id) == 0 && is_memory(memory, id);
              },
              [=](Statements& raw, int turn) {
                _ZYMDB_Memory m{};
                const uint32_t id = static_cast<uint32_t>(bench::row_of(turn, kRows) + 1);
                const auto read = [&](Columns row) {
                  m._id = row.number(), m.ArrayId = row.number(), m.SlotNo = row.number();
                  m.TotalWidth = row.number(), m.DataWidth = row.number(), m.MemSize = row.number();
                  m.FormFactor = row.number(), m.MemType = row.number(), m.TypeDetail = row.number();
                  m.MaxSpeed = row.number(), m.ClockSpeed = row.number();
                  row.text(m.DevLocator), row.text(m.BankLocator), row.text(m.Manufacturer);
                  row.text(m.SerialNo), row.text(m.AssetTag), row.text(m.PartNo);
                  m.Attributes = row.number(), m.NodeIndex = row.number(), m.Capacity = row.number();
                  m.MemCapacity = row.number(), m.AppDirCap = row.number(), m.UnconfigCap = row.number();
                  m.InaccCap = row.number(), m.ReservedCap = row.number(), m.Classification = row.number();
                  m.RemainingLife = row.number(), m.SecurityState = row.number(),
                  m.HealthStatus = row.number();
                  m.AlarmTrips = row.number(), m.LDShutdownCount = row.number(),
                  m.AITDRAMStatus = row.number();
                  m.HealthStatusReason = row.number(), m.LLShutdownStatus = row.number();
                  m.InfoMask = row.number(), m.CPUIndex = row.number(), m.iMCNum = row.number();
                  m.ChannelNum = row.number(), m.DimmNum = row.number();
                  row.text(m.FirmwareVersion), row.text(m.SoftwareID);
                  m.MajorHealth = row.number(), m.MinorHealth = row.number(), m.RepairStatus = row.number();
                };
                return raw.one(0, read, id) && is_memory(m, id);
              }});
}

// What threads read together, each on its own way through the functions.
void read_in_threads(benchmark::State& state) {
  bench::inventory(kRows);
  int turn = state.thread_index() * 500;
  // Each time all threads but one are new: what their connections take to open, and to keep results, is no
  // part of a read.
  for (int warm = 0; warm < 3 * kRows; ++warm) read_by_library(turn++);
  for (auto _ : state)
    if (!read_by_library(turn++)) state.SkipWithError("wrong result");
  state.SetItemsProcessed(state.iterations());
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  add_function();
  add_card_name();
  add_pci_ids();
  add_vpd();
  add_link_state();
  add_memory_health();
  add_processor();
  add_memory();
  // Made by one thread, before there are more.
  bench::inventory(kRows);
  benchmark::RegisterBenchmark("function, by threads", read_in_threads)
      ->Threads(1)
      ->Threads(2)
      ->UseRealTime();
  benchmark::RunSpecifiedBenchmarks();
}
