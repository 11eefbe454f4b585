#include <algorithm>

#include "service/redfish/model/mapping.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

struct Controller {
  uint64_t device_class;  // upper 16 bits of the class code
  const char* protocol;
};
constexpr Controller kControllers[] = {{0x0106, "SATA"}, {0x0107, "SAS"}, {0x0108, "NVMe"}};

std::string name_of(const Device& device) {
  return first_text({device.name(), device.id});
}

std::string controller_path(const Device& device) {
  return storage_path(device) + "/Controllers/1";
}

Json make_storage(const Machine& machine, const Device& device) {
  Json json{{"Name", name_of(device)}, {"Status", status("Enabled")}};
  json["Controllers"] = link(storage_path(device) + "/Controllers");
  std::vector<std::string> drives;
  for (const FunctionPart& drive : machine.drives) {
    if (drive.device == &device) drives.push_back(path_of_drive(drive));
  }
  add_links(json, "Drives", drives);
  add_links(json["Links"], "Enclosures", {kChassis});
  return json;
}

Json make_controller(const Machine& machine, const Device& device) {
  Json json{{"Name", name_of(device)}, {"Status", status("Enabled")}};
  fill_from_device(json, device, "StorageController");
  json["SupportedControllerProtocols"] = Json::array({"PCIe"});
  for (const Controller& controller : kControllers) {
    if (device.has_class(controller.device_class, controller.device_class))
      json["SupportedDeviceProtocols"].push_back(controller.protocol);
  }
  std::vector<std::string> functions;
  for (const Function& function : device.functions) functions.push_back(path_of(device, function));
  add_links(json["Links"], "PCIeFunctions", functions);
  const auto component = std::ranges::find(machine.firmware, &device, &FunctionPart::device);
  if (component != machine.firmware.end() && !component->row.text("VersionString").empty())
    json["FirmwareVersion"] = first_text({component->row.text("VersionString")});
  return json;
}

// A location's kind of place: 1 is a slot, 2 to 4 are bays.
const char* location_type(const Row& row) {
  const auto kind = row.number("LocationId");
  return kind == uint64_t{1} ? "Slot" : kind && *kind >= 2 && *kind <= 4 ? "Bay" : nullptr;
}

Json make_drive(const FunctionPart& drive) {
  const Row& row = drive.row;
  Json json{{"Name", first_text({row.text("Location"), "Drive"})},
            {"Status", status_of(row, row.is_warned({"HealthStatusId", "Warning"}))}};
  fill(json, row, mappings_of("Drive", "drives"));
  if (const auto warning = row.number("Warning")) json["FailurePredicted"] = *warning != 0;
  if (const char* const type = location_type(row))
    json["PhysicalLocation"]["PartLocation"]["LocationType"] = type;
  if (Json uuid = as_uuid(row.value("UUID")); !uuid.is_null())
    json["Identifiers"] = Json::array({{{"DurableName", std::move(uuid)}, {"DurableNameFormat", "UUID"}}});
  json["Links"]["Chassis"] = link(kChassis);
  if (drive.device == nullptr) return json;
  json["Links"]["Storage"] = link(storage_path(*drive.device));
  // Behind other controllers, a drive is no function itself.
  if (row.text("DisplayType").ends_with("NVMe"))
    add_links(json["Links"], "PCIeFunctions", {path_of(*drive.device, *drive.function)});
  return json;
}

}  // namespace

void add_storage(Tree& tree) {
  const Machine& machine = tree.machine();
  tree.add_collection(kDrives, schema("DriveCollection"));
  for (const FunctionPart& drive : machine.drives) {
    tree.add(path_of_drive(drive), schema("Drive"), [&drive] { return make_drive(drive); });
    tree.add_origin(drive.row, path_of_drive(drive));
  }
  tree.add_collection(kStorage, schema("StorageCollection"));
  for (const Device& device : machine.devices) {
    if (!is_storage(machine, device)) continue;
    tree.add(storage_path(device), schema("Storage"),
             [&machine, &device] { return make_storage(machine, device); });
    tree.add_collection(storage_path(device) + "/Controllers", schema("StorageControllerCollection"));
    tree.add(controller_path(device), schema("StorageController"),
             [&machine, &device] { return make_controller(machine, device); });
  }
}

}  // namespace zymdb::service::redfish
