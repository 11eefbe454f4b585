#include "show/ports.h"

#include <algorithm>

#include "collect/sources/pci/pci_function.h"
#include "common/text.h"
#include "show/inventory.h"
#include "show/pci_text.h"
#include "terminal/failure.h"
#include "zymdb_pci.h"

namespace zymdb::tool {
namespace {

std::vector<_ZYMDB_PCI_Generic> read_functions(const char* filter) {
  _ZYMDB_PCI_Generic_List list{};
  const int status = zymdb_get_pci_generic_info_list(&list, filter);
  auto functions = take_array(list.items, list.count);
  require_status(status, "read the functions");
  return functions;
}

uint32_t key_of(const _ZYMDB_PCI_Generic& function) {
  return uint32_t{function.SegNo} << 24 | uint32_t{function.BusNo} << 16 | uint32_t{function.DeviceNo} << 8 |
         function.FunctionNo;
}

uint32_t adapter_key(const std::string& text) {
  _ZYMDB_PCI_Adapter_List list{};
  const int status = zymdb_get_pci_adapter_list(&list);
  const auto adapters = take_array(list.adapters, list.count);
  require_status(status, "read the adapters");
  const auto key = leading_number(text);
  const auto found = std::find_if(adapters.begin(), adapters.end(), [&](const _ZYMDB_PCI_Adapter& adapter) {
    return adapter.PCIKey == key ||
           (adapter.Location != 0 && place_text(adapter.Location, adapter.SlotNo) == text);
  });
  if (found == adapters.end()) throw Failure("there is no adapter '" + text + "' in the inventory");
  return found->PCIKey;
}

std::vector<uint32_t> wanted_functions(const PortSelection& selection) {
  if (!selection.function.empty()) return {parse_function(selection.function)};
  std::vector<uint32_t> keys;
  const std::string of_adapter =
      selection.adapter.empty() ? std::string() : "DevKey=" + std::to_string(adapter_key(selection.adapter));
  const auto functions = read_functions(of_adapter.empty() ? nullptr : of_adapter.c_str());
  std::transform(functions.begin(), functions.end(), std::back_inserter(keys), key_of);
  std::sort(keys.begin(), keys.end());
  return keys;
}

// Ports of one kind, function by function. `none` is what the library answers for a function without.
template <class Port, class List>
std::vector<Port> read_ports(const PortSelection& selection, int (*read)(unsigned, List*), int none) {
  std::vector<Port> ports;
  for (const uint32_t function : wanted_functions(selection)) {
    List list{};
    const int status = read(function, &list);
    const auto of_function = take_array(list.ports, list.count);
    if (status != none) require_status(status, "read the ports");
    for (const auto& port : of_function) ports.push_back({port, function});
  }
  return ports;
}

}  // namespace

void add_port_options(CLI::App& command, PortSelection& selection) {
  auto* function =
      command.add_option("--function", selection.function, "Only of this function: address or function key")
          ->type_name("FUNCTION");
  command
      .add_option("--adapter", selection.adapter, "Only of this adapter: PCI key or place, as in \"slot 3\"")
      ->type_name("ADAPTER")
      ->excludes(function);
}

std::vector<PhysicalPort> read_physical_ports(const PortSelection& selection) {
  return read_ports<PhysicalPort>(selection, zymdb_get_network_physical_port_list, ZYM_DB_STATUS_NOT_FOUND);
}

std::vector<LogicalPort> read_logical_ports(const PortSelection& selection) {
  return read_ports<LogicalPort>(selection, zymdb_get_network_logical_port_list, ZYM_DB_STATUS_DONE);
}

uint32_t parse_function(const std::string& text) {
  if (const auto address = parse_pci_address(text); address && address->domain < 0x100) {
    return address->domain << 24 | uint32_t{address->bus} << 16 | uint32_t{address->device} << 8 |
           address->function;
  }
  const auto key = leading_number(text);
  const bool whole = text.find_first_not_of("0123456789abcdefABCDEFxX") == std::string::npos;
  if (!key || !whole || *key > UINT32_MAX)
    throw CLI::ValidationError("FUNCTION",
                               "'" + text + "' is neither an address like 0000:3b:00.0 nor a key");
  return static_cast<uint32_t>(*key);
}

std::string link_status_text(uint32_t status) {
  switch (status) {
    case 0:
      return "unknown";
    case 1:
      return "up";
    case 2:
      return "down";
    default:
      return "state " + std::to_string(status);
  }
}

std::string link_speed_text(uint64_t megabits) {
  if (megabits == 0) return {};
  if (megabits < 1000) return std::to_string(megabits) + " Mbit/s";
  std::string text = std::to_string(megabits / 1000);
  if (const auto rest = megabits % 1000; rest != 0) {
    text += "." + std::to_string(1000 + rest).substr(1);
    text.erase(text.find_last_not_of('0') + 1);
  }
  return text + " Gbit/s";
}

}  // namespace zymdb::tool
