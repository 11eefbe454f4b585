// Lets several processes collect, save settings, update links and list everything on one inventory, and
// watches whether what they use grows.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <thread>

#include "controller/database_client.h"
#include "soak/growth.h"
#include "soak/process.h"
#include "soak/work.h"
#include "support/integrity.h"
#include "support/temporary_folder.h"
#include "zymdb_firmware.h"

namespace soak {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// Leaves room for each other, as services that are asked now and then do.
constexpr auto kPause = 5ms;

// What the medians may differ by. A heap's pages come and go by some; the property database's three files are
// open during a call only; pages that a table gave up are used again, not always at once; the log stays near
// the 1 MiB at which it is copied, and grows beyond while readers use it.
constexpr int64_t kMemoryAllowance = 128;
constexpr int64_t kDescriptorAllowance = 3;
constexpr int64_t kDatabaseAllowance = 16;
constexpr int64_t kLogAllowance = 1024;

std::atomic<bool> ended{false};

// Proves that the watch sees what it is there for.
void leak_some(const std::string& what, uint32_t number) {
  if (what == "memory") static_cast<void>(new (std::nothrow) std::array<char, 1024>());
  if (what == "descriptors" && number % 64 == 0) static_cast<void>(dup(STDOUT_FILENO));
  if (what == "rows") {
    _ZYMDB_PCI_Firmware component{};
    std::fill_n(component.Description, sizeof component.Description - 1, 'd');
    zymdb_insert_or_update_firmware_info(number, &component);
  }
}

int run_work(const Work& work, const fs::path& folder, const std::string& leak) {
  std::signal(SIGTERM, [](int) { ended = true; });
  try {
    for (uint32_t number = 0; !ended; ++number) {
      work.round(number, folder);
      leak_some(leak, number);
      std::this_thread::sleep_for(kPause);
    }
  } catch (const std::exception& failure) {
    std::printf("%s: %s\n", work.name, failure.what());
    return 1;
  }
  zym_db_close(get_dmdb_handle());
  return 0;
}

struct Worker {
  explicit Worker(const std::string& name, const std::vector<std::string>& arguments)
      : process(arguments),
        memory{name + ": memory, KiB", kMemoryAllowance},
        descriptors{name + ": descriptors", kDescriptorAllowance} {}

  Process process;
  Series memory;
  Series descriptors;
};

struct File {
  fs::path path;
  Series size;
};

class Soak {
 public:
  Soak(const fs::path& folder, const std::string& leak) {
    for (size_t i = 0; i < works().size(); ++i) {
      const Work& work = works()[i];
      std::vector<std::string> arguments{"--work", std::to_string(i), "--folder", folder};
      if (!leak.empty()) arguments.insert(arguments.end(), {"--leak", leak});
      workers_.push_back(std::make_unique<Worker>(work.name, arguments));
    }
    for (const char* name : {"inventory.db", "inventory-properties.db"})
      files_.push_back({folder / name, {std::string(name) + ", KiB", kDatabaseAllowance}});
    files_.push_back({folder / "inventory.db-wal", {"inventory.db-wal, KiB", kLogAllowance}});
  }

  // False when a process ended before its time, or not as it should.
  bool run(std::chrono::seconds duration) {
    auto next = std::chrono::steady_clock::now();
    for (auto second = 0s; second < duration; ++second) {
      std::this_thread::sleep_until(next += 1s);
      for (const auto& worker : workers_)
        if (worker->process.has_ended()) return false;
      measure();
    }
    bool well = true;
    for (const auto& worker : workers_) well &= worker->process.end();
    for (size_t i = 0; i < 2; ++i) well &= integrity_of(files_[i].path) == "ok";
    return well;
  }

  // Whether nothing grew.
  bool report() const {
    std::printf("%-36s %12s %12s %10s\n", "", "2nd quarter", "4th quarter", "allowed");
    bool flat = true;
    for (const auto& worker : workers_) flat &= report(worker->memory) & report(worker->descriptors);
    for (const File& file : files_) flat &= report(file.size);
    return flat;
  }

 private:
  void measure() {
    for (const auto& worker : workers_) {
      worker->memory.samples.push_back(worker->process.memory());
      worker->descriptors.samples.push_back(worker->process.descriptors());
    }
    for (File& file : files_) file.size.samples.push_back(size_of_file(file.path));
  }

  static bool report(const Series& series) {
    const Verdict verdict = judge(series);
    std::printf("%-36s %12jd %12jd %+10jd%s\n", series.name.c_str(), intmax_t{verdict.second_quarter},
                intmax_t{verdict.last_quarter}, intmax_t{series.allowance}, verdict.grows ? "  GROWS" : "");
    return !verdict.grows;
  }

  std::vector<std::unique_ptr<Worker>> workers_;
  std::vector<File> files_;
};

// In memory where there is such a file system: a device's spells are no concern here.
fs::path place_of_databases() {
  return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fs::temp_directory_path();
}

int supervise(std::chrono::seconds duration, const std::string& leak) {
  const TemporaryFolder folder(place_of_databases());
  setenv("ZYMDB_INVENTORY", folder.file("inventory.db").c_str(), 1);
  setenv("ZYMDB_LOG", "stderr", 1);
  setenv("ZYMDB_HISTORY", "32K,1d", 1);  // a bound that is reached before anything is compared
  prepare(folder.path());
  zym_db_close(get_dmdb_handle());
  Soak soak(folder.path(), leak);
  const bool ended_well = soak.run(duration);
  const bool flat = soak.report();
  if (!ended_well) std::printf("a process failed, or left a database that is not whole\n");
  return ended_well && flat ? 0 : 1;
}

}  // namespace
}  // namespace soak

int main(int argc, char** argv) try {
  CLI::App app("Several processes on one inventory, and what they use");
  int seconds = 600;
  std::string leak;
  std::string folder;
  int work = -1;
  app.add_option("--seconds", seconds, "How long")->check(CLI::PositiveNumber)->capture_default_str();
  app.add_option("--leak", leak, "Leak something in each process, which must be noticed")
      ->check(CLI::IsMember({"memory", "descriptors", "rows"}));
  app.add_option("--work", work, "Be one of the processes")->group("");
  app.add_option("--folder", folder, "of the inventory")->group("");
  CLI11_PARSE(app, argc, argv);
  if (work >= 0) return soak::run_work(soak::works()[static_cast<size_t>(work)], folder, leak);
  return soak::supervise(std::chrono::seconds(seconds), leak);
} catch (const std::exception& failure) {
  std::printf("%s\n", failure.what());
  return 1;
}
