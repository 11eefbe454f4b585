#include "collect/rows/drive_rows.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <set>

#include "collect/rows/row_columns.h"
#include "common/text.h"
#include "zymdb_storage.h"

namespace zymdb::collect {
namespace {

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
  Location location = Location::kBoard;
  uint16_t number = 0;
};

std::optional<DrivePlace> place_of(const Machine& machine, const Drive& drive) {
  if (!machine.functions) return std::nullopt;
  const auto function = std::ranges::find(*machine.functions, drive.function,
                                          [](const MachineFunction& each) { return each.pci.address; });
  if (function == machine.functions->end()) return std::nullopt;
  const Slot* slot = machine.slot_of(*function);
  if (slot == nullptr || !slot->number) return DrivePlace{&*function, Location::kBoard, 0};
  return DrivePlace{&*function, slot->location, *slot->number};
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
  record.PCIFuncKey = place.function->key.value;
  if (place.location != Location::kBay) record.SlotNo = place.number;
  record.BayNo = place.number;
  record.LocationId = static_cast<uint8_t>(place.location);
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
  return Value::number(static_cast<uint32_t>(Location::kBay));
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
    {{"Location", Role::kKey, Kind::kText}, location},
    {{"LocationId", Role::kValue}, location_kind},
    {{"BayNo", Role::kValue}, bay},
    {{"Presence", Role::kValue}, presence},
    {{"PCIFuncKey", Role::kValue}, function_key},
    {{"CtrlType", Role::kInitial}, controller_type},
    {{"DriveTypeId", Role::kValue}, drive_type},
    {{"MediaTypeId", Role::kValue}, media_type},
    {{"SerialNo", Role::kValue, Kind::kText}, text_of<&Drive::serial>},
    {{"Model", Role::kValue, Kind::kText}, text_of<&Drive::model>},
    {{"UUID", Role::kValue, Kind::kText}, text_of<&Drive::unique_id>},
    {{"Manufacture", Role::kValue, Kind::kText}, maker},
    {{"FwVersion", Role::kValue, Kind::kText}, text_of<&Drive::firmware>},
    {{"Capacity", Role::kValue, Kind::kText}, capacity},
};

// Drives of other types than SATA and SAS.
bool is_no_disk(const Value& drive_type) {
  return drive_type != Value::number(static_cast<uint8_t>(DriveBus::kSata)) &&
         drive_type != Value::number(static_cast<uint8_t>(DriveBus::kSas));
}

bool is_any(const Value&) {
  return true;
}

}  // namespace

TableContent disk_rows(const Machine& machine, const std::optional<std::vector<Drive>>& drives,
                       const std::vector<NvmeRecord>& nvme) {
  auto content = make_content("AimDisks", kDiskColumns);
  content.ownership = {"DriveTypeId", drives ? is_no_disk : is_any};
  std::set<uint16_t> taken;
  for (const auto& [record, has_health] : nvme) {
    if (record.LocationId == static_cast<uint8_t>(Location::kBay)) taken.insert(record.BayNo);
  }
  if (!drives) return content;
  for (const auto& drive : *drives) {
    const auto place = place_of(machine, drive);
    if (!place) continue;
    Disk disk{&drive, place->function, drive.port.value_or(0)};
    while (!taken.insert(disk.bay).second) ++disk.bay;
    add_row(content, kDiskColumns, disk, true);
  }
  return content;
}

std::vector<NvmeRecord> nvme_records(const Machine& machine, const std::vector<Drive>& drives,
                                     std::vector<std::string>& notices) {
  std::vector<NvmeRecord> records;
  for (const auto& drive : drives) {
    const auto place = place_of(machine, drive);
    if (!place || place->location == Location::kBoard) {
      notices.push_back("the NVMe drive " + drive.name + " is in no slot or bay: left out");
    } else {
      records.push_back({record_of(drive, *place), drive.health.has_value()});
    }
  }
  return records;
}

}  // namespace zymdb::collect
