#include <algorithm>
#include <set>

#include "service/redfish/model/mapping.h"
#include "service/redfish/model/names.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

Json make_software(const Row& row, const std::string& related, const std::string& name = "") {
  Json json{{"Name", first_text({name, "Firmware"})},
            {"Status", status("Enabled", row.is_warned({"Update"}))}};
  fill(json, row, mappings_of("SoftwareInventory", row.of().name));
  json["Active"] = true;
  if (!related.empty()) add_links(json, "RelatedItem", {related});
  return json;
}

// What is staged for the next activation.
Json make_pending(const Row& row, const std::string& related) {
  Json json = make_software(row, related);
  json.erase("ReleaseDate");
  json["Version"] = first_text({row.text("PendingVersionString")});
  if (Json date = time_of_date(row.value("PendingReleaseDate")); !date.is_null()) json["ReleaseDate"] = date;
  json["Active"] = false;
  json["Staged"] = true;
  json["Status"] = status("StandbyOffline");
  return json;
}

// A device that is updated has a PCI key or a function's, and its place.
std::string related_of(const Machine& machine, const Row& row) {
  const auto has_key = [&](const Device& device) {
    return device.adapter && device.adapter->number("PCIKey").value_or(0) != 0 &&
           device.adapter->number("PCIKey") == row.number("PCIKey");
  };
  const auto found = std::ranges::find_if(machine.devices, has_key);
  return found != machine.devices.end() ? path_of(*found) : "";
}

void add_software(Tree& tree, const std::string& id, const Row& row, const std::string& related,
                  const std::string& name = "") {
  const std::string path = kFirmwareInventory + "/" + id;
  tree.add(path, schema("SoftwareInventory"),
           [row, related, name] { return make_software(row, related, name); });
  tree.add_origin(row, path);
}

// A drive's firmware, where its function tells of none.
bool has_component(const Machine& machine, const FunctionPart& drive) {
  return drive.function != nullptr && drive.row.text("DisplayType").ends_with("NVMe") &&
         std::ranges::any_of(machine.firmware,
                             [&](const FunctionPart& each) { return each.function == drive.function; });
}

}  // namespace

void add_firmware(Tree& tree) {
  const Machine& machine = tree.machine();
  tree.add_collection(kFirmwareInventory, schema("SoftwareInventoryCollection"));
  for (const FunctionPart& component : machine.firmware)
    add_software(tree, component.id, component.row,
                 component.device != nullptr ? path_of(*component.device, *component.function) : "");
  for (const Part& device : machine.embedded) add_software(tree, device.id, device.row, kSystem);
  Names names;
  for (const FunctionPart& component : machine.firmware) names.take({component.id}, "Firmware");
  for (const Part& device : machine.embedded) names.take({device.id}, "Firmware");
  for (const Part& device : machine.pldm) names.take({device.id}, "Firmware");
  for (const Part& device : machine.pldm) {
    const std::string related = related_of(machine, device.row);
    add_software(tree, device.id, device.row, related);
    if (device.row.text("PendingVersionString").empty()) continue;
    tree.add(kFirmwareInventory + "/" + names.take({device.id + "-Pending"}, "Pending"),
             schema("SoftwareInventory"), [row = device.row, related] { return make_pending(row, related); });
  }
  for (const FunctionPart& drive : machine.drives) {
    if (drive.row.text("FwVersion").empty() || has_component(machine, drive)) continue;
    add_software(tree, names.take({"Drive-" + drive.id}, "Drive"), drive.row, path_of_drive(drive),
                 drive.row.text("Location") + " firmware");
  }
  for (const Part& module : machine.memory) {
    if (module.row.text("FirmwareVersion").empty()) continue;
    add_software(tree, names.take({"Memory-" + module.id}, "Memory"), module.row, kMemory + "/" + module.id,
                 module.row.text("Locator") + " firmware");
  }
}

}  // namespace zymdb::service::redfish
