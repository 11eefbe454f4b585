#include "collect/sources/sysfs/sysfs_network.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

#include "collect/sources/sysfs/sysfs_ports.h"
#include "common/source_access.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

// The kernel's type numbers of network interfaces.
constexpr uint64_t kEthernet = 1;
constexpr uint64_t kInfiniBand = 32;

constexpr uint64_t kSetByDriver = 0;  // addr_assign_type: the address is the permanent one

// "p1" and "1" are numbers of ports; "pf0vf3" and the like stand for another function's end of the line.
bool is_representor(std::string_view port_name) {
  const auto has = [&](const char* part) { return port_name.find(part) != std::string_view::npos; };
  return has("pf") || has("vf") || has("sf");
}

// A port's index has 16 bits.
std::optional<unsigned> index_from(std::optional<uint64_t> number) {
  return number && *number <= UINT16_MAX ? std::optional(static_cast<unsigned>(*number)) : std::nullopt;
}

std::optional<unsigned> port_number(std::string_view port_name) {
  if (port_name.starts_with('p')) port_name.remove_prefix(1);
  return index_from(leading_number(port_name));
}

template <class Number>
std::optional<Number> number_of(const fs::path& file) {
  const auto number = read_number(file.string());
  return number ? std::optional(static_cast<Number>(*number)) : std::nullopt;
}

// An interface that is switched off tells its carrier to nobody.
std::optional<bool> read_carrier(const fs::path& folder) {
  if (const auto carrier = read_number((folder / "carrier").string())) return *carrier != 0;
  if (read_word(folder / "operstate") == "down") return false;
  return std::nullopt;
}

// All bits set, in the 16 or 32 that a driver has for it: not known.
std::optional<uint32_t> read_speed(const fs::path& folder) {
  const auto speed = number_of<uint32_t>(folder / "speed");
  const bool known = speed && *speed != 0 && *speed != UINT16_MAX && *speed != UINT32_MAX;
  return known ? speed : std::nullopt;
}

std::optional<PortCounters> read_counters(const fs::path& folder) {
  const auto sent = read_number((folder / "statistics/tx_bytes").string());
  const auto received = read_number((folder / "statistics/rx_bytes").string());
  return sent && received ? std::optional(PortCounters{*sent, *received}) : std::nullopt;
}

// An interface in a bond bears the bond's address, and the bond keeps its own. Kernels that do not tell who
// assigned an address have no way to set one for good.
std::optional<std::string> recorded_permanent_address(const fs::path& folder, const NetworkPort& port) {
  if (const auto kept = read_word(folder / "bonding_slave/perm_hwaddr")) return address_of_digits(*kept);
  const auto assigned = read_number((folder / "addr_assign_type").string());
  return assigned.value_or(kSetByDriver) == kSetByDriver ? port.current_address : std::nullopt;
}

std::optional<NetworkInterface> read_interface(const fs::path& folder, const EthtoolReader& ethtool) {
  const auto function = function_of(folder);
  const auto type = read_number((folder / "type").string());
  const std::string port_name = read_word(folder / "phys_port_name").value_or("");
  if (!function || is_representor(port_name) || (type != kEthernet && type != kInfiniBand))
    return std::nullopt;
  NetworkInterface interface {
    folder.filename().string(), index_from(read_number((folder / "dev_port").string())).value_or(0),
        port_number(port_name), {}
  };
  NetworkPort& port = interface.port;
  port.function = *function;
  port.interface = interface.name;
  port.technology = type == kEthernet ? LinkTechnology::kEthernet : LinkTechnology::kInfiniBand;
  if (const auto address = read_word(folder / "address")) port.current_address = address_of_digits(*address);
  port.mtu = number_of<uint32_t>(folder / "mtu");
  port.has_link = read_carrier(folder);
  port.speed = read_speed(folder);
  port.counters = read_counters(folder);
  EthtoolSettings settings;
  if (ethtool) settings = ethtool(interface.name);
  port.permanent_address =
      settings.permanent_address ? settings.permanent_address : recorded_permanent_address(folder, port);
  port.max_speed = settings.max_speed;
  port.connector = settings.connector;
  return interface;
}

std::optional<NetworkInterface> silent_interface(const fs::path& folder, const NoAnswer& problem) {
  const auto function = function_of(folder);
  if (!function) return std::nullopt;
  NetworkInterface interface;
  interface.name = folder.filename().string();
  interface.port.function = *function;
  interface.port.silence = problem.what();
  return interface;
}

using PortKey = std::pair<PciAddress, unsigned>;
using Ports = std::map<PortKey, NetworkPort>;

unsigned choose_index(const Ports& taken, const NetworkInterface& interface) {
  const auto is_free = [&](unsigned index) { return !taken.contains({interface.port.function, index}); };
  if (is_free(interface.dev_port)) return interface.dev_port;
  if (interface.port_name && is_free(*interface.port_name)) return *interface.port_name;
  unsigned index = 0;
  while (!is_free(index)) ++index;
  return index;
}

void add(Ports& ports, NetworkPort port) {
  const PortKey key(port.function, port.index);
  ports.emplace(key, std::move(port));
}

// The interface of an InfiniBand port; those of its partitions have the same number, and longer names.
void join_interface(Ports& ports, const NetworkInterface& interface) {
  const auto found = ports.find({interface.port.function, interface.dev_port});
  if (found == ports.end() || found->second.current_address) return;
  found->second.interface = interface.name;
  found->second.current_address = interface.port.current_address;
  found->second.mtu = interface.port.mtu;
}

void join_fibre_host(Ports& ports, NetworkPort host) {
  const auto found = ports.lower_bound({host.function, 0});
  if (found == ports.end() || found->first.first != host.function ||
      found->second.technology != LinkTechnology::kEthernet) {
    while (ports.contains({host.function, host.index})) ++host.index;
    return add(ports, std::move(host));
  }
  found->second.permanent_fibre_address = host.permanent_fibre_address;
  found->second.current_fibre_address = host.current_fibre_address;
  found->second.role = host.role;
}

}  // namespace

std::vector<NetworkInterface> read_interfaces(const fs::path& root, const EthtoolReader& ethtool) {
  std::vector<NetworkInterface> interfaces;
  SilentDevices silent;
  const auto read = [&](const fs::path& folder) {
    try {
      return read_interface(folder, ethtool);
    } catch (const NoAnswer& problem) {
      silent.add(problem);
      return silent_interface(folder, problem);
    }
  };
  for (const auto& folder : folder_entries(root / "class/net").value_or(std::vector<fs::path>{})) {
    if (auto interface = read(folder)) interfaces.push_back(std::move(*interface));
  }
  std::ranges::sort(interfaces, {}, [](const NetworkInterface& interface) {
    return std::tuple(interface.port.function, interface.dev_port, interface.port_name, interface.name.size(),
                      interface.name);
  });
  return interfaces;
}

std::optional<std::vector<NetworkPort>> read_sysfs_ports(const std::string& root,
                                                         const EthtoolReader& ethtool) {
  const bool described =
      std::ranges::any_of(std::initializer_list<const char*>{"net", "infiniband", "fc_host"},
                          [&](const char* kind) { return is_there(fs::path(root) / "class" / kind); });
  if (!described) return std::nullopt;
  Ports ports;
  for (auto& port : read_infiniband_ports(root)) add(ports, std::move(port));
  for (auto& interface : read_interfaces(root, ethtool)) {
    if (interface.port.technology == LinkTechnology::kInfiniBand) {
      join_interface(ports, interface);
    } else {
      interface.port.index = choose_index(ports, interface);
      add(ports, std::move(interface.port));
    }
  }
  for (auto& host : read_fibre_channel_ports(root)) join_fibre_host(ports, std::move(host));
  std::vector<NetworkPort> result;
  std::ranges::transform(ports, std::back_inserter(result),
                         [](auto& entry) { return std::move(entry.second); });
  return result;
}

}  // namespace zymdb::collect
