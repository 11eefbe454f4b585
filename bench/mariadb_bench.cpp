// An inventory on a MariaDB server of the benchmark's own, beside Connector/C's prepared statements on the
// same server.
#include <benchmark/benchmark.h>
#include <sched.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>

#include "collect/collector.h"
#include "comparison.h"
#include "controller/database_client.h"
#include "raw_mariadb.h"
#include "support/large_dump.h"
#include "support/large_tables.h"
#include "support/temporary_folder.h"
#include "zymdb_pci.h"
#include "zymdb_storage.h"

namespace {

using bench::MariadbStatement;

constexpr int kRows = 1000;
constexpr int kDrives = 250;  // of which each has a bay of its own
// Which make a collection of a thousand rows.
constexpr size_t kFunctions = 352;
constexpr size_t kModules = 32;
constexpr char kFunctionKinds[] = "nnnnnnnnnnnnnntnnnnnnnnnnn";

// Started and stopped by the script that starts the tests' server.
class Server {
 public:
  Server() { is_started_ = run("start", " bench collected"); }
  ~Server() {
    close();
    run("stop", "");
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  bool is_started() const { return is_started_; }
  std::string folder() const { return folder_.file("server"); }
  // Makes it the one that the library reads and writes from here on.
  void open(const std::string& database) {
    close();
    const std::string address = "mariadb://zymdb@localhost/" + database + "?socket=" + folder() +
                                "/socket&password-file=" + folder() + "/password";
    setenv("ZYMDB_INVENTORY", address.c_str(), 1);
    handle_ = get_dmdb_handle();
    if (handle_ == nullptr) throw std::runtime_error("no inventory of the name " + database);
  }

 private:
  bool run(const std::string& step, const std::string& databases) const {
    return std::system(
               ("python3 '" ZYMDB_SERVER_SCRIPT "' " + step + " '" + folder() + "'" + databases).c_str()) ==
           0;
  }

  void close() {
    if (handle_ != nullptr) zym_db_close(std::exchange(handle_, nullptr));
  }

  TemporaryFolder folder_;
  bool is_started_ = false;
  _zym_db_handle_t* handle_ = nullptr;
};

// On which processors this thread and the server run. On one, a round trip is two changes of thread. Between
// two it is mostly what the waking of an idle one takes, which can be ten times as much, and hangs on neither
// side.
class Processors {
 public:
  Processors() { sched_getaffinity(0, sizeof all_, &all_); }

  void take_one(const Server& server) const {
    cpu_set_t one{};
    CPU_ZERO(&one);
    int first = 0;
    while (CPU_ISSET(first, &all_) == 0) ++first;
    CPU_SET(first, &one);
    take(one, server);
  }
  void take_all(const Server& server) const { take(all_, server); }

 private:
  static void take(const cpu_set_t& processors, const Server& server) {
    sched_setaffinity(0, sizeof processors, &processors);
    int process = 0;
    std::ifstream(server.folder() + "/pid") >> process;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task"))
      sched_setaffinity(std::stoi(thread.path().filename()), sizeof processors, &processors);
  }

  cpu_set_t all_{};
};

void fill(MYSQL* mysql) {
  const std::string rows = std::to_string(kRows);
  const std::string statements[] = {
      "INSERT INTO PCIs (_id,FunKey,DevKey,HardwareId,HardwareTypeId,BridgeId,SegNo,BusNo,DeviceNo,"
      "FunctionNo,VendorId,DeviceId,RevId,ClsCode,SubVendorId,SubDeviceId,SlotNo,Location,SlotDesignation,"
      "SlotType,SlotDataBusWidth,Hotplug,PCIType,BladeSlotPort,NodeIndex,FunType,LanesInUse,MaxLanes,"
      "MaxPCIeType,PCIeType) SELECT seq+1,seq<<8,65536+seq,seq<<8,3,1,0,seq&255,0,0,0x15B3,0x1017,0,0x020000,"
      "0x15B3,8,seq,1,'PCIe Slot',0xB6,13,0,2,0,0,2,8,16,3,3 FROM seq_0_to_" +
          std::to_string(kRows - 1),
      "INSERT INTO AimDisks (_id,PCIFuncKey,SlotNo,CtrlType,BayNo,LocationId,Location,Presence,DriveTypeId,"
      "SerialNo,Model) SELECT seq+1,0,255,0,seq,2,concat('Bay ',seq),1,1,lpad(seq,8,'S0000000'),"
      "'VENDOR MZ7LH480HAHQ-000V3' FROM seq_0_to_" +
          std::to_string(kDrives - 1),
      "ANALYZE TABLE PCIs,AimDisks"};
  for (const std::string& statement : statements) {
    if (mysql_query(mysql, statement.c_str()) != 0) throw std::runtime_error(mysql_error(mysql));
    mysql_free_result(mysql_store_result(mysql));
  }
}

bool is_function(int turn, const _ZYMDB_PCI_Generic& function) {
  return function.BusNo == static_cast<uint8_t>(bench::row_of(turn, kRows)) && function.PCIeType == 3;
}

bool read_by_library(int turn) {
  _ZYMDB_PCI_Generic function{};
  zymdb_get_pci_generic_info(bench::function_key(bench::row_of(turn, kRows)), &function);
  return is_function(turn, function);
}

void add_function(MYSQL* mysql) {
  const auto raw = std::make_shared<MariadbStatement>(
      mysql, "SELECT " ZYMDB_FUNCTION_COLUMNS " FROM PCIs WHERE FunKey=? ORDER BY _id", kFunctionKinds);
  bench::add("function, 26 columns", kRows,
             {{bench::kLibrary, read_by_library},
              {bench::kLimit, [=](int turn) {
                 _ZYMDB_PCI_Generic function{};
                 raw->each([&](MariadbStatement& row) { bench::read_function(row, function); },
                           bench::function_key(bench::row_of(turn, kRows)));
                 return is_function(turn, function);
               }}});
}

void add_functions(MYSQL* mysql) {
  const auto raw = std::make_shared<MariadbStatement>(
      mysql, "SELECT " ZYMDB_FUNCTION_COLUMNS " FROM PCIs WHERE Location!=9 ORDER BY _id", kFunctionKinds);
  bench::add("functions", kRows,
             {{bench::kLibrary,
               [](int) {
                 _ZYMDB_PCI_Generic_List list{};
                 zymdb_get_pci_generic_info_list(&list, "Location!=9");
                 const bool is_right = list.count == kRows && list.items[kRows - 1].PCIeType == 3;
                 std::free(list.items);
                 return is_right;
               }},
              {bench::kLimit, [=](int) {
                 std::vector<_ZYMDB_PCI_Generic> list;
                 raw->each([&](MariadbStatement& row) { bench::read_function(row, list.emplace_back()); });
                 return list.size() == kRows && list.back().PCIeType == 3;
               }}});
}

void add_presence(MYSQL* mysql) {
  const auto raw = std::make_shared<MariadbStatement>(
      mysql, "SELECT Presence FROM AimDisks WHERE LocationId=? AND BayNo=?", "n");
  bench::add(
      "unchanged presence of a drive", kDrives,
      {{bench::kLibrary,
        [](int turn) { return zymdb_update_aim_disk_presence(2, bench::row_of(turn, kDrives), 1) == 0; }},
       {bench::kLimit, [=](int turn) {
          int presence = 0;
          raw->each([&](MariadbStatement& row) { presence = row.number(); }, 2, bench::row_of(turn, kDrives));
          return presence == 1;
        }}});
}

void read_in_threads(benchmark::State& state) {
  int turn = state.thread_index() * 500;
  for (auto _ : state)
    if (!read_by_library(turn++)) state.SkipWithError("wrong result");
  state.SetItemsProcessed(state.iterations());
}

// Each statement is a round trip: what is new is prepared with its first execution.
uint64_t questions(MYSQL* mysql) {
  return bench::status_of(mysql, "Questions");
}

void collect(benchmark::State& state, Server& server, const zymdb::collect::Sources& sources) {
  const bench::MysqlPtr mysql = bench::open_mariadb(server.folder(), nullptr);
  if (mysql_query(mysql.get(), "CREATE OR REPLACE DATABASE collected") != 0)
    state.SkipWithError(mysql_error(mysql.get()));
  server.open("collected");
  const auto collect_all = [&](size_t least) {
    const uint64_t before = questions(mysql.get());
    const auto summary = zymdb::collect::collect_inventory(sources);
    size_t changed = 0;
    for (const auto& table : summary.tables) changed += table.changed();
    if (!summary.ok() || changed < least) state.SkipWithError(summary.error.c_str());
    state.counters["rows"] = std::max<double>(state.counters["rows"], static_cast<double>(changed));
    return static_cast<double>(questions(mysql.get()) - before - 1);  // the look at the counter left out
  };
  for (auto _ : state) {
    state.counters["first"] = collect_all(kRows);
    server.open("collected");
    state.counters["unchanged"] = collect_all(0);
  }
  server.open("bench");
}

// Said, and told by the results, which then hold no figure.
void skip(const std::string& why) {
  std::cerr << "mariadb_bench is skipped: " << why << '\n';
  benchmark::RegisterBenchmark("skipped", [why](benchmark::State& state) {
    for (auto _ : state) state.SetLabel(why);
  })->Iterations(1);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  setenv("ZYMDB_ENGINES", ZYMDB_BENCH_ENGINES, 1);
  static const Processors processors;
  static Server server;
  bench::MysqlPtr mysql;
  TemporaryFolder machine;
  zymdb::collect::Sources sources;
  if (!server.is_started()) {
    skip("no MariaDB server can be started");
  } else {
    server.open("bench");
    mysql = bench::open_mariadb(server.folder(), "bench");
    fill(mysql.get());
    sources.lspci = machine.file("dump");
    {
      std::ofstream dump(sources.lspci);
      LargeDump(dump, kFunctions, 256).write();
    }
    sources.smbios = machine.write("tables", LargeTables(kModules).dump());
    add_function(mysql.get());
    add_functions(mysql.get());
    add_presence(mysql.get());
    processors.take_one(server);
    benchmark::RegisterBenchmark("function, by threads", read_in_threads)
        ->Threads(1)
        ->Threads(2)
        ->UseRealTime()
        ->Setup([](const benchmark::State&) { processors.take_all(server); })
        ->Teardown([](const benchmark::State&) { processors.take_one(server); });
    benchmark::RegisterBenchmark(("collection/" + std::to_string(kRows)).c_str(),
                                 [&](benchmark::State& state) { collect(state, server, sources); })
        ->Iterations(1);
  }
  benchmark::RunSpecifiedBenchmarks();
}
