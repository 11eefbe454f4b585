// Eight threads write and read all areas of the inventory at once. In each area every thread has a record of
// its own, into whose fields it writes the same number, a larger one each time; all threads read all records.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "support/inventory.h"
#include "threads/in_threads.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_firmware.h"
#include "zymdb_network.h"
#include "zymdb_pci.h"
#include "zymdb_pci_settings.h"
#include "zymdb_storage.h"

namespace {

constexpr int kRounds = 60;
constexpr unsigned kAdapter = 0x1000;  // a key that all share where records are listed by it
constexpr int kBay = 2;

constexpr int kTorn = -1;
constexpr int kFailed = -2;

using Numbers = std::array<int, kThreads>;  // of the threads' records

Numbers all(int number) {
  Numbers numbers;
  numbers.fill(number);
  return numbers;
}

// What an array handed out needs.
struct Free {
  void operator()(void* array) const { std::free(array); }
};
template <class Record>
using Array = std::unique_ptr<Record[], Free>;

template <class First, class... More>
int number_of(First first, More... more) {
  return ((first == more) && ...) ? static_cast<int>(first) : kTorn;
}
template <size_t N>
int number_in(const char (&text)[N]) {
  return std::atoi(text);
}
template <size_t... Sizes>
void write_into(int number, char (&... texts)[Sizes]) {
  (std::snprintf(texts, Sizes, "%d", number), ...);
}

// ---- Memory modules

int write_memory(int thread, int number) {
  _ZYMDB_Memory module{};
  module._id = static_cast<uint32_t>(thread + 1);
  module.RemainingLife = module.LDShutdownCount = static_cast<uint32_t>(number);
  module.AITDRAMStatus = module.InfoMask = static_cast<uint8_t>(number);
  module.HealthStatusReason = static_cast<uint16_t>(number);
  return zymdb_update_dcpmm_smart_info(&module, 8);
}

Numbers read_memory() {
  _ZYMDB_Memory_List list{};
  const int status = zymdb_get_memory_list(&list);
  const Array<uint32_t> owner(list.ids);
  if (status != 0 || list.count != kThreads) return all(kFailed);
  Numbers numbers;
  for (uint32_t id = 1; id <= kThreads; ++id) {
    _ZYMDB_Memory module{};
    numbers[id - 1] = zymdb_get_memory_by_id(&module, id) == 0
                          ? number_of(module.RemainingLife, module.LDShutdownCount, module.AITDRAMStatus,
                                      module.InfoMask, module.HealthStatusReason)
                          : kFailed;
  }
  return numbers;
}

// ---- Adapters

int write_adapter(int thread, int number) {
  const auto byte = static_cast<uint8_t>(number);
  const int status = zymdb_set_adapter_health_status(1, thread, byte);
  return status != 0 ? status : zymdb_set_ncsi_id_by_slotNo(1, thread, 0, byte, byte);
}

// The health is written before the package ids.
Numbers read_adapters() {
  _ZYMDB_PCI_Adapter_List list{};
  const int status = zymdb_get_pci_adapter_list(&list);
  const Array<_ZYMDB_PCI_Adapter> owner(list.adapters);
  if (status != 0 || list.count != kThreads) return all(kFailed);
  Numbers numbers = all(kFailed);
  for (uint32_t i = 0; i < list.count; ++i) {
    const _ZYMDB_PCI_Adapter& adapter = list.adapters[i];
    uint8_t health = 0;
    const bool read = zymdb_get_adapter_health_status(1, adapter.SlotNo, &health) == 0;
    numbers.at(adapter.SlotNo) =
        read && health >= adapter.PackageID1 ? number_of(adapter.PackageID1, adapter.PackageID2) : kTorn;
  }
  return numbers;
}

// ---- Ports

int write_port(int thread, int number) {
  const auto value = static_cast<uint32_t>(number);
  const _ZYMDB_PCI_PortLinkState state{value, value, value, value, 0};
  return zymdb_set_network_physical_port_link_state(static_cast<unsigned>(thread), &state, thread);
}

Numbers read_ports() {
  _ZYMDB_PCI_PhysicalPort_List list{};
  const int status = zymdb_get_all_network_physical_port_list(kAdapter, &list);
  const Array<_ZYMDB_PCI_PhysicalPort> owner(list.ports);
  if (status != 0 || list.count != kThreads) return all(kFailed);
  Numbers numbers = all(kFailed);
  for (uint32_t i = 0; i < list.count; ++i) {
    const _ZYMDB_PCI_PhysicalPort& port = list.ports[i];
    numbers.at(port.Idx) = number_of(port.LinkStatus, port.LinkSpeed, port.TxUtil, port.RxUtil);
  }
  return numbers;
}

// ---- Firmware

int write_firmware(int thread, int number) {
  _ZYMDB_PCI_Firmware component{};
  write_into(thread, component.SoftwareID);
  write_into(number, component.VersionString, component.ReleaseDate);
  component.Classification = 10;
  _ZYMDB_PCI_Firmware_List list{1, &component};
  return zymdb_update_adapter_firmware_list(kAdapter + static_cast<unsigned>(thread), &list);
}

Numbers read_firmware() {
  Numbers numbers;
  for (unsigned thread = 0; thread < kThreads; ++thread) {
    _ZYMDB_PCI_Firmware_List list{};
    const int status = zymdb_get_pci_firmware_list(thread, &list);
    const Array<_ZYMDB_PCI_Firmware> components(list.Firmwares);
    numbers[thread] = status == 0 && list.Count == 1 ? number_of(number_in(components[0].VersionString),
                                                                 number_in(components[0].ReleaseDate))
                                                     : kFailed;
  }
  return numbers;
}

// ---- Settings

int write_setting(int thread, int number) {
  ZYMDB_PCI_Config_Setting setting{};
  write_into(thread, setting.SettingID);
  setting.PfaKey = kAdapter;
  setting.Maxim = setting.Step = static_cast<uint32_t>(number);
  write_into(number, setting.CurrentValue, setting.PendingValue, setting.Choices);
  return extract_PCISetting_info(&setting);
}

Numbers read_settings() {
  std::vector<ZYMDB_PCI_Config_Setting> settings(kThreads);
  unsigned short filled = 0;
  if (zymdb_get_pci_configSet_list(kAdapter, nullptr, kThreads, settings.data(), 0, &filled) != 0 ||
      filled != kThreads)
    return all(kFailed);
  Numbers numbers = all(kFailed);
  for (const auto& setting : settings)
    numbers.at(static_cast<size_t>(number_in(setting.SettingID))) = number_of(
        number_in(setting.CurrentValue), number_in(setting.PendingValue), number_in(setting.Choices),
        static_cast<int>(setting.Maxim), static_cast<int>(setting.Step));
  return numbers;
}

// ---- Drives

int write_drive(int thread, int number) {
  _ZYMDB_AimDisk drive{};
  drive.LocationId = kBay;
  drive.BayNo = static_cast<uint16_t>(thread);
  write_into(number, drive.Model, drive.SerialNo, drive.PartNo, drive.FruNo, drive.Manufacture,
             drive.FwVersion);
  return zymdb_update_aim_disk_vpd_info(&drive);
}

Numbers read_drives() {
  _ZYMDB_AimDisk_List list{};
  const int status = zymdb_get_disk_list(&list);
  const Array<_ZYMDB_AimDisk> owner(list.disks);
  if (status != 0 || list.count != kThreads) return all(kFailed);
  Numbers numbers = all(kFailed);
  for (uint32_t i = 0; i < list.count; ++i) {
    const _ZYMDB_AimDisk& drive = list.disks[i];
    numbers.at(drive.BayNo) =
        number_of(number_in(drive.Model), number_in(drive.SerialNo), number_in(drive.PartNo),
                  number_in(drive.FruNo), number_in(drive.Manufacture), number_in(drive.FwVersion));
  }
  return numbers;
}

struct Area {
  const char* name;
  int (*write)(int thread, int number);
  Numbers (*read)();
};

constexpr Area kAreas[] = {
    {"memory modules", write_memory, read_memory},
    {"adapters", write_adapter, read_adapters},
    {"ports", write_port, read_ports},
    {"firmware", write_firmware, read_firmware},
    {"settings", write_setting, read_settings},
    {"drives", write_drive, read_drives},
};

class EveryArea : public InventoryTest {
 protected:
  EveryArea() {
    for (int thread = 0; thread < kThreads; ++thread) {
      given("Memory", {{"SlotNo", thread}});
      given("PCIAdapter", {{"PCIKey", kAdapter + static_cast<unsigned>(thread)},
                           {"PCIFuncKey", thread},
                           {"NodeNo", 0},
                           {"Location", 1},
                           {"SlotNo", thread},
                           {"CardName", "a card"},
                           {"ConnectorType", 0},
                           {"AIMSupported", 1},
                           {"HealthStatus", 0}});
      given("NCSIPackageID", {{"Location", 1}, {"SlotNo", thread}, {"PackageID1", 0}, {"PackageID2", 0}});
      given("PCIs", {{"FunKey", thread},
                     {"DevKey", kAdapter + static_cast<unsigned>(thread)},
                     {"HardwareId", thread},
                     {"HardwareTypeId", 3}});
      given("PCINetwork", {{"PCIKey", kAdapter}, {"PCIFuncKey", thread}, {"NumberofPhysicalPorts", 1}});
      given("PCIPhysicalPort", {{"PCIFuncKey", thread}, {"Idx", thread}});
      given("PCIPhysicalPortStat", {{"PCIFuncKey", thread}, {"Idx", thread}});
      given("AimDisks", {{"LocationId", kBay}, {"BayNo", thread}, {"Presence", 1}});
      write_firmware(thread, 0);
      write_setting(thread, 0);
    }
  }

  void complain(const std::string& about) {
    const std::lock_guard lock(mutex_);
    complaints_.push_back(about);
  }

  // Of a thread, about an area: every record is whole, its own is what it wrote last, and none goes back.
  void check(int thread, const Area& area, const Numbers& before, const Numbers& now, int own) {
    for (int other = 0; other < kThreads; ++other) {
      const auto place = static_cast<size_t>(other);
      if (now[place] < before[place] || now[place] > kRounds || (other == thread && now[place] != own))
        complain(std::string(area.name) + ": " + std::to_string(thread) + " reads " +
                 std::to_string(now[place]) + " of " + std::to_string(other) + " after " +
                 std::to_string(before[place]));
    }
  }

  std::mutex mutex_;
  std::vector<std::string> complaints_;
};

TEST_F(EveryArea, IsWrittenAndReadByEightThreadsAtOnceWithoutLossOrTearing) {
  in_threads([&](int thread) {
    std::array<Numbers, std::size(kAreas)> seen{};
    for (int round = 1; round <= kRounds; ++round) {
      const size_t place = static_cast<size_t>(thread + round) % std::size(kAreas);
      const Area& area = kAreas[place];
      if (const int status = area.write(thread, round))
        complain(std::string(area.name) + ": writing gives " + std::to_string(status));
      const Numbers now = area.read();
      check(thread, area, seen[place], now, round);
      seen[place] = now;
    }
  });
  EXPECT_THAT(complaints_, testing::IsEmpty());
}

// The log of a slot is one thread's; ids are never given twice.
TEST_F(EveryArea, EventsOfEightThreadsAreAllKeptInTheirOrder) {
  constexpr uint32_t kEvents = 12;
  const auto slot_of = [](int thread) { return thread + 1; };
  in_threads([&](int thread) {
    for (uint32_t number = 1; number <= kEvents; ++number) {
      _ZYMDB_DPU_Event event{};
      event.Timestamp = number;
      write_into(thread, event.GenID, event.Message);
      uint32_t next = 0;
      if (const int status = dpu_insert_log(slot_of(thread), &event, &next))
        complain("inserting gives " + std::to_string(status));
    }
  });
  std::vector<uint32_t> ids;
  for (int thread = 0; thread < kThreads; ++thread) {
    _ZYMDB_DPU_Event_List list{};
    ASSERT_EQ(dpu_get_log_by_slot(slot_of(thread), &list), ZYM_DB_STATUS_OK);
    const Array<_ZYMDB_DPU_Event> events(list.Events);
    ASSERT_EQ(list.Count, kEvents);
    for (uint32_t i = 0; i < kEvents; ++i) {
      EXPECT_EQ(events[i].Timestamp, i + 1);
      EXPECT_EQ(number_in(events[i].GenID), thread);
      ids.push_back(events[i].Id);
    }
  }
  std::sort(ids.begin(), ids.end());
  EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end());
  EXPECT_THAT(complaints_, testing::IsEmpty());
}

}  // namespace
