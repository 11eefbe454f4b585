// Questions that nobody answers: they are given up, and what they are about stays as it is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <thread>

#include "collect/collector_fixture.h"
#include "collect/drive_tree.h"
#include "collect/machines.h"
#include "collect/record/record_machine.h"
#include "common/source_access.h"
#include "common/source_file.h"

namespace {

// Reads of files whose name ends with this wait until the test lets them go.
std::string silent_end;
std::atomic<bool> is_let_go = true;

bool is_silent(int descriptor) {
  std::array<char, 512> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t size = ::readlink(link.c_str(), path.data(), path.size() - 1);
  return !is_let_go && size > 0 && std::string_view(path.data()).ends_with(silent_end);
}

ssize_t read_now(int descriptor, void* buffer, size_t size) {
  return ::syscall(SYS_read, descriptor, buffer, size);
}

}  // namespace

extern "C" ssize_t read(int descriptor, void* buffer, size_t size) {
  if (is_silent(descriptor)) {
    while (!is_let_go) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return read_now(descriptor, buffer, size);
}
extern "C" ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t) {
  return read(descriptor, buffer, size);
}

namespace zymdb::collect {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;

class Silence {
 public:
  explicit Silence(const std::string& end) {
    silent_end = end;
    is_let_go = false;
  }
  ~Silence() {
    is_let_go = true;
    // The threads left behind still look at the name.
    std::this_thread::sleep_for(50ms);
  }
};

TEST(TimeBound, LetsQuestionsThroughThatAreAnswered) {
  EXPECT_EQ(ask("it", [] { return 7; }), 7) << "without a bound";
  const TimeBound bound(1s);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(ask("it", [i] { return i; }), i);
  EXPECT_THROW(ask("it", []() -> int { throw SourceError("no"); }), SourceError);
  EXPECT_EQ(ask("it", [] { return std::string("still"); }), "still");
}

TEST(TimeBound, GivesUpAQuestionAndAsksTheNextOne) {
  auto release = std::make_shared<std::promise<void>>();
  const auto released = release->get_future().share();
  {
    const TimeBound bound(50ms);
    try {
      ask("eth0's driver", [released] {
        released.wait();
        return 1;
      });
      ADD_FAILURE() << "answered";
    } catch (const NoAnswer& problem) {
      EXPECT_STREQ(problem.what(), "eth0's driver does not answer within 50 ms");
    }
    EXPECT_EQ(ask("eth1's driver", [] { return 2; }), 2);
  }
  EXPECT_EQ(ask("eth1's driver", [] { return 3; }), 3) << "the bound is gone";
  release->set_value();
}

class SilentSource : public CollectorTest {
 protected:
  SilentSource() {
    output_of("python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py '" + files_.file("sys") + "'");
    sources_ = {.sysfs = files_.file("sys"), .pci_ids = sources_.pci_ids};
    sources_.timeout = 1;
  }

  static std::string everything() {
    return rows("PCIs", {"FunKey", "DevKey", "LanesInUse"}) + rows("PCIPhysicalPort", {"PCIFuncKey"}) +
           rows("AimDisks", {"BayNo", "SerialNo", "Presence"}) + rows("Processor", {"Socket"}) +
           rows("Memory", {"SlotNo"}) + rows("VPDs", {"HardwareId", "SerialNo"}) +
           rows("Firmwares", {"HardwareId", "VersionString"});
  }
};

// A file that hangs, and the table that is told of all the same.
TEST_F(SilentSource, IsNamedAndItsRowsStayAndTheRestIsStored) {
  ASSERT_TRUE(collect().ok());
  const std::string before = everything();
  const struct {
    const char* file;
    const char* notice;
    const char* other_table;
  } kCases[] = {
      {"/serial", "/serial does not answer within 1 s: class drives is left as it is", "PCIs"},
      {"/tx_bytes", "/tx_bytes does not answer within 1 s: class ports is left as it is", "PCIs"},
      {"/config", "/config does not answer within 1 s: class pci is left as it is", "Processor"},
      {"/DMI", "/DMI does not answer within 1 s: what SMBIOS tells is left as it is", "PCIs"},
  };
  for (const auto& [file, notice, other_table] : kCases) {
    SCOPED_TRACE(file);
    const Silence silence(file);
    const auto start = std::chrono::steady_clock::now();
    const auto summary = collect();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 8s);
    ASSERT_TRUE(summary.ok()) << summary.error;
    EXPECT_THAT(notices_, Contains(HasSubstr(notice)));
    EXPECT_EQ(counts(summary).count(other_table), 1U);
    EXPECT_EQ(everything(), before);
  }
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(everything(), before);
}

// A device that hangs, and another of its kind that has changed.
TEST_F(SilentSource, IsOneDeviceWhoseRowsStayWhileTheOthersAreStored) {
  ASSERT_TRUE(collect().ok());
  const std::string tree = files_.file("sys") + "/class/nvme/";
  const auto change = [&](const char* attribute, const char* text) {
    for (const char* name : {"nvme0", "nvme1"}) std::ofstream(tree + name + "/" + attribute) << text << "\n";
  };
  const auto with = [](const char* table, const char* filter) {
    return std::ranges::count(rows(table, {"_id"}, filter), '\n');
  };
  change("serial", "OTHER1");
  {
    const Silence silence("/nvme0/serial");
    ASSERT_TRUE(collect().ok());
  }
  EXPECT_THAT(
      notices_,
      Contains(HasSubstr("/nvme0/serial does not answer within 1 s: the drive nvme0 is left as it is")));
  EXPECT_EQ(with("AimDisks", "SerialNo='OTHER1'"), 1);
  EXPECT_EQ(with("AimDisks", "DriveTypeId=3 AND Presence=0"), 0);
  change("firmware_rev", "OTHER2");
  {
    const Silence silence("/nvme0/firmware_rev");
    ASSERT_TRUE(collect().ok());
  }
  EXPECT_THAT(notices_,
              Contains(testing::ContainsRegex("/nvme0/firmware_rev does not answer within 1 s: the firmware "
                                              "of 0000:[0-9a-f:.]+ is left as it is")));
  EXPECT_EQ(with("Firmwares", "VersionString='OTHER2'"), 1);
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(with("AimDisks", "SerialNo='OTHER1'"), 2);
  EXPECT_EQ(with("Firmwares", "VersionString='OTHER2'"), 2);
}

TEST_F(SilentSource, IsOneInterfaceWhosePortsStayWhileTheOthersAreStored) {
  ASSERT_TRUE(collect().ok());
  const std::string net = files_.file("sys") + "/class/net/";
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(net)) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  ASSERT_GE(names.size(), 2U);
  const auto mtus = [] { return rows("PCILogicalPort", {"PCIFuncKey", "MaxDataSize"}, "MaxDataSize=1234"); };
  for (const auto& name : names) std::ofstream(net + name + "/mtu") << "1234\n";
  {
    const Silence silence("/" + names.front() + "/mtu");
    ASSERT_TRUE(collect().ok());
  }
  EXPECT_THAT(
      notices_,
      Contains(testing::ContainsRegex(
          "/mtu does not answer within 1 s: the function 0000:[0-9a-f:.]+ with its ports is left as it is")));
  const auto some = std::ranges::count(mtus(), '\n');
  EXPECT_GE(some, 1);
  ASSERT_TRUE(collect().ok());
  EXPECT_GT(std::ranges::count(mtus(), '\n'), some);
}

TEST_F(SilentSource, IsToldOfWhereAMachineIsRecorded) {
  const Silence silence("/nvme0/serial");
  std::vector<std::string> told;
  record_machine({.folder = files_.file("recording"), .sysfs = files_.file("sys"), .timeout = 1},
                 {.notice = [&](std::string_view line) { told.emplace_back(line); }, .progress = {}});
  EXPECT_THAT(told, testing::ElementsAre(testing::EndsWith(
                        "/nvme0/serial does not answer within 1 s: the drive nvme0 is left as it is")));
}

TEST_F(SilentSource, LeavesAnEmptyInventoryWithoutItsClassOnly) {
  const Silence silence("/serial");
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(rows("AimDisks", {"_id"}), "");
  EXPECT_NE(rows("PCIs", {"_id"}), "");
  EXPECT_NE(rows("PCIPhysicalPort", {"_id"}), "");
}

}  // namespace
}  // namespace zymdb::collect
