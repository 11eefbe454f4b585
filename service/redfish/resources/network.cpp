#include <algorithm>
#include <utility>

#include "service/redfish/model/mapping.h"
#include "service/redfish/model/names.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

constexpr char kEthernet[] = "Ethernet";
constexpr char kFibreChannel[] = "FibreChannel";
constexpr char kInfiniBand[] = "InfiniBand";

// The logical port that a physical one carries; null where none does, or several.
const FunctionPart* logical_of(const Machine& machine, const FunctionPart& port) {
  const FunctionPart* found = nullptr;
  for (const FunctionPart& each : machine.logical_ports) {
    if (each.function != port.function || each.row.number("PhyIdx") != port.row.number("Idx")) continue;
    if (found != nullptr) return nullptr;
    found = &each;
  }
  return found;
}

const FunctionPart* physical_of(const Machine& machine, const FunctionPart& logical) {
  const auto found = std::ranges::find_if(machine.ports, [&](const FunctionPart& port) {
    return port.function == logical.function && port.row.number("Idx") == logical.row.number("PhyIdx");
  });
  return found != machine.ports.end() && found->device != nullptr ? &*found : nullptr;
}

std::string technology_of(const FunctionPart& logical) {
  const Json word = link_technology(logical.row.value("LinkTechnologyName"));
  return word.is_string() ? word.get<std::string>() : "";
}

// An address stands with those of its technology.
void add_addresses(Json& json, const Machine& machine, const FunctionPart& port) {
  const FunctionPart* const logical = logical_of(machine, port);
  const std::string technology = logical != nullptr ? technology_of(*logical) : "";
  if (technology.empty()) return;
  json["LinkNetworkTechnology"] = technology;
  const auto& address = port.row.value("PermanentAddress");
  const Json mac = as_mac_address(address), name = as_world_wide_name(address);
  if (technology == kEthernet) {
    json["PortProtocol"] = "Ethernet";
    if (!mac.is_null()) json["Ethernet"]["AssociatedMACAddresses"] = Json::array({mac});
  } else if (technology == kFibreChannel) {
    json["PortProtocol"] = "FC";
    if (!name.is_null()) json["FibreChannel"]["AssociatedWorldWideNames"] = Json::array({name});
  } else if (technology == kInfiniBand) {
    json["PortProtocol"] = "InfiniBand";
    const Json guid = as_port_guid(address);
    if (!guid.is_null()) json["InfiniBand"]["AssociatedPortGUIDs"] = Json::array({guid});
  }
}

Json make_port(const Machine& machine, const FunctionPart& port) {
  Json json{{"Name", first_text({port.row.text("InterfaceName"), "Port " + port.id})},
            {"Status", status("Enabled")}};
  fill(json, port.row, mappings_of("Port", "ports"));
  add_addresses(json, machine, port);
  return json;
}

void set_if_known(Json& json, std::string_view property, Json value) {
  if (!value.is_null()) set(json, property, std::move(value));
}

Json make_network_function(const Machine& machine, const FunctionPart& logical) {
  const Row& row = logical.row;
  Json json{{"Name", "Network function " + logical.id}, {"Status", status("Enabled")}};
  fill(json, row, mappings_of("NetworkDeviceFunction", "logical-ports"));
  const std::string technology = technology_of(logical);
  const auto &permanent = row.value("PermanentAddress"), &current = row.value("NetworkAddresses");
  if (technology == kEthernet) {
    set_if_known(json, "Ethernet/PermanentMACAddress", as_mac_address(permanent));
    set_if_known(json, "Ethernet/MACAddress", as_mac_address(current));
    set_if_known(json, "Ethernet/MTUSize", as_positive(row.value("MaxDataSize")));
  } else if (technology == kFibreChannel) {
    set_if_known(json, "FibreChannel/PermanentWWPN", as_world_wide_name(permanent));
    set_if_known(json, "FibreChannel/WWPN", as_world_wide_name(current));
  } else if (technology == kInfiniBand) {
    set_if_known(json, "InfiniBand/PermanentPortGUID", as_port_guid(permanent));
    set_if_known(json, "InfiniBand/MTUSize", as_positive(row.value("MaxDataSize")));
  }
  json["Links"]["PCIeFunction"] = link(path_of(*logical.device, *logical.function));
  if (const FunctionPart* const port = physical_of(machine, logical))
    json["Links"]["PhysicalNetworkPortAssignment"] = link(path_of_port(*port));
  return json;
}

std::string name_of(const Device& device) {
  return first_text({device.name(), device.id});
}

std::vector<std::string> paths_of(const Device& device, const std::vector<FunctionPart>& parts,
                                  std::string (*path_of)(const FunctionPart&)) {
  std::vector<std::string> paths;
  for (const FunctionPart& part : parts) {
    if (part.device == &device) paths.push_back(path_of(part));
  }
  return paths;
}

Json make_controller(const Machine& machine, const Device& device) {
  Json controller = Json::object();
  Json& links = controller["Links"];
  add_links(links, "PCIeDevices", {path_of(device)});
  const auto ports = paths_of(device, machine.ports, path_of_port);
  const auto functions = paths_of(device, machine.logical_ports, path_of_network_function);
  add_links(links, "Ports", ports);
  add_links(links, "NetworkDeviceFunctions", functions);
  controller["ControllerCapabilities"] = {{"NetworkPortCount", ports.size()},
                                          {"NetworkDeviceFunctionCount", functions.size()}};
  const auto component = std::ranges::find(machine.firmware, &device, &FunctionPart::device);
  if (component != machine.firmware.end() && !component->row.text("VersionString").empty())
    controller["FirmwarePackageVersion"] = first_text({component->row.text("VersionString")});
  return controller;
}

Json make_adapter(const Machine& machine, const Device& device) {
  Json json{{"Name", name_of(device)}, {"Status", status("Enabled")}};
  fill_from_device(json, device, "NetworkAdapter");
  json["Controllers"] = Json::array({make_controller(machine, device)});
  json["Ports"] = link(adapter_path(device) + "/Ports");
  json["NetworkDeviceFunctions"] = link(adapter_path(device) + "/NetworkDeviceFunctions");
  return json;
}

Json make_interface(const Device& device) {
  return {{"Name", name_of(device)},
          {"Status", status("Enabled")},
          {"Ports", link(adapter_path(device) + "/Ports")},
          {"NetworkDeviceFunctions", link(adapter_path(device) + "/NetworkDeviceFunctions")},
          {"Links", {{"NetworkAdapter", link(adapter_path(device))}}}};
}

bool is_ethernet(const Machine& machine, const FunctionPart& port) {
  const FunctionPart* const logical = logical_of(machine, port);
  return logical != nullptr && technology_of(*logical) == kEthernet;
}

Json make_ethernet_interface(const Machine& machine, const FunctionPart& port) {
  Json json{{"Name", first_text({port.row.text("InterfaceName"), "Ethernet interface"})},
            {"EthernetInterfaceType", "Physical"},
            {"Status", status("Enabled")}};
  fill(json, port.row, mappings_of("EthernetInterface", "ports"));
  const FunctionPart* const logical = logical_of(machine, port);
  if (logical != nullptr) fill(json, logical->row, mappings_of("EthernetInterface", "logical-ports"));
  if (port.device == nullptr) return json;
  add_links(json["Links"], "Ports", {path_of_port(port)});
  if (logical != nullptr)
    add_links(json["Links"], "NetworkDeviceFunctions", {path_of_network_function(*logical)});
  return json;
}

void add_ports(Tree& tree, const Device& device) {
  const Machine& machine = tree.machine();
  tree.add_collection(adapter_path(device) + "/Ports", schema("PortCollection"));
  for (const FunctionPart& port : machine.ports) {
    if (port.device != &device) continue;
    tree.add(path_of_port(port), schema("Port"), [&machine, &port] { return make_port(machine, port); });
    tree.add_origin(port.row, path_of_port(port));
  }
  tree.add_collection(adapter_path(device) + "/NetworkDeviceFunctions",
                      schema("NetworkDeviceFunctionCollection"));
  for (const FunctionPart& logical : machine.logical_ports) {
    if (logical.device != &device) continue;
    tree.add(path_of_network_function(logical), schema("NetworkDeviceFunction"),
             [&machine, &logical] { return make_network_function(machine, logical); });
    tree.add_origin(logical.row, path_of_network_function(logical));
  }
}

}  // namespace

void add_network(Tree& tree) {
  const Machine& machine = tree.machine();
  tree.add_collection(kNetworkAdapters, schema("NetworkAdapterCollection"));
  tree.add_collection(kNetworkInterfaces, schema("NetworkInterfaceCollection"));
  for (const Device& device : machine.devices) {
    if (!is_network_adapter(machine, device)) continue;
    tree.add(adapter_path(device), schema("NetworkAdapter"),
             [&machine, &device] { return make_adapter(machine, device); });
    add_ports(tree, device);
    tree.add(kNetworkInterfaces + "/" + device.id, schema("NetworkInterface"),
             [&device] { return make_interface(device); });
  }
  tree.add_collection(kEthernetInterfaces, schema("EthernetInterfaceCollection"));
  Names names;
  for (const FunctionPart& port : machine.ports) {
    if (!is_ethernet(machine, port)) continue;
    const std::string id =
        names.take({port.row.text("InterfaceName"), port.row.text("Function")}, "Interface");
    tree.add(kEthernetInterfaces + "/" + id, schema("EthernetInterface"),
             [&machine, &port] { return make_ethernet_interface(machine, port); });
  }
}

}  // namespace zymdb::service::redfish
