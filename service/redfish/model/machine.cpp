#include "service/redfish/model/machine.h"

#include <algorithm>
#include <set>
#include <utility>

#include "service/redfish/model/names.h"

namespace zymdb::service::redfish {
namespace {

using documents::Document;
using documents::PartClass;

constexpr uint64_t kSlot = 1;
constexpr uint64_t kBay = 2;

std::vector<Row> rows_of(const Document& document, std::string_view part_class) {
  std::vector<Row> rows;
  const PartClass* const of = document.find(part_class);
  for (size_t index = 0; of != nullptr && index < of->parts.size(); ++index) rows.emplace_back(*of, index);
  return rows;
}

// "0000:17:00" of "0000:17:00.1".
std::string device_of_address(const std::string& address) {
  const size_t dot = address.rfind('.');
  return dot == std::string::npos ? address : address.substr(0, dot);
}

std::string number_text(const Row& row, std::string_view key) {
  const auto number = row.number(key);
  return number ? std::to_string(*number) : "";
}

// "Slot-2" of what is in a slot or a bay; empty of what is on the board.
std::string place_of(const Row& row) {
  const auto location = row.number("Location");
  const std::string number = number_text(row, "SlotNo");
  if (number.empty() || (location != kSlot && location != kBay)) return "";
  return (location == kSlot ? "Slot-" : "Bay-") + number;
}

// An attribute's name has letters, digits and "_" alone, and begins with a letter.
std::string attribute_name(const std::string& id) {
  std::string name;
  for (const char c : id.substr(0, 128)) {
    const bool is_letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool is_digit = c >= '0' && c <= '9';
    name += is_letter || is_digit ? c : '_';
  }
  const bool begins_well =
      !name.empty() && name.front() != '_' && !(name.front() >= '0' && name.front() <= '9');
  return begins_well && name.size() > 1 ? name : "Setting_" + name;
}

std::vector<Part> named(const std::vector<Row>& rows, std::initializer_list<std::string_view> keys,
                        std::string_view fallback) {
  Names names;
  std::vector<Part> parts;
  for (const Row& row : rows) {
    std::string together;
    for (const std::string_view key : keys) {
      const std::string text = row.text(key).empty() ? number_text(row, key) : row.text(key);
      together += (together.empty() || text.empty() ? "" : "-") + text;
    }
    parts.push_back({names.take({together}, fallback), row});
  }
  return parts;
}

}  // namespace

std::string Device::name() const {
  if (adapter && !adapter->text("CardName").empty()) return adapter->text("CardName");
  return functions.empty() ? "" : functions.front().row.text("Name");
}

bool Device::is_in_slot() const {
  return !functions.empty() && functions.front().row.number("Location") == kSlot;
}

const Function* Device::function(std::string_view address) const {
  const auto found = std::ranges::find(functions, address, &Function::address);
  return found != functions.end() ? &*found : nullptr;
}

bool Device::has_class(uint64_t first, uint64_t last) const {
  return std::ranges::any_of(functions, [&](const Function& function) {
    const auto code = function.row.number("ClsCode");
    return code && *code >> 8 >= first && *code >> 8 <= last;
  });
}

Machine::Machine(const Document& document) {
  for (const Row& row : rows_of(document, "system")) system = system ? system : std::optional(row);
  processors = named(rows_of(document, "processors"), {"Socket"}, "CPU");
  memory = named(rows_of(document, "memory"), {"Locator"}, "DIMM");
  pldm = named(rows_of(document, "pldm"), {"Place", "SoftwareID"}, "PLDM");
  embedded = named(rows_of(document, "embedded"), {"SoftwareID", "DeviceIndex"}, "Embedded");
  add_functions(document);
  add_adapters(document);
  name_devices();
  index_functions();
  gpus = parts_of(document, "gpus");
  drives = parts_of(document, "drives");
  ports = parts_of(document, "ports");
  logical_ports = parts_of(document, "logical-ports");
  firmware = parts_of(document, "firmware");
  name_function_parts();
  add_settings(document);
}

void Machine::add_functions(const Document& document) {
  std::map<std::string, size_t> known;
  for (const Row& row : rows_of(document, "functions")) {
    const std::string address = row.text("Address");
    // What has no address is a device of its own.
    const auto [at, is_new] = address.empty() ? std::pair(known.end(), true)
                                              : known.emplace(device_of_address(address), devices.size());
    const size_t index = is_new ? devices.size() : at->second;
    if (is_new) devices.emplace_back();
    devices[index].functions.push_back({"", address, row});
  }
}

void Machine::add_adapters(const Document& document) {
  std::map<std::string, size_t> known;
  for (size_t index = 0; index < devices.size(); ++index) {
    for (const Function& function : devices[index].functions) known.emplace(function.address, index);
  }
  for (const Row& row : rows_of(document, "adapters")) {
    const std::string address = row.text("Address");
    const auto found = address.empty() ? known.end() : known.find(address);
    if (found != known.end() && !devices[found->second].adapter)
      devices[found->second].adapter = row;
    else
      devices.push_back({.id = "", .adapter = row, .functions = {}});
  }
}

// An adapter in a slot is called by the slot, whatever number its bus has.
void Machine::name_devices() {
  Names names;
  for (Device& device : devices) {
    const std::string address =
        device.functions.empty() ? "" : device_of_address(device.functions.front().address);
    const std::string place = device.adapter ? place_of(*device.adapter) : "";
    device.id = names.take({place, address}, "Device");
    Names function_names;
    for (Function& function : device.functions)
      function.id = function_names.take({number_text(function.row, "FunctionNo")}, "Function");
  }
}

void Machine::index_functions() {
  for (const Device& device : devices) {
    for (const Function& function : device.functions)
      if (!function.address.empty()) by_address_.try_emplace(function.address, &device, &function);
  }
}

std::vector<FunctionPart> Machine::parts_of(const Document& document, std::string_view part_class) const {
  std::vector<FunctionPart> parts;
  for (const Row& row : rows_of(document, part_class)) {
    const auto found = by_address_.find(row.text("Function"));
    const auto [device, function] =
        found != by_address_.end() ? found->second : std::pair<const Device*, const Function*>();
    parts.push_back({"", row, device, function});
  }
  return parts;
}

void Machine::name_function_parts() {
  // GPUs are processors: one collection.
  Names processor_names;
  for (const Part& processor : processors) processor_names.take({processor.id}, "CPU");
  for (FunctionPart& gpu : gpus) {
    const std::string name = "GPU-" + (gpu.device != nullptr ? gpu.device->id : gpu.row.text("Function"));
    const std::string index = number_text(gpu.row, "GPUChipIndex");
    gpu.id = processor_names.take({name, index.empty() ? "" : name + "-" + index}, "GPU");
  }
  Names drive_names;
  for (FunctionPart& drive : drives) drive.id = drive_names.take({drive.row.text("Location")}, "Drive");
  // Within a device, a port is told by its function and its number there.
  std::map<const Device*, Names> port_names, logical_names;
  const auto within = [](const FunctionPart& part) {
    return (part.function != nullptr ? part.function->id : "") + "-" + number_text(part.row, "Idx");
  };
  for (FunctionPart& port : ports) port.id = port_names[port.device].take({within(port)}, "Port");
  for (FunctionPart& port : logical_ports)
    port.id = logical_names[port.device].take({within(port)}, "Function");
  Names firmware_names;
  for (FunctionPart& component : firmware) {
    const std::string place = component.device != nullptr && component.function != nullptr
                                  ? component.device->id + "-" + component.function->id
                                  : component.row.text("Function");
    const std::string name = component.row.text("SoftwareID").empty() ? component.row.text("FirmwareName")
                                                                      : component.row.text("SoftwareID");
    component.id = firmware_names.take({place + "-" + name}, "Firmware");
  }
  // All firmware is one collection.
  for (std::vector<Part>* const parts : {&pldm, &embedded}) {
    for (Part& part : *parts) part.id = firmware_names.take({part.id}, "Firmware");
  }
}

void Machine::add_settings(const Document& document) {
  std::set<std::string> taken;
  for (const Row& row : rows_of(document, "settings")) {
    const std::string id = row.text("SettingID");
    if (id.empty()) continue;
    const std::string name = attribute_name(id);
    std::string attribute = name;
    for (unsigned number = 2; !taken.insert(attribute).second; ++number)
      attribute = name + "_" + std::to_string(number);
    settings.push_back({std::move(attribute), row});
  }
}

}  // namespace zymdb::service::redfish
