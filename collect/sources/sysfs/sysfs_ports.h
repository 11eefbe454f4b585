// The readers of one kind of network port each, and what they share.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_PORTS_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_PORTS_H

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "collect/sources/sysfs/ethtool.h"
#include "collect/sources/sysfs/network_port.h"

namespace zymdb::collect {

// A network interface; those of InfiniBand ports are among them.
struct NetworkInterface {
  std::string name;
  unsigned dev_port = 0;
  std::optional<unsigned> port_name;  // the number in its phys_port_name
  NetworkPort port;                   // its index is not yet decided
};

std::vector<NetworkInterface> read_interfaces(const std::filesystem::path& root,
                                              const EthtoolReader& ethtool);
std::vector<NetworkPort> read_infiniband_ports(const std::filesystem::path& root);
std::vector<NetworkPort> read_fibre_channel_ports(const std::filesystem::path& root);

// The PCI function in whose folder a folder lies, the nearest one; nothing for one of a virtual device.
std::optional<PciAddress> function_of(const std::filesystem::path& folder);

// The trimmed content of an attribute file; nothing when it cannot be read or is empty.
std::optional<std::string> read_word(const std::filesystem::path& file);

// "3C:FD:FE:00:00:01" of the digits in "3c:fd:fe:00:00:01", "0x21000024ff123456" or "0002:c903:00fa:1234".
// Nothing for anything else, and for zeros.
std::optional<std::string> address_of_digits(std::string_view text);

// Mbit/s of "16 Gbit" or "56 Gb/sec (4X FDR)".
std::optional<uint32_t> gigabits(std::string_view text);

}  // namespace zymdb::collect

#endif
