// A collection is one transaction: whatever call of the database client fails, the inventory stays as it was.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

#include "collect/collector.h"
#include "collect/drive_tree.h"
#include "collect/failing_client.h"
#include "collect/machines.h"
#include "support/inventory.h"
#include "zymdb_platform.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

// A small machine with something for every table, and a change for every way of writing.
class Atomicity : public InventoryTest {
 protected:
  Atomicity() {
    function("0000:00:17.0", "0x010601");
    function("0000:17:00.0", "0x020000");
    function("0000:67:00.0", "0x010802");
    function("0000:68:00.0", "0x010802");
    tree_.nvme("0000:67:00.0", "nvme0", "S1");
    tree_.disk("0000:00:17.0", "ata3/host2/target2:0:0", "2:0:0:0", "sda", "ATA", true);
    port("ens1", 0);
    sources_.sysfs = tree_.root();
    sources_.pci_ids = "/nowhere/pci.ids";
    for (const auto& [name, number] : {std::pair("1", "67"), std::pair("2", "68")}) {
      tree_.write(std::string("bus/pci/slots/") + name + "/address", std::string("0000:") + number + ":00\n");
    }
  }

  void function(const std::string& address, const std::string& class_code) const {
    const std::string folder = "devices/pci0000:00/" + address;
    tree_.write(folder + "/vendor", "0x15b3\n");
    tree_.write(folder + "/device", "0x101d\n");
    tree_.write(folder + "/class", class_code + "\n");
    tree_.link("bus/pci/devices", folder, address);
  }

  void port(const std::string& name, unsigned number) const {
    const std::string folder = "devices/pci0000:00/0000:17:00.0/net/" + name;
    tree_.write(folder + "/type", "1\n");
    tree_.write(folder + "/dev_port", std::to_string(number) + "\n");
    tree_.write(folder + "/statistics/tx_bytes", "1\n");
    tree_.write(folder + "/statistics/rx_bytes", "1\n");
    tree_.link("class/net", folder, name);
  }

  // Drives and ports come, go and change.
  void change_machine() const {
    tree_.nvme("0000:68:00.0", "nvme1", "S2");
    tree_.write("devices/pci0000:00/0000:67:00.0/nvme/nvme0/firmware_rev", "NEW\n");
    tree_.write("devices/pci0000:00/0000:17:00.0/net/ens1/carrier", "1\n");
    tree_.write("devices/pci0000:00/0000:17:00.0/net/ens1/mtu", "9000\n");
    port("ens2", 1);
  }

  Summary collect() const { return collect_inventory(sources_); }

  static std::string inventory() {
    return rows("PCIs", {"_id", "FunKey", "DeviceId", "SlotNo"}) +
           rows("PCIAdapter", {"_id", "PCIFuncKey", "PCIKey", "CardName"}) +
           rows("PCIMisc", {"_id", "PCIFuncKey", "MaxDataWidth"}) +
           rows("PCINetwork", {"_id", "PCIFuncKey", "NumberofPhysicalPorts"}) +
           rows("PCILogicalPort", {"_id", "PCIFuncKey", "Idx", "MaxDataSize"}) +
           rows("PCIPhysicalPort", {"_id", "PCIFuncKey", "Idx"}) +
           rows("PCIPhysicalPortStat", {"_id", "PCIFuncKey", "Idx", "LinkStatus"}) +
           rows("PCIPhysicalPortCounter", {"_id", "PCIFuncKey", "Idx", "TxBytes", "RxBytes"}) +
           rows("Firmwares", {"_id", "HardwareId", "SoftwareID", "VersionString"}) +
           rows("AimDisks", {"_id", "Location", "DriveTypeId", "SerialNo", "FwVersion", "Presence"});
  }

  // Collects, from the inventory of the first collection, while the call with this number fails.
  Summary collect_with_failure(size_t call) {
    zym_db_close(get_dmdb_handle());
    for (const char* file : {"inventory.db-wal", "inventory.db-shm"}) fs::remove(folder() / file);
    fs::copy_file(saved_, folder() / "inventory.db", fs::copy_options::overwrite_existing);
    EXPECT_NE(get_dmdb_handle(), nullptr);
    fail_call(call);
    Summary summary = collect();
    failed_ = failed_call();
    calls_ = calls_so_far();
    transactions_ = calls_of("zym_db_begin");
    fail_call(0);
    return summary;
  }

  void save_inventory() {
    zym_db_close(get_dmdb_handle());
    saved_ = folder() / "saved";
    fs::copy_file(folder() / "inventory.db", saved_);
  }

  void expect_all_or_nothing() {
    const std::string before = inventory();
    save_inventory();
    ASSERT_TRUE(collect_with_failure(0).ok());
    const std::string after = inventory();
    ASSERT_NE(after, before);
    size_t call = 0;
    do {
      // A look at a place where nothing is may fail unnoticed: it finds what there is.
      const Summary summary = collect_with_failure(++call);
      ASSERT_EQ(inventory(), summary.ok() ? after : before) << "call " << call << ", " << failed_;
      if (failed_.starts_with("zym_db_insert") || failed_ == "zym_db_begin" || failed_ == "zym_db_commit") {
        EXPECT_FALSE(summary.ok()) << failed_;
      }
    } while (!failed_.empty());
    EXPECT_GT(call, 100U);
  }

  fs::path saved_;
  std::string failed_;
  size_t calls_ = 0;
  size_t transactions_ = 0;
  DriveTree tree_;
  Sources sources_;
};

TEST_F(Atomicity, AFailureOfAnyCallLeavesTheInventoryAsItWas) {
  ASSERT_TRUE(collect().ok());
  change_machine();
  expect_all_or_nothing();
}

TEST_F(Atomicity, AFailureOfAnyCallLeavesAnEmptyInventoryEmpty) {
  expect_all_or_nothing();
}

TEST_F(Atomicity, ACollectionIsOneTransactionFromItsFirstReadToItsLastWrite) {
  fail_call(0);
  ASSERT_TRUE(collect().ok());
  EXPECT_EQ(calls_of("zym_db_begin"), 1U);
  EXPECT_EQ(calls_of("zym_db_commit"), 1U);
  fail_call(0);
  ASSERT_TRUE(collect().ok());
  const size_t last = calls_so_far();
  fail_call(1);
  EXPECT_FALSE(collect().ok());
  EXPECT_EQ(failed_call(), "zym_db_begin");
  fail_call(last);
  EXPECT_FALSE(collect().ok());
  EXPECT_EQ(failed_call(), "zym_db_commit");
  fail_call(0);
}

TEST_F(Atomicity, ACollectionThatAnotherWriterOvertookIsMadeAgainWhole) {
  ASSERT_TRUE(collect().ok());
  change_machine();
  save_inventory();
  ASSERT_TRUE(collect_with_failure(0).ok());
  const size_t calls = calls_;
  ASSERT_GT(calls, 100U);
  const std::string after = inventory();
  for (size_t call = 2; call <= calls; call += 7) {
    overtake(2, call);
    ASSERT_TRUE(collect_with_failure(0).ok()) << call;
    EXPECT_EQ(transactions_, 3U) << call;
    ASSERT_EQ(inventory(), after) << call;
  }
}

TEST_F(Atomicity, OneThatIsAlwaysOvertakenEndsAndLeavesTheInventoryAsItWas) {
  ASSERT_TRUE(collect().ok());
  const std::string before = inventory();
  change_machine();
  fail_call(0);
  overtake(1000, 3);
  EXPECT_FALSE(collect().ok());
  EXPECT_EQ(calls_of("zym_db_begin"), 6U);
  overtake(0, 0);
  EXPECT_EQ(inventory(), before);
}

TEST_F(Atomicity, WhatIsMadeAgainTellsWhatItsSourcesLackOnce) {
  size_t notices = 0;
  const Observer observer = {.notice = [&](std::string_view) { ++notices; }, .progress = {}};
  ASSERT_TRUE(collect_inventory(sources_, observer).ok());
  const size_t once = std::exchange(notices, 0);
  ASSERT_GT(once, 0U);
  overtake(1, 3);
  ASSERT_TRUE(collect_inventory(sources_, observer).ok());
  EXPECT_EQ(notices, once);
}

TEST_F(Atomicity, CountersAreKeptOnceTheCollectionIsStored) {
  const TemporaryFolder counters;
  setenv("ZYMDB_COUNTERS", counters.path().c_str(), 1);
  for (const char* name : {"tx_bytes", "rx_bytes"})
    tree_.write("devices/pci0000:00/0000:17:00.0/net/ens1/statistics/" + std::string(name), "10\n");
  ASSERT_TRUE(collect().ok());
  EXPECT_FALSE(fs::is_empty(counters.path()));
  fail_call(0);
  ASSERT_TRUE(collect().ok());
  const size_t last = calls_so_far();
  for (const auto& kept : fs::directory_iterator(counters.path())) fs::remove(kept);
  fail_call(last);
  EXPECT_FALSE(collect().ok());
  EXPECT_EQ(failed_call(), "zym_db_commit");
  EXPECT_TRUE(fs::is_empty(counters.path()));
  fail_call(0);
  unsetenv("ZYMDB_COUNTERS");
}

}  // namespace
}  // namespace zymdb::collect
