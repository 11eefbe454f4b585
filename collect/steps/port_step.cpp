#include "collect/steps/port_step.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "collect/rows/network_rows.h"
#include "collect/sources/sysfs/sysfs_network.h"
#include "collect/write/port_context.h"

namespace zymdb::collect {
namespace {

using Addresses = std::set<PciAddress>;

Addresses network_functions(const Machine& machine) {
  Addresses addresses;
  for (const auto& function : *machine.functions) {
    if (is_network_function(function.pci)) addresses.insert(function.pci.address);
  }
  return addresses;
}

bool has_port_of(const std::vector<NetworkPort>& ports, const Addresses& functions) {
  return std::ranges::any_of(ports,
                             [&](const NetworkPort& port) { return functions.contains(port.function); });
}

using Ports = std::optional<std::vector<NetworkPort>>;

// Nothing: not told.
Ports find_ports(const Survey& survey) {
  if (survey.sysfs().empty()) return std::nullopt;
  auto ports = read_sysfs_ports(survey.sysfs(), survey.drivers().ethtool);
  const auto functions = network_functions(survey.machine());
  if (!ports || functions.empty() || has_port_of(*ports, functions) || survey.allows_empty()) return ports;
  survey.note_left("ports of network functions in " + survey.sysfs() + "/class");
  return std::nullopt;
}

// The ports of functions of which one does not answer stay as they are, as those that others describe.
std::set<FunctionKey> silent_functions(const Survey& survey, const Ports& ports) {
  std::set<FunctionKey> silent;
  for (const auto& port : ports.value_or(std::vector<NetworkPort>{})) {
    if (!port.silence) continue;
    survey.note_silent(*port.silence, "the function " + to_string(port.function) + " with its ports");
    for (const auto& function : *survey.machine().functions) {
      if (function.pci.address == port.function) silent.insert(function.key);
    }
  }
  return silent;
}

}  // namespace

RowMaker collect_ports(const Survey& survey) {
  if (!survey.machine().functions) return {};
  auto ports = find_ports(survey);
  auto silent = silent_functions(survey, ports);
  return [&survey, ports = std::move(ports), silent = std::move(silent)](const FormerMachine& former) {
    auto context = read_port_context(former);
    context.foreign_functions.insert(silent.begin(), silent.end());
    return ports ? network_rows(survey.machine(), *ports, context)
                 : untold_network_rows(survey.machine(), context.foreign_functions);
  };
}

}  // namespace zymdb::collect
