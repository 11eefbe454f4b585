#include "collect/rows/firmware_rows.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "collect/rows/row_columns.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr uint32_t kPciHardwareType = 3;
constexpr size_t kLongestText = 32;
constexpr size_t kLongestDeviceName = 128;

// Classifications of components.
constexpr uint32_t kClassFirmware = 10;
constexpr uint32_t kClassBios = 0x8002;
constexpr uint32_t kClassBootRom = 0x8005;

struct KindInfo {
  const char* software_id;
  const char* name;
  uint32_t classification;
};

// By FirmwareKind.
constexpr KindInfo kKinds[] = {
    {"OS:NVME", "NVMe firmware", kClassFirmware},   {"OS:NIC", "Network firmware", kClassFirmware},
    {"OS:FABRIC", "RDMA firmware", kClassFirmware}, {"OS:VIDEO", "Video BIOS", kClassBios},
    {"OS:OPROM", "Option ROM", kClassBootRom},      {"OS:FC", "Fibre Channel firmware", kClassFirmware},
};

struct View {
  const MachineFunction& function;
  const FirmwareComponent& component;
  const PciIds& names;

  const KindInfo& kind() const { return kKinds[static_cast<size_t>(component.kind)]; }
};

Value manufacture(const View& view) {
  const auto vendor = short_vendor(view.names.vendor(view.function.pci.vendor));
  return vendor.empty() ? Value() : Value::text(std::string(cut(vendor, kLongestText)));
}

Value version(const View& view) {
  const auto& text = view.component.version;
  return text ? Value::text(std::string(cut(*text, kLongestText))) : Value();
}

constexpr Column<View> kColumns[] = {
    {{"HardwareId", Role::kKey}, [](const View& view) { return Value::number(view.function.key); }},
    {{"SoftwareID", Role::kKey, Kind::kText},
     [](const View& view) { return Value::text(view.kind().software_id); }},
    {{"HardwareTypeId", Role::kValue}, [](const View&) { return Value::number(kPciHardwareType); }},
    {{"FirmwareName", Role::kValue, Kind::kText},
     [](const View& view) { return Value::text(view.kind().name); }},
    {{"VersionString", Role::kValue, Kind::kText}, version},
    {{"Manufacture", Role::kValue, Kind::kText}, manufacture},
    {{"Classification", Role::kValue},
     [](const View& view) { return Value::number(view.kind().classification); }},
};

bool is_reported_by_others(const Value& software_id) {
  return software_id.as_text() == nullptr || !software_id.as_text()->starts_with("OS:");
}

bool is_told_by_drivers(const PciFunction& function) {
  const bool is_fibre_channel = function.base_class() == kClassSerialBus && function.subclass() == 0x04;
  return is_fibre_channel || function.base_class() == kClassNetwork || function.base_class() == kClassDisplay;
}

// ---- Embedded devices

struct EmbeddedDevice {
  std::string software_id;
  std::string name;
  std::optional<uint8_t> version;
  std::optional<std::string> version_text;
};

constexpr char kSystem[] = "SYSTEM";
constexpr char kController[] = "EC";

constexpr Column<EmbeddedDevice> kEmbeddedColumns[] = {
    {{"SoftwareID", Role::kKey, Kind::kText},
     [](const EmbeddedDevice& device) { return Value::text(device.software_id); }},
    {{"DeviceIndex", Role::kKey}, [](const EmbeddedDevice&) { return Value::number(0); }},
    {{"DeviceName", Role::kValue, Kind::kText},
     [](const EmbeddedDevice& device) {
       return Value::text(std::string(cut(device.name, kLongestDeviceName)));
     }},
    {{"Version", Role::kValue}, [](const EmbeddedDevice& device) { return number_or_null(device.version); }},
    {{"VersionString", Role::kValue, Kind::kText},
     [](const EmbeddedDevice& device) { return text_or_null(device.version_text); }},
};

bool is_not_of_the_system(const Value& software_id) {
  return software_id != Value::text(kSystem) && software_id != Value::text(kController);
}

void append(std::string& text, const char* before, const std::optional<std::string>& part) {
  if (part) text += before + *part;
}

// The library's record has room for one number of the version: the whole version stands in the name.
EmbeddedDevice system_device(const SmbiosFirmware& firmware) {
  EmbeddedDevice device{kSystem, "System firmware", firmware.major_release, firmware.version};
  append(device.name, " ", firmware.version);
  append(device.name, ", ", firmware.release_date);
  append(device.name, ", ", firmware.vendor);
  return device;
}

EmbeddedDevice controller_device(uint8_t major, uint8_t minor) {
  const std::string version = std::to_string(major) + "." + std::to_string(minor);
  return {kController, "Embedded controller " + version, major, version};
}

}  // namespace

TableContent firmware_rows(const Machine& machine, const std::vector<FirmwareComponent>& components,
                           const PciIds& names, ToldBy told_by) {
  auto content = make_content("Firmwares", kColumns);
  content.is_foreign = where("SoftwareID", is_reported_by_others);
  content.function_column = "HardwareId";
  std::map<PciAddress, const MachineFunction*> functions;
  for (const auto& function : *machine.functions) functions.emplace(function.pci.address, &function);
  for (const auto& component : components) {
    const auto found = functions.find(component.function);
    if (found == functions.end()) continue;
    if (component.silence)
      content.kept.add(found->second->key);
    else
      add_row(content, kColumns, {*found->second, component, names}, true);
  }
  for (const auto& function : *machine.functions) {
    const bool is_told =
        told_by == ToldBy::kDrivers || (told_by == ToldBy::kSysfs && !is_told_by_drivers(function.pci));
    if (!is_told) content.kept.add(function.key);
  }
  return content;
}

TableContent embedded_firmware_rows(const std::vector<SmbiosFirmware>& firmware) {
  auto content = make_content("EmbeddedDeviceFirmware", kEmbeddedColumns);
  content.is_foreign = where("SoftwareID", is_not_of_the_system);
  if (firmware.empty()) return content;
  const SmbiosFirmware& system = firmware.front();
  add_row(content, kEmbeddedColumns, system_device(system), true);
  const auto& major = system.controller_major_release;
  const auto& minor = system.controller_minor_release;
  if (major && minor) add_row(content, kEmbeddedColumns, controller_device(*major, *minor), true);
  return content;
}

}  // namespace zymdb::collect
