// What changes cost a controller's flash: bytes that reach the device, with those of the file system, on ext4
// of 4 KiB blocks. They are the same on every machine, whatever its speed.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "controller/database_client.h"
#include "flash_device.h"
#include "inventory.h"
#include "process.h"
#include "zymdb_firmware.h"
#include "zymdb_network.h"
#include "zymdb_pci_settings.h"

namespace {

constexpr int kRows = 256;
// So many that the write-ahead log has come to its length and went into the database before, and does so
// again.
constexpr int kBefore = 2000;
constexpr int kMeasured = 2000;
// Of those after each of which the file system writes all that it holds back, as where changes come rarely.
constexpr int kAlone = 100;

struct Counts {
  uint64_t file = 0;  // bytes that the process writes
  uint64_t flushes = 0;
};
Counts counts;

ssize_t count_write(int descriptor, const void* data, size_t size, off_t offset) {
  counts.file += size;
  return pwrite(descriptor, data, size, offset);
}

void count_writes() {
  sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
  files->xSetSystemCall(files, "pwrite64", reinterpret_cast<sqlite3_syscall_ptr>(count_write));
}

}  // namespace

// The engine offers no replacement of this one.
extern "C" __attribute__((visibility("default"))) int fdatasync(int descriptor) {
  ++counts.flushes;
  return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

namespace {

void require(bool is_right, const char* what) {
  if (!is_right) throw std::runtime_error(std::string(what) + " went wrong");
}

// ---- Changes, each another one than that before

void change_link(int turn) {
  const bool is_up = turn / kRows % 2 != 0;
  const _ZYMDB_PCI_PortLinkState state{is_up ? 1u : 2u, is_up ? 25000u : 0u, 0, 0, 0};
  require(zymdb_set_network_physical_port_link_state(bench::function_key(turn % kRows), &state, 0) == 0,
          "a link");
}

void add_event(int turn) {
  _ZYMDB_DPU_Event event{0, static_cast<uint32_t>(turn), "BMC", ""};
  std::snprintf(event.Message, sizeof event.Message, "The unit's firmware has started, attempt %d", turn);
  require(dpu_insert_log(1, &event, nullptr) == 0, "an event");
}

void save_settings(int turn) {
  ZYMDB_PCI_Config_Set settings[2] = {{"NetworkAdapter.1", "", 0}, {"NetworkAdapter.2", "", 0}};
  for (ZYMDB_PCI_Config_Set& setting : settings)
    std::snprintf(setting.PendingValue, sizeof setting.PendingValue, "Value %d", turn);
  require(zymdb_save_pci_configSet_list(settings, 2) == 0, "a save");
}

// ---- Processes that have the database for themselves

// The system's log and standard output are not what is measured.
void run_alone(std::vector<std::string> words) {
  words.insert(words.begin(), {"sh", "-c", "exec \"$@\" >/dev/null", "sh"});
  require(bench::Process(std::move(words)).wait() == 0, "a process");
}

void open_alone(int) {
  run_alone({ZYMDB_FIRST_ANSWER, std::to_string(kRows)});
}
void show_alone(int) {
  run_alone({ZYMDB_TOOL, "show", "adapters"});
}

struct Scenario {
  const char* name;
  void (*change)(int turn);
  bool is_process;  // of its own
};

constexpr Scenario kScenarios[] = {
    {"link change", change_link, false},
    {"DPU event", add_event, false},
    {"settings save, two values", save_settings, false},
    {"first answer of a process", open_alone, true},
    {"zymdb show", show_alone, true},
};

struct Choice {
  const char* history;
  const char* synchronous;
};

constexpr Choice kChoices[] = {{"on", "full"}, {"off", "full"}, {"on", "normal"}, {"off", "normal"}};

using Device = bench::FlashDevice;

double bytes_of(const Device& device, int times, const std::function<void(int)>& run) {
  const uint64_t before = device.written();
  for (int turn = 0; turn < times; ++turn) run(turn);
  return static_cast<double>(device.written() - before) / times;
}

void choose(const bench::Inventory& inventory, const Choice& choice) {
  zym_db_close(get_dmdb_handle());
  setenv("ZYMDB_HISTORY", std::string_view(choice.history) == "on" ? "" : choice.history, 1);
  setenv("ZYMDB_INVENTORY", ("sqlite:" + inventory.path() + "?synchronous=" + choice.synchronous).c_str(), 1);
}

void measure(benchmark::State& state, const Device& device, const Scenario& scenario, const Choice& choice) {
  const bench::Inventory inventory(kRows);
  choose(inventory, choice);
  int turn = 0;
  const auto change = [&](int) { scenario.change(turn++); };
  bytes_of(device, scenario.is_process ? 1 : kBefore, change);
  if (!scenario.is_process) {
    counts = {};
    state.counters["device"] = bytes_of(device, kMeasured, change);
    state.counters["file"] = static_cast<double>(counts.file) / kMeasured;
    state.counters["flushes"] = static_cast<double>(counts.flushes) / kMeasured;
  }
  state.counters["alone"] = bytes_of(device, kAlone, [&](int) { change(0), device.written(); });
  if (!scenario.is_process) zym_db_close(get_dmdb_handle());
}

template <class Run>
void add(const std::string& name, Run run) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [run](benchmark::State& state) {
                                 for (auto _ : state) run(state);
                               })
      ->Iterations(1)
      ->Repetitions(1);
}

void add_all(const Device& device) {
  for (const Scenario& scenario : kScenarios) {
    for (const Choice& choice : kChoices) {
      if (scenario.is_process && &choice != kChoices) continue;
      const std::string name = std::string(scenario.name) + "/" + choice.synchronous + "/" + choice.history;
      add(name, [&](benchmark::State& state) { measure(state, device, scenario, choice); });
    }
  }
}

// Said, and told by the results, which then hold no figure.
void skip(const std::string& why) {
  std::cerr << "flash_bench is skipped: " << why << '\n';
  add("skipped", [why](benchmark::State& state) { state.SetLabel(why); });
}

void run(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  setlogmask(LOG_UPTO(LOG_NOTICE));
  count_writes();
  std::unique_ptr<Device> device;
  try {
    device = std::make_unique<Device>();
    setenv("TMPDIR", device->folder().c_str(), 1);
    add_all(*device);
  } catch (const bench::NoDevice& none) {
    skip(none.what());
  }
  benchmark::RunSpecifiedBenchmarks();
}

}  // namespace

int main(int argc, char** argv) {
  run(argc, argv);
}
