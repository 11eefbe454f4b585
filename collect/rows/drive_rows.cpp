#include "collect/rows/drive_rows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "collect/rows/row_columns.h"
#include "collect/write/inventory_writer.h"
#include "common/text.h"
#include "controller/database_client.h"
#include "zymdb_storage.h"

namespace zymdb::collect {
namespace {

constexpr int kBayKind = static_cast<int>(Location::kBay);
constexpr uint32_t kSolidState = 1;
constexpr uint32_t kRotating = 0;
constexpr uint16_t kAllHealth = 0x0F;

// As the library writes the capacity of a drive that reports it.
std::string capacity_text(uint64_t bytes) {
  char text[17];
  if (bytes >= 1'000'000'000'000)
    std::snprintf(text, sizeof text, "%.2lfTB", static_cast<double>(bytes) / 1e12);
  else
    std::snprintf(text, sizeof text, "%.0lfGB", static_cast<double>(bytes) / 1e9);
  return text;
}

// Where a drive is. Nothing: in no slot or bay.
struct DrivePlace {
  const MachineFunction* function = nullptr;
  int kind = 0;
  uint16_t number = 0;
};

std::optional<DrivePlace> place_of(const Machine& machine, const Drive& drive) {
  if (!machine.functions) return std::nullopt;
  const auto function = std::ranges::find(*machine.functions, drive.function,
                                          [](const MachineFunction& each) { return each.pci.address; });
  if (function == machine.functions->end()) return std::nullopt;
  const Slot* slot = machine.slot_of(*function);
  if (slot == nullptr || !slot->number) return DrivePlace{&*function, 0, 0};
  return DrivePlace{&*function, static_cast<int>(slot->location), *slot->number};
}

template <size_t N>
void set_text(char (&field)[N], const std::optional<std::string>& text) {
  if (!text) return;
  const auto fitting = cut(*text, N - 1);
  std::memcpy(field, fitting.data(), fitting.size());
  field[fitting.size()] = '\0';
}

std::string trimmed_model(std::string model) {
  return trim_drive_model(model.data());
}

// The maker's own word, else what the model tells, with or without a maker's name in front.
std::optional<std::string> maker_of(const Drive& drive) {
  if (drive.maker || !drive.model) return drive.maker;
  for (const std::string& model : {*drive.model, trimmed_model(*drive.model)}) {
    const std::string maker = driveModel2Manufacture(model.c_str());
    if (!maker.empty()) return maker;
  }
  return std::nullopt;
}

_ZYMDB_AimDisk record_of(const Drive& drive, const DrivePlace& place) {
  _ZYMDB_AimDisk record{};
  record.PCIFuncKey = place.function->key;
  if (place.kind != kBayKind) record.SlotNo = place.number;
  record.BayNo = place.number;
  record.LocationId = static_cast<uint8_t>(place.kind);
  record.DriveTypeId = static_cast<uint8_t>(DriveBus::kNvme);
  set_text(record.Model, drive.model);
  set_text(record.SerialNo, drive.serial);
  set_text(record.FwVersion, drive.firmware);
  set_text(record.Manufacture, maker_of(drive));
  if (drive.model) set_text(record.PartNo, trimmed_model(*drive.model));
  if (drive.capacity) set_text(record.Capacity, capacity_text(*drive.capacity));
  if (drive.health) {
    record.Warning = drive.health->warning;
    record.Temperature = drive.health->temperature;
    record.RemainLife = drive.health->remaining_life;
    record.InfoMask = kAllHealth;
  }
  return record;
}

struct Disk {
  const Drive* drive;
  const MachineFunction* function;
  uint16_t bay;
};

Value location(const Disk& disk) {
  return Value::text("Bay " + std::to_string(disk.bay));
}
Value location_kind(const Disk&) {
  return Value::number(kBayKind);
}
Value bay(const Disk& disk) {
  return Value::number(disk.bay);
}
Value presence(const Disk&) {
  return Value::number(1);
}
Value function_key(const Disk& disk) {
  return Value::number(disk.function->key);
}
Value drive_type(const Disk& disk) {
  return Value::number(static_cast<uint32_t>(disk.drive->bus));
}
Value media_type(const Disk& disk) {
  return Value::number(disk.drive->rotates ? kRotating : kSolidState);
}
Value controller_type(const Disk&) {
  return Value::number(0);
}
Value capacity(const Disk& disk) {
  return disk.drive->capacity ? Value::text(capacity_text(*disk.drive->capacity)) : Value();
}
Value maker(const Disk& disk) {
  return text_or_null(maker_of(*disk.drive));
}
template <auto Member>
Value text_of(const Disk& disk) {
  return text_or_null(disk.drive->*Member);
}

constexpr Column<Disk> kDiskColumns[] = {
    {{"Location", Role::kKey}, location},
    {{"LocationId", Role::kValue}, location_kind},
    {{"BayNo", Role::kValue}, bay},
    {{"Presence", Role::kValue}, presence},
    {{"PCIFuncKey", Role::kValue}, function_key},
    {{"CtrlType", Role::kInitial}, controller_type},
    {{"DriveTypeId", Role::kValue}, drive_type},
    {{"MediaTypeId", Role::kValue}, media_type},
    {{"SerialNo", Role::kValue}, text_of<&Drive::serial>},
    {{"Model", Role::kValue}, text_of<&Drive::model>},
    {{"UUID", Role::kValue}, text_of<&Drive::unique_id>},
    {{"Manufacture", Role::kValue}, maker},
    {{"FwVersion", Role::kValue}, text_of<&Drive::firmware>},
    {{"Capacity", Role::kValue}, capacity},
};

// Drives of other types than SATA and SAS.
bool is_no_disk(const std::string* drive_type_id) {
  return drive_type_id == nullptr || (*drive_type_id != "1" && *drive_type_id != "2");
}

void require(int status, const std::string& action) {
  if (status == ZYM_DB_STATUS_OK) return;
  const char* reason = zym_db_get_error_str(status);
  throw DatabaseError("cannot " + action + ": " + (reason != nullptr ? reason : "unknown failure"));
}

std::vector<_ZYMDB_AimDisk> stored_drives(const std::string& filter) {
  _ZYMDB_AimDisk_List list{};
  require(zymdb_get_disk_list_with_filter(&list, filter.c_str()), "read the NVMe drives");
  const std::unique_ptr<_ZYMDB_AimDisk, decltype(&std::free)> owner(list.disks, &std::free);
  return {list.disks, list.disks + list.count};
}

bool is_equal(const std::vector<_ZYMDB_AimDisk>& drives, const std::vector<_ZYMDB_AimDisk>& others) {
  return drives.size() == others.size() &&
         std::memcmp(drives.data(), others.data(), drives.size() * sizeof(_ZYMDB_AimDisk)) == 0;
}

void write_drive(const _ZYMDB_AimDisk& drive, bool has_health, TableSummary& summary) {
  const int kind = drive.LocationId;
  const std::string place =
      "DriveTypeId=3 AND LocationId=" + std::to_string(kind) + " AND BayNo=" + std::to_string(drive.BayNo);
  const auto before = stored_drives(place);
  require(zymdb_add_update_nvme_aim_disk(&drive), "write an NVMe drive");
  if (has_health) require(zymdb_update_aim_disk_smart_info(&drive), "write an NVMe drive's health");
  require(zymdb_update_aim_disk_presence(kind, drive.BayNo, 1), "write an NVMe drive's presence");
  const auto after = stored_drives(place);
  // The library takes a place that it cannot read for an empty one.
  if (after.size() != std::max<size_t>(before.size(), 1)) throw DatabaseError("cannot read the NVMe drives");
  if (before.empty())
    ++summary.inserted;
  else if (!is_equal(before, after))
    ++summary.updated;
  else
    ++summary.unchanged;
}

using Places = std::set<std::pair<int, uint16_t>>;

void mark_the_gone(const Places& present, TableSummary& summary) {
  for (const auto& drive : stored_drives("Presence=1 AND DriveTypeId=3")) {
    if (present.contains({drive.LocationId, drive.BayNo})) continue;
    require(zymdb_update_aim_disk_presence(drive.LocationId, drive.BayNo, 0),
            "write an NVMe drive's presence");
    ++summary.updated;
  }
}

}  // namespace

TableContent disk_rows(const Machine& machine, const std::vector<Drive>& drives) {
  std::vector<Disk> disks;
  std::set<uint16_t> taken;
  for (const auto& drive : drives) {
    const auto place = place_of(machine, drive);
    if (!place) continue;
    if (drive.bus != DriveBus::kNvme)
      disks.push_back({&drive, place->function, drive.port.value_or(0)});
    else if (place->kind == kBayKind)
      taken.insert(place->number);
  }
  auto content = make_content("AimDisks", kDiskColumns);
  set_owner(content, "DriveTypeId", is_no_disk);
  for (auto& disk : disks) {
    while (!taken.insert(disk.bay).second) ++disk.bay;
    add_row(content, kDiskColumns, disk, true);
  }
  return content;
}

void write_nvme_drives(const Machine& machine, const std::vector<Drive>& drives, const Observer& observer,
                       TableSummary& disks) {
  Places present;
  for (const auto& drive : drives) {
    if (drive.bus != DriveBus::kNvme) continue;
    const auto place = place_of(machine, drive);
    if (!place || place->kind == 0) {
      if (observer.notice)
        observer.notice("the NVMe drive " + drive.name + " is in no slot or bay: left out");
      continue;
    }
    present.emplace(place->kind, place->number);
    write_drive(record_of(drive, *place), drive.health.has_value(), disks);
  }
  mark_the_gone(present, disks);
}

}  // namespace zymdb::collect
