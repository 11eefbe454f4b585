// What a driver tells of a network interface beyond sysfs, through ethtool's kernel interface.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_ETHTOOL_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_ETHTOOL_H

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "collect/sources/sysfs/network_port.h"

namespace zymdb::collect {

struct EthtoolSettings {
  std::optional<std::string> permanent_address;
  std::optional<uint32_t> max_speed;  // Mbit/s, the fastest supported link mode
  std::optional<Connector> connector;
};

// Asks about an interface by its name.
using EthtoolReader = std::function<EthtoolSettings(const std::string& interface)>;

// Asks the running kernel. An interface that is not there, or a driver that does not answer, tells nothing.
EthtoolSettings read_ethtool(const std::string& interface);

// The version of the firmware that an interface's device runs, as its driver tells the running kernel.
std::optional<std::string> read_firmware_version(const std::string& interface);

// The fastest of the link modes in a bit set of the kernel's numbers for them; nothing when none is known.
std::optional<uint32_t> fastest_mode(std::span<const uint32_t> modes);

// The connector of a medium (the kernel's PORT_ codes). A port for pluggable modules and cables is what its
// highest speed (Mbit/s) makes it.
std::optional<Connector> connector_of(unsigned medium, std::optional<uint32_t> max_speed);

// The cage of a port for pluggable modules.
std::optional<Connector> cage_of(std::optional<uint32_t> max_speed);

// "3C:FD:FE:00:00:01". Nothing for no bytes, or none but zeros.
std::optional<std::string> address_text(std::span<const uint8_t> bytes);

}  // namespace zymdb::collect

#endif
