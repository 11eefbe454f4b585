#include "service/redfish/model/mapping.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

Json make_chassis(const Tree& tree) {
  const Machine& machine = tree.machine();
  // The form of the housing is what no source tells.
  Json json{{"Name", "Chassis"}, {"ChassisType", "Other"}, {"Status", status("Enabled")}};
  if (machine.system) fill(json, *machine.system, mappings_of("Chassis", "system"));
  json["PCIeDevices"] = link(kDevices);
  json["NetworkAdapters"] = link(kNetworkAdapters);
  json["Drives"] = link(kDrives);
  add_links(json["Links"], "ComputerSystems", {kSystem});
  add_links(json["Links"], "ManagedBy", {kManager});
  std::vector<std::string> drives;
  for (const FunctionPart& drive : machine.drives) drives.push_back(path_of_drive(drive));
  add_links(json["Links"], "Drives", drives);
  return json;
}

// The slots that something is in: of others no function tells.
Json make_slots(const Machine& machine) {
  Json slots = Json::array();
  for (const Device& device : machine.devices) {
    if (!device.is_in_slot()) continue;
    Json slot{{"Location", {{"PartLocation", {{"LocationType", "Slot"}}}}}, {"Status", status("Enabled")}};
    fill(slot, device.functions.front().row, mappings_of("PCIeSlots", "functions"));
    add_links(slot["Links"], "PCIeDevice", {path_of(device)});
    slots.push_back(std::move(slot));
  }
  return {{"Name", "PCIe slots"}, {"Slots", std::move(slots)}};
}

}  // namespace

void add_chassis(Tree& tree) {
  const Machine& machine = tree.machine();
  tree.add_collection(kAllChassis, schema("ChassisCollection"));
  tree.add(kChassis, schema("Chassis"), [&tree] { return make_chassis(tree); });
  tree.add(kSlots, schema("PCIeSlots"), [&machine] { return make_slots(machine); });
}

}  // namespace zymdb::service::redfish
