#include "crash/writers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "controller/database_client.h"
#include "zymdb_firmware.h"
#include "zymdb_network.h"
#include "zymdb_pci.h"
#include "zymdb_pci_settings.h"
#include "zymdb_platform.h"
#include "zymdb_storage.h"

namespace {

struct FreeValues {
  void operator()(zym_db_content_values_t* values) const { zym_db_free_content_values(values); }
};
using Values = std::unique_ptr<zym_db_content_values_t, FreeValues>;

using Row = std::vector<uint32_t>;

// The columns as numbers, in the order of the rows' ids; texts too are numbers here.
int read_rows(_zym_db_handle_t* handle, const char* table, std::vector<const char*> columns,
              const std::string& where, std::vector<Row>& rows) {
  zym_db_result_t* result = nullptr;
  const int status = zym_db_query(handle, table, columns.data(), static_cast<int>(columns.size()),
                                  where.c_str(), nullptr, 0, 0, &result);
  if (status != 0) return status;
  while (zym_db_result_step(result) == ZYM_DB_STATUS_ROW) {
    Row& row = rows.emplace_back();
    for (int column = 0; column < static_cast<int>(columns.size()); ++column) {
      char text[64] = "";
      zym_db_result_column_text(result, column, text, sizeof text);
      row.push_back(static_cast<uint32_t>(std::strtoul(text, nullptr, 10)));
    }
  }
  zym_db_free_result(result);
  return 0;
}

std::vector<Row> rows_of(const char* table, std::vector<const char*> columns, const std::string& where,
                         _zym_db_handle_t* handle = get_dmdb_handle()) {
  std::vector<Row> rows;
  EXPECT_EQ(read_rows(handle, table, std::move(columns), where, rows), 0) << table;
  return rows;
}

template <size_t N>
void print_number(char (&text)[N], uint32_t number) {
  std::snprintf(text, N, "%u", number);
}

// ---- Events of a DPU: appended, the oldest of 256 goes -------------------------------------------------

constexpr int kDpu = 1;

int write_event(uint32_t number) {
  _ZYMDB_DPU_Event event{};
  event.Timestamp = number;
  print_number(event.Message, number);
  return dpu_insert_log(kDpu, &event, nullptr);
}

uint32_t last_event() {
  const auto rows = rows_of("DPUEvents", {"Timestamp", "Message"}, "Slot=1 ORDER BY _id");
  uint32_t last = rows.empty() ? 0 : rows.front()[0] - 1;
  for (const Row& row : rows) EXPECT_EQ(row, (Row{last + 1, ++last}));
  // The oldest one goes before the newest one comes.
  EXPECT_GE(rows.size(), std::min<size_t>(last, 255));
  return last;
}

// ---- Components of firmware: each a new row ------------------------------------------------------------

int write_component(uint32_t number) {
  _ZYMDB_PCI_Firmware component{};
  print_number(component.VersionString, number);
  component.Classification = static_cast<uint16_t>(number % 7);
  return zymdb_insert_or_update_firmware_info(number, &component);
}

uint32_t last_component() {
  uint32_t last = 0;
  for (const Row& row :
       rows_of("Firmwares", {"HardwareId", "VersionString", "Classification"}, "1 ORDER BY _id")) {
    ++last;
    EXPECT_EQ(row, (Row{last, last, last % 7}));
  }
  return last;
}

// ---- Drives: one bay after the other gets another drive ------------------------------------------------

constexpr uint32_t kBays = 16;

int write_drive(uint32_t number) {
  _ZYMDB_AimDisk drive{};
  drive.LocationId = 2;
  drive.BayNo = static_cast<uint16_t>(number % kBays);
  drive.DriveTypeId = 3;
  print_number(drive.SerialNo, number);
  print_number(drive.Model, number);
  return zymdb_add_update_nvme_aim_disk(&drive);
}

uint32_t last_drive() {
  const auto rows = rows_of("AimDisks", {"SerialNo", "Model", "BayNo"}, "LocationId=2");
  uint32_t last = 0;
  for (const Row& row : rows) last = std::max(last, row[0]);
  EXPECT_EQ(rows.size(), std::min(last, kBays));
  for (const Row& row : rows) {
    EXPECT_EQ(row, (Row{row[0], row[0], row[0] % kBays}));
    EXPECT_LT(last - row[0], kBays);
  }
  return last;
}

// ---- The state of a link: one row, always written whole ------------------------------------------------

constexpr uint32_t kFunction = 12;

void prepare_link() {
  const Values values(zym_db_get_content_values(get_dmdb_handle()));
  for (const char* column : {"LinkStatus", "LinkSpeed", "TxUtil", "RxUtil"})
    zym_db_content_put_uint(values.get(), column, 0);
  zym_db_content_put_uint(values.get(), "PCIFuncKey", kFunction);
  zym_db_content_put_uint(values.get(), "Idx", 1);
  ASSERT_EQ(zym_db_insert(get_dmdb_handle(), "PCIPhysicalPortStat", values.get(), 0, nullptr), 0);
}

int write_link(uint32_t number) {
  const _ZYMDB_PCI_PortLinkState state{number % 3, number, number % 101, number % 97, 0};
  return zymdb_set_network_physical_port_link_state(kFunction, &state, 1);
}

uint32_t last_link() {
  const auto rows =
      rows_of("PCIPhysicalPortStat", {"LinkSpeed", "LinkStatus", "TxUtil", "RxUtil"}, "PCIFuncKey=12");
  EXPECT_EQ(rows.size(), 1U);
  if (rows.size() != 1) return 0;
  const uint32_t last = rows[0][0];
  EXPECT_EQ(rows[0], (Row{last, last % 3, last % 101, last % 97}));
  return last;
}

// ---- Settings: pending values one by one, then all of them with the BIOS configuration manager ---------

constexpr std::array<const char*, 3> kSettings{"Net.Speed", "Net.Mode", "Net.Vlan"};

void prepare_settings() {
  for (const char* id : kSettings) {
    ZYMDB_PCI_Config_Setting setting{};
    std::snprintf(setting.SettingID, sizeof setting.SettingID, "%s", id);
    print_number(setting.PendingValue, 0);
    ASSERT_EQ(extract_PCISetting_info(&setting), 0);
  }
}

int write_settings(uint32_t number) {
  std::array<ZYMDB_PCI_Config_Set, kSettings.size()> entries{};
  for (size_t i = 0; i < kSettings.size(); ++i) {
    std::snprintf(entries[i].SettingID, sizeof entries[i].SettingID, "%s", kSettings[i]);
    print_number(entries[i].PendingValue, number);
  }
  return zymdb_save_pci_configSet_list(entries.data(), static_cast<unsigned>(entries.size()));
}

// A save that was cut off may have written its first settings: the last one tells, and the manager's.
uint32_t last_settings() {
  const auto pending = rows_of("PCISetting", {"PendingValue"}, "1 ORDER BY _id");
  _zym_db_handle_t* const properties = zym_db_open("localhost", "root", "", "propertiesdb", 0);
  const auto kept = rows_of("biosPendingValue", {"value"}, "1", properties);
  zym_db_close(properties);
  EXPECT_EQ(pending.size(), kSettings.size());
  if (pending.size() != kSettings.size()) return 0;
  const uint32_t last = kept.empty() ? 0 : kept[0][0];
  EXPECT_TRUE(kept.empty() || kept == std::vector<Row>(kSettings.size(), Row{last}));
  EXPECT_TRUE(std::is_sorted(pending.rbegin(), pending.rend()));
  EXPECT_GE(pending.back()[0], last);
  EXPECT_LE(pending.front()[0], last + 1);
  return last;
}

// ---- Transactions: many rows of two tables at once, as a collector writes them -------------------------

constexpr int kDevices = 20;
constexpr const char* kTables[] = {"PCIs", "PCIAdapter"};
constexpr const char* kTexts[] = {"SlotDesignation", "CardName"};

int write_devices(uint32_t number, bool insert) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  const Values values(zym_db_get_content_values(handle));
  zym_db_content_put_uint(values.get(), "BusNo", number);
  const std::string text(1000, static_cast<char>('a' + number % 26));
  if (const int status = zym_db_begin(handle)) return status;
  for (int device = 0; device < kDevices; ++device) {
    for (size_t table = 0; table < std::size(kTables); ++table) {
      zym_db_content_clear(values.get());
      zym_db_content_put_uint(values.get(), "BusNo", number);
      zym_db_content_put_int(values.get(), "DeviceNo", device);
      zym_db_content_put_text(values.get(), kTexts[table], text.c_str());
      const std::string where = "DeviceNo=" + std::to_string(device);
      const int status =
          insert ? zym_db_insert(handle, kTables[table], values.get(), 0, nullptr)
                 : zym_db_update(handle, kTables[table], values.get(), where.c_str(), nullptr, 0, nullptr);
      if (status == 0) continue;
      zym_db_rollback(handle);
      return status;
    }
  }
  return zym_db_commit(handle);
}

void prepare_devices() {
  ASSERT_EQ(write_devices(0, true), 0);
}

int write_devices_anew(uint32_t number) {
  return write_devices(number, false);
}

uint32_t last_devices() {
  const auto rows = rows_of("PCIs", {"BusNo"}, "1");
  const std::vector<Row> same(kDevices, rows.empty() ? Row{} : rows[0]);
  EXPECT_EQ(rows, same);
  EXPECT_EQ(rows_of("PCIAdapter", {"BusNo"}, "1"), same);
  return rows.empty() ? 0 : rows[0][0];
}

constexpr Writer kWriters[] = {
    {"events", true, nullptr, write_event, last_event},
    {"components", true, nullptr, write_component, last_component},
    {"drives", true, nullptr, write_drive, last_drive},
    {"links", false, prepare_link, write_link, last_link},
    {"settings", false, prepare_settings, write_settings, last_settings},
    {"transactions", false, prepare_devices, write_devices_anew, last_devices},
};

}  // namespace

std::span<const Writer> writers() {
  return kWriters;
}

int read_everything() {
  std::vector<Row> numbers;
  if (const int status = read_rows(get_dmdb_handle(), "PCIs", {"count(DISTINCT BusNo)"}, "1", numbers))
    return status;
  if (numbers.size() != 1 || numbers[0][0] > 1) return -1;
  _ZYMDB_DPU_Event_List events{};
  if (const int status = dpu_get_log_by_slot(kDpu, &events)) return status;
  free(events.Events);
  _ZYMDB_PCI_Adapter_List adapters{};
  if (const int status = zymdb_get_pci_adapter_list(&adapters)) return status;
  free(adapters.adapters);
  _ZYMDB_NCSIPackageID_List packages{};
  if (const int status = zymdb_get_ncsi_id_list(&packages)) return status;
  free(packages.entries);
  return 0;
}
