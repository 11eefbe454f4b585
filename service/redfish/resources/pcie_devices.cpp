#include "service/redfish/model/mapping.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

// The first version that a component of the device has, when they all have the same.
std::string firmware_version(const Machine& machine, const Device& device) {
  std::string version;
  for (const FunctionPart& component : machine.firmware) {
    const std::string text = component.row.text("VersionString");
    if (component.device != &device || text.empty()) continue;
    if (!version.empty() && version != text) return "";
    version = text;
  }
  return version;
}

std::optional<bool> is_warned(const Device& device) {
  for (const Function& function : device.functions) {
    if (function.row.is_warned({"LinkState"}).value_or(false)) return true;
  }
  return {};
}

const char* location_type(const Device& device) {
  const auto location = device.adapter             ? device.adapter->number("Location")
                        : device.functions.empty() ? std::nullopt
                                                   : device.functions.front().row.number("Location");
  return location == uint64_t{1} ? "Slot" : location == uint64_t{2} ? "Bay" : nullptr;
}

Json make_device(const Machine& machine, const Device& device) {
  Json json{{"Name", first_text({device.name(), device.id})},
            {"Status", status("Enabled", is_warned(device))}};
  if (!device.functions.empty())
    json["DeviceType"] = device.functions.size() > 1 ? "MultiFunction" : "SingleFunction";
  fill_from_device(json, device, "PCIeDevice");
  if (const char* const type = location_type(device); type != nullptr && json.contains("Slot"))
    json["Slot"]["Location"]["PartLocation"]["LocationType"] = type;
  const std::string version = firmware_version(machine, device);
  if (!version.empty()) json["FirmwareVersion"] = first_text({version});
  json["PCIeFunctions"] = link(path_of(device) + "/PCIeFunctions");
  add_links(json["Links"], "Chassis", {kChassis});
  std::vector<std::string> processors;
  for (const FunctionPart& gpu : machine.gpus) {
    if (gpu.device == &device) processors.push_back(path_of_gpu(gpu));
  }
  if (!processors.empty()) add_links(json["Links"], "Processors", processors);
  return json;
}

template <class Parts, class PathOf>
void add_links_of(Json& links, const char* property, const Parts& parts, const Function& function,
                  PathOf path_of) {
  std::vector<std::string> paths;
  for (const FunctionPart& part : parts) {
    if (part.function == &function) paths.push_back(path_of(part));
  }
  if (!paths.empty()) add_links(links, property, paths);
}

Json make_function(const Machine& machine, const Device& device, const Function& function) {
  // No source tells of virtual functions by themselves.
  Json json{
      {"Name", first_text({function.row.text("Name"), "PCIe function"})},
      {"FunctionType", "Physical"},
      {"Status", status("Enabled", function.row.is_warned({"LinkState"}).value_or(false) ? std::optional(true)
                                                                                         : std::nullopt)}};
  fill(json, function.row, mappings_of("PCIeFunction", "functions"));
  Json& links = json["Links"];
  links["PCIeDevice"] = link(path_of(device));
  add_links_of(links, "Drives", machine.drives, function, path_of_drive);
  add_links_of(links, "NetworkDeviceFunctions", machine.logical_ports, function, path_of_network_function);
  for (const FunctionPart& gpu : machine.gpus) {
    if (gpu.function == &function && !links.contains("Processor"))
      links["Processor"] = link(path_of_gpu(gpu));
  }
  return json;
}

}  // namespace

void add_pcie_devices(Tree& tree) {
  const Machine& machine = tree.machine();
  tree.add_collection(kDevices, schema("PCIeDeviceCollection"));
  for (const Device& device : machine.devices) {
    tree.add(path_of(device), schema("PCIeDevice"),
             [&machine, &device] { return make_device(machine, device); });
    if (device.adapter) tree.add_origin(*device.adapter, path_of(device));
    tree.add_collection(path_of(device) + "/PCIeFunctions", schema("PCIeFunctionCollection"));
    for (const Function& function : device.functions) {
      tree.add(path_of(device, function), schema("PCIeFunction"),
               [&machine, &device, &function] { return make_function(machine, device, function); });
      tree.add_origin(function.row, path_of(device, function));
    }
  }
}

}  // namespace zymdb::service::redfish
