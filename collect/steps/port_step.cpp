#include "collect/steps/port_step.h"

#include <algorithm>
#include <set>

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

}  // namespace

RowMaker collect_ports(const Survey& survey) {
  if (!survey.machine().functions || survey.sysfs().empty()) return {};
  auto ports = read_sysfs_ports(survey.sysfs(), survey.drivers().ethtool);
  if (!ports) return {};
  const auto functions = network_functions(survey.machine());
  if (!functions.empty() && !has_port_of(*ports, functions) && !survey.allows_empty()) {
    survey.note_left("ports of network functions in " + survey.sysfs() + "/class");
    return {};
  }
  return [&survey, ports = std::move(*ports)](_zym_db_handle_t* handle) {
    return network_rows(survey.machine(), ports, read_port_context(handle));
  };
}

}  // namespace zymdb::collect
