#include "service/redfish/resources/parts.h"

#include <algorithm>

#include "documents/part_names.h"
#include "service/redfish/model/mapping.h"
#include "service/redfish/model/paths.h"

namespace zymdb::service::redfish {

Json status(const char* state, std::optional<bool> is_warned) {
  Json json{{"State", state}};
  if (is_warned) json["Health"] = *is_warned ? "Warning" : "OK";
  return json;
}

Json status_of(const Row& row, std::optional<bool> is_warned) {
  return row.is_vacant() ? status("Absent") : status("Enabled", is_warned);
}

std::string first_text(std::initializer_list<std::string> texts) {
  for (const std::string& text : texts) {
    if (!text.empty()) return documents::utf8_text(text);
  }
  return "";
}

void add_links(Json& to, const std::string& property, const std::vector<std::string>& paths) {
  Json links = Json::array();
  for (const std::string& path : paths) links.push_back(link(path));
  to[property] = std::move(links);
  to[property + "@odata.count"] = paths.size();
}

void fill_from_device(Json& json, const Device& device, std::string_view resource) {
  if (!device.functions.empty()) fill(json, device.functions.front().row, mappings_of(resource, "functions"));
  if (device.adapter) fill(json, *device.adapter, mappings_of(resource, "adapters"));
}

std::string path_of(const Device& device) {
  return kDevices + "/" + device.id;
}
std::string path_of(const Device& device, const Function& function) {
  return path_of(device) + "/PCIeFunctions/" + function.id;
}
std::string adapter_path(const Device& device) {
  return kNetworkAdapters + "/" + device.id;
}
std::string storage_path(const Device& device) {
  return kStorage + "/" + device.id;
}
std::string path_of_drive(const FunctionPart& drive) {
  return kDrives + "/" + drive.id;
}
std::string path_of_gpu(const FunctionPart& gpu) {
  return kProcessors + "/" + gpu.id;
}
std::string path_of_port(const FunctionPart& port) {
  return adapter_path(*port.device) + "/Ports/" + port.id;
}
std::string path_of_network_function(const FunctionPart& port) {
  return adapter_path(*port.device) + "/NetworkDeviceFunctions/" + port.id;
}

bool is_network_adapter(const Machine& machine, const Device& device) {
  constexpr uint64_t kNetwork = 0x0200, kNetworkEnd = 0x02ff, kFibreChannel = 0x0c04, kInfiniBand = 0x0c06;
  const auto is_of_it = [&](const FunctionPart& port) { return port.device == &device; };
  return device.has_class(kNetwork, kNetworkEnd) || device.has_class(kFibreChannel, kFibreChannel) ||
         device.has_class(kInfiniBand, kInfiniBand) || std::ranges::any_of(machine.ports, is_of_it) ||
         std::ranges::any_of(machine.logical_ports, is_of_it);
}

bool is_storage(const Machine& machine, const Device& device) {
  constexpr uint64_t kMassStorage = 0x0100, kMassStorageEnd = 0x01ff;
  return device.has_class(kMassStorage, kMassStorageEnd) ||
         std::ranges::any_of(machine.drives,
                             [&](const FunctionPart& drive) { return drive.device == &device; });
}

}  // namespace zymdb::service::redfish
