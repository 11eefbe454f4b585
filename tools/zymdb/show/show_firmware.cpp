#include <memory>

#include "commands/commands.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "show/pci_text.h"
#include "zymdb_firmware.h"

namespace zymdb::tool {
namespace {

// ---- Components of PCI functions

constexpr char kFirmwareExamples[] =
    "  zymdb show firmware\n"
    "  zymdb show firmware --columns FUNCTION,NAME,VERSION\n"
    "  zymdb show firmware --json | jq '.firmware[] | select(.Manufacture == \"Intel\")'";

struct Component : _ZYMDB_PCI_Firmware {
  uint32_t PCIFuncKey = 0;
};

Value function_address(const Component& component) {
  return address_text(component.PCIFuncKey);
}

constexpr Column<Component> kComponentColumns[] = {
    derived<Component>("FUNCTION", "address of the PCI function", Shown::kByDefault, function_address),
    field<Component, &Component::PCIFuncKey, 8>("PCIFuncKey", "KEY", "function key"),
    long_text(field<Component, &Component::FirmwareName>("FirmwareName", "NAME", "name of the component",
                                                         Shown::kByDefault)),
    field<Component, &Component::VersionString>("VersionString", "VERSION", "installed version",
                                                Shown::kByDefault),
    field<Component, &Component::Description>("Description", "DESCRIPTION", "description"),
    field<Component, &Component::ReleaseDate>("ReleaseDate", "DATE", "release date", Shown::kByDefault),
    field<Component, &Component::Classification, 4>("Classification", "CLASSCODE", "classification code"),
    field<Component, &Component::ClassificationString>("ClassificationString", "CLASS", "classification",
                                                       Shown::kByDefault),
    field<Component, &Component::Manufacture>("Manufacture", "MAKER", "maker", Shown::kByDefault),
    field<Component, &Component::SoftwareID>("SoftwareID", "SOFTWARE", "software id", Shown::kByDefault),
};

std::vector<Component> read_components() {
  std::vector<Component> components;
  for (const auto& function : all_functions("read the firmware")) {
    _ZYMDB_PCI_Firmware_List list{};
    const int status = zymdb_get_pci_firmware_list(key_of(function), &list);
    const auto of_function = take_array(list.Firmwares, list.Count);
    require_status(status, "read the firmware");
    for (const auto& component : of_function) components.push_back({component, key_of(function)});
  }
  return components;
}

// ---- PLDM devices

constexpr char kPldmExamples[] =
    "  zymdb show pldm\n"
    "  zymdb show pldm --pending\n"
    "  zymdb show pldm --failed --columns DEVICE,SLOT,ERROR";

using Device = _ZYMDB_PLDM_Firmware;
using DeviceReader = int (*)(_ZYMDB_PLDM_Firmware_List*);

constexpr uint32_t kPending = 2;

Value device_place(const Device& device) {
  return place_text(device.Location, device.SlotNo);
}

Value update_state(const Device& device) {
  std::string text = device.Updated == 0 ? "" : device.UpdateErrCode == 0 ? "succeeded" : "failed";
  if (device.Status == kPending) text += text.empty() ? "pending" : ", pending";
  return text;
}

Tone update_tone(const Device& device) {
  return device.Updated != 0 && device.UpdateErrCode != 0 ? Tone::kWarning : Tone::kPlain;
}

constexpr Column<Device> kDeviceColumns[] = {
    derived<Device>("PLACE", "slot, drive bay or system board (Location and SlotNo)", Shown::kByDefault,
                    device_place),
    long_text(field<Device, &Device::DeviceName>("DeviceName", "DEVICE", "name", Shown::kByDefault)),
    field<Device, &Device::DeviceType>("DeviceType", "TYPE", "device type code; 23: not known"),
    field<Device, &Device::PCIKey, 8>("PCIKey", "KEY", "PCI key"),
    field<Device, &Device::PCIFuncKey, 8>("PCIFuncKey", "FUNCTIONKEY", "function key"),
    field<Device, &Device::Location>("Location", "LOCATION", "0 system board, 1 slot, 2 drive bay"),
    field<Device, &Device::SlotNo>("SlotNo", "SLOT", "slot number within the location"),
    field<Device, &Device::Manufacture>("Manufacture", "MAKER", "maker"),
    field<Device, &Device::SoftwareID>("SoftwareID", "SOFTWARE", "software id", Shown::kByDefault),
    field<Device, &Device::VersionString>("VersionString", "VERSION", "installed version", Shown::kByDefault),
    field<Device, &Device::PendingVersionString>("PendingVersionString", "NEXT",
                                                 "version staged for the next activation", Shown::kByDefault),
    field<Device, &Device::PkgVersionString>("PkgVersionString", "PACKAGE", "version of the package"),
    field<Device, &Device::ReleaseDate>("ReleaseDate", "DATE", "release date"),
    field<Device, &Device::PendingReleaseDate>("PendingReleaseDate", "NEXTDATE",
                                               "release date of the staged version"),
    field<Device, &Device::UpdateSupport>("UpdateSupport", "UPDATABLE", "0: cannot be updated"),
    derived<Device>("UPDATE", "what became of the last update", Shown::kByDefault, update_state, update_tone),
    field<Device, &Device::Updated>("Updated", "UPDATED", "not 0: an update was applied"),
    field<Device, &Device::UpdateMethod, 4>("UpdateMethod", "METHOD", "update method code"),
    field<Device, &Device::UpdateAuxInfo>("UpdateAuxInfo", "AUXINFO", "auxiliary information"),
    field<Device, &Device::UpdateErrCode>("UpdateErrCode", "ERRORCODE", "0: the update succeeded"),
    field<Device, &Device::UpdateErrString>("UpdateErrString", "ERROR", "why the update failed"),
    field<Device, &Device::Status>("Status", "STATUS", "2: an update is pending"),
};

struct PldmList {
  const char* option;
  const char* help;
  DeviceReader read;
};
constexpr PldmList kPldmLists[] = {
    {"--pending", "Only those with a pending update", zymdb_get_pldm_firmware_pending_list},
    {"--updated", "Only those to which an update was applied", zymdb_get_pldm_firmware_updated_list},
    {"--failed", "Only those whose update failed", zymdb_get_pldm_firmware_update_failure_list},
    {"--succeeded", "Only those whose update succeeded", zymdb_get_pldm_firmware_update_success_list},
};

std::vector<Device> read_devices(DeviceReader read) {
  _ZYMDB_PLDM_Firmware_List list{};
  const int status = read(&list);
  auto devices = take_array(list.Firmwares, list.Count);
  require_status(status, "read the PLDM devices");
  return devices;
}

void add_show_pldm(CommandTree& tree, CLI::App& show) {
  const auto reader = std::make_shared<DeviceReader>(zymdb_get_pldm_firmware_list);
  auto& command =
      add_listing(tree, show,
                  make_listing<Device>("pldm", "Firmware of devices that are updated over PLDM",
                                       kDeviceColumns, [reader] { return read_devices(*reader); }),
                  kPldmExamples);
  std::vector<CLI::Option*> flags;
  for (const auto& [name, help, read] : kPldmLists) {
    auto* flag = command.add_flag_callback(
        name, [reader, read = read] { *reader = read; }, help);
    for (auto* other : flags) flag->excludes(other);
    flags.push_back(flag);
  }
}

// ---- Embedded devices

constexpr char kEmbeddedExamples[] =
    "  zymdb show embedded\n"
    "  zymdb show embedded --json | jq -r '.embedded[].DeviceName'";

using Embedded = _ZYMDB_Embedded_Firmware;

constexpr Column<Embedded> kEmbeddedColumns[] = {
    long_text(field<Embedded, &Embedded::DeviceName>("DeviceName", "DEVICE", "name", Shown::kByDefault)),
    field<Embedded, &Embedded::DeviceIndex>("DeviceIndex", "INDEX", "tells devices of a software id apart",
                                            Shown::kByDefault),
    field<Embedded, &Embedded::StructRev>("StructRev", "REVISION", "revision of its description"),
    field<Embedded, &Embedded::Version>("Version", "VERSION", "version", Shown::kByDefault),
    field<Embedded, &Embedded::SoftwareID>("SoftwareID", "SOFTWARE", "software id", Shown::kByDefault),
    field<Embedded, &Embedded::Class, 4>("Class", "CLASS", "class code"),
    field<Embedded, &Embedded::Category>("Category", "CATEGORY", "category code"),
    field<Embedded, &Embedded::SubCategory>("SubCategory", "SUBCATEGORY", "subcategory code"),
    field<Embedded, &Embedded::Checksum, 2>("Checksum", "CHECKSUM", "checksum"),
};

std::vector<Embedded> read_embedded() {
  _ZYMDB_Embedded_Firmware_List list{};
  const int status = zymdb_get_embedded_firmware_list(&list);
  auto devices = take_array(list.Firmwares, list.Count);
  require_status(status, "read the embedded devices");
  return devices;
}

}  // namespace

void add_show_firmware(CommandTree& tree, CLI::App& show) {
  add_listing(tree, show,
              make_listing<Component>("firmware", "Firmware and software components of PCI functions",
                                      kComponentColumns, read_components),
              kFirmwareExamples);
  add_show_pldm(tree, show);
  add_listing(tree, show,
              make_listing<Embedded>("embedded", "Firmware of devices on the system board", kEmbeddedColumns,
                                     read_embedded),
              kEmbeddedExamples);
}

}  // namespace zymdb::tool
