#include "collect/rows/drive_rows.h"

#include <cstdlib>
#include <set>
#include <utility>

#include "collect/rows/row_columns.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr uint32_t kSolidState = 1;
constexpr uint32_t kRotating = 0;
constexpr uint32_t kNvme = static_cast<uint32_t>(DriveBus::kNvme);
constexpr int kSmallChange = 3;  // degrees
constexpr size_t kLongestLocation = 16;

// ---- Rows

struct DriveRow {
  const Drive& drive;
  const MachineFunction& function;
  DrivePlace place;
  std::string location;
  std::optional<uint8_t> former_temperature;
};

template <auto Member>
Value number_of(const DriveRow& row) {
  return number_or_null(row.place.*Member);
}
template <auto Member>
Value text_of(const DriveRow& row) {
  return text_or_null(row.drive.*Member);
}
template <auto Member>
Value health_of(const DriveRow& row) {
  return row.drive.health ? Value::number((*row.drive.health).*Member) : Value();
}

Value drive_type(const DriveRow& row) {
  return row.drive.bus == DriveBus::kVirtio ? Value() : Value::number(static_cast<uint32_t>(row.drive.bus));
}
Value media_type(const DriveRow& row) {
  return Value::number(row.drive.rotates ? kRotating : kSolidState);
}
Value capacity(const DriveRow& row) {
  return row.drive.capacity ? Value::text(capacity_text(*row.drive.capacity)) : Value();
}

// As the library has it for drives in bays: what hardly changes is no reason to write.
Value temperature(const DriveRow& row) {
  if (!row.drive.health) return {};
  const int now = row.drive.health->temperature;
  const int then = row.former_temperature.value_or(now);
  return Value::number(std::abs(now - then) <= kSmallChange ? then : now);
}
Value health_mask(const DriveRow& row) {
  return row.drive.health ? Value::number(kAllHealth) : Value();
}

constexpr Column<DriveRow> kDriveColumns[] = {
    {{"Location", Role::kKey, Kind::kText}, [](const DriveRow& row) { return Value::text(row.location); }},
    {{"LocationId", Role::kValue},
     [](const DriveRow& row) { return Value::number(static_cast<uint32_t>(row.place.location)); }},
    {{"BayNo", Role::kValue}, number_of<&DrivePlace::number>},
    {{"Presence", Role::kValue}, [](const DriveRow&) { return Value::number(1); }},
    {{"PCIFuncKey", Role::kValue}, [](const DriveRow& row) { return Value::number(row.function.key); }},
    {{"CtrlType", Role::kInitial}, [](const DriveRow&) { return Value::number(0); }},
    {{"DriveTypeId", Role::kValue}, drive_type},
    {{"MediaTypeId", Role::kValue}, media_type},
    {{"SerialNo", Role::kValue, Kind::kText}, text_of<&Drive::serial>},
    {{"Model", Role::kValue, Kind::kText}, text_of<&Drive::model>},
    {{"UUID", Role::kValue, Kind::kText}, text_of<&Drive::unique_id>},
    {{"Manufacture", Role::kValue, Kind::kText},
     [](const DriveRow& row) { return text_or_null(maker_of(row.drive)); }},
    {{"FwVersion", Role::kValue, Kind::kText}, text_of<&Drive::firmware>},
    {{"Capacity", Role::kValue, Kind::kText}, capacity},
    {{"Warning", Role::kTold}, health_of<&DriveHealth::warning>},
    {{"Temperature", Role::kTold}, temperature},
    {{"RemainLife", Role::kTold}, health_of<&DriveHealth::remaining_life>},
    {{"InfoMask", Role::kTold}, health_mask},
};

bool is_disk(const Value& drive_type) {
  return drive_type == Value::number(static_cast<uint8_t>(DriveBus::kSata)) ||
         drive_type == Value::number(static_cast<uint8_t>(DriveBus::kSas));
}

// Texts that no operation of the library makes.
bool is_own_location(const Value& location) {
  const std::string* text = location.as_text();
  return text != nullptr && (text->starts_with("Board ") || text->find(" #") != std::string::npos);
}

bool is_foreign(const TableContent& content, const std::vector<Value>& values) {
  return !is_disk(content.value_of(values, "DriveTypeId")) &&
         !is_own_location(content.value_of(values, "Location"));
}

// ---- Places

// "Board 03:00.0".
std::string board_text(const FunctionKey function) {
  const std::string address = function.text();
  const bool is_first_segment = address.starts_with("0000:");
  return "Board " + address.substr(is_first_segment ? 5 : 2);
}

std::string location_text(const DrivePlace& place, FunctionKey function) {
  if (!place.number) return board_text(function);
  return (place.location == ZYMDB_LOCATION_BAY ? "Bay " : "Slot ") + std::to_string(*place.number);
}

// Gives each drive a text of its own: "Slot 2", "Slot 2 #2".
class LocationTexts {
 public:
  std::string choose(const DrivePlace& place, FunctionKey function) {
    std::string text = location_text(place, function);
    const unsigned use = ++uses_[text];
    if (use > 1) text += " #" + std::to_string(use);
    return std::string(cut(text, kLongestLocation));
  }

 private:
  std::map<std::string, unsigned> uses_;
};

class DriveRowMaker {
 public:
  DriveRowMaker(const Machine& machine, const FormerDrives& former) : machine_(machine), former_(former) {
    for (const auto& function : *machine.functions) functions_.emplace(function.pci.address, &function);
  }

  void add_nvme(const Drive& drive) {
    const MachineFunction* function = find_function(drive);
    if (function == nullptr) return;
    if (drive.silence) return leave(function->key);
    const DrivePlace place = place_of(*function);
    const bool is_first = place.number && taken_.insert(place).second;
    if (is_first) {
      texts_.choose(place, function->key);
      rows_.nvme.push_back(nvme_record(drive, function->key, place));
    } else {
      add(drive, *function, {place.location, {}}, texts_.choose(place, function->key));
    }
  }

  void add_disk(const Drive& drive) {
    const MachineFunction* function = find_function(drive);
    if (function == nullptr) return;
    DrivePlace place;
    if (drive.port) place = next_bay(*drive.port);
    add(drive, *function, place, texts_.choose(place, function->key));
  }

  DriveRows take() { return std::move(rows_); }
  TableContent& content() { return rows_.rest; }

 private:
  // Nobody else gets its place.
  void leave(FunctionKey function) {
    rows_.silent.insert(function);
    rows_.rest.kept.add(function);
    if (const auto former = former_.nvme_places.find(function); former != former_.nvme_places.end())
      taken_.insert(former->second);
  }

  const MachineFunction* find_function(const Drive& drive) {
    const auto function = functions_.find(drive.function);
    if (function != functions_.end()) return function->second;
    rows_.notices.push_back("the drive " + drive.name + " hangs on " + to_string(drive.function) +
                            ", which is not there: left out");
    return nullptr;
  }

  DrivePlace place_of(const MachineFunction& function) const {
    const Slot* slot = machine_.slot_of(function);
    if (slot != nullptr && slot->number) return {slot->location, slot->number};
    const auto former = former_.nvme_places.find(function.key);
    const bool stays = !function.place_known && former != former_.nvme_places.end();
    return stays ? former->second : DrivePlace{};
  }

  DrivePlace next_bay(uint16_t number) {
    DrivePlace bay{ZYMDB_LOCATION_BAY, number};
    while (!taken_.insert(bay).second) ++*bay.number;
    return bay;
  }

  void add(const Drive& drive, const MachineFunction& function, const DrivePlace& place,
           const std::string& location) {
    const auto former = former_.temperatures.find(location);
    const auto temperature =
        former == former_.temperatures.end() ? std::nullopt : std::optional(former->second);
    add_row(rows_.rest, kDriveColumns, {drive, function, place, location, temperature}, true,
            drive.health.has_value());
  }

  const Machine& machine_;
  const FormerDrives& former_;
  std::map<PciAddress, const MachineFunction*> functions_;
  std::set<DrivePlace> taken_;
  LocationTexts texts_;
  DriveRows rows_{{}, make_content("AimDisks", kDriveColumns), {}, {}};
};

// Of what is not told, rows of functions that are there.
RowTest stays(const Machine& machine, bool nvme_told, bool disks_told) {
  FunctionSet present;
  for (const auto& function : *machine.functions) present.add(function.key);
  return [present = std::move(present), nvme_told, disks_told](const TableContent& content,
                                                               const std::vector<Value>& values) {
    const bool is_nvme = content.value_of(values, "DriveTypeId") == Value::number(kNvme);
    const Value& function = content.value_of(values, "PCIFuncKey");
    return !(is_nvme ? nvme_told : disks_told) && (function.is_null() || present.contains(function));
  };
}

}  // namespace

DriveRows drive_rows(const Machine& machine, const DriveFindings& findings, const FormerDrives& former) {
  DriveRowMaker maker(machine, former);
  TableContent& content = maker.content();
  content.is_foreign = is_foreign;
  content.function_column = "PCIFuncKey";
  content.keeps = stays(machine, findings.nvme.has_value(), findings.disks.has_value());
  for (const auto& drive : findings.nvme.value_or(std::vector<Drive>{})) maker.add_nvme(drive);
  for (const auto& drive : findings.disks.value_or(std::vector<Drive>{})) maker.add_disk(drive);
  return maker.take();
}

}  // namespace zymdb::collect
