// A physical port of a network function, as the system that drives it tells.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_NETWORK_PORT_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_NETWORK_PORT_H

#include <cstdint>
#include <optional>
#include <string>

#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {

// The inventory's link technology codes.
enum class LinkTechnology : uint8_t { kEthernet = 2, kInfiniBand = 3, kFibreChannel = 4 };

// The inventory's storage role codes.
enum class StorageRole : uint8_t { kInitiator = 2, kTarget = 3, kBoth = 4 };

// The inventory's connector codes, as far as a system can tell them.
enum class Connector : uint16_t {
  kBnc = 3,
  kRj45 = 5,
  kAui = 11,
  kSfpPlus = 0x8005,
  kQsfpPlus = 0x8006,
  kSfp28 = 0x8007,
  kQsfp28 = 0x8008,
  kQsfp56 = 0x8009,
  kSfp56 = 0x800A,
  kQsfp112 = 0x800C,
};

// Bytes sent and received since the driver started to count.
struct PortCounters {
  uint64_t sent = 0;
  uint64_t received = 0;
};

// Everything that is not told is nothing. Speeds are in Mbit/s, addresses in the form "3C:FD:FE:00:00:01".
struct NetworkPort {
  PciAddress function;
  unsigned index = 0;                    // of the port within its function
  std::optional<std::string> interface;  // the system's name: "eth0", "ib0", else of the device or host
  LinkTechnology technology = LinkTechnology::kEthernet;
  std::optional<std::string> permanent_address;
  std::optional<std::string> current_address;
  std::optional<std::string> permanent_fibre_address;  // 16 digits: port name of a Fibre Channel function
  std::optional<std::string> current_fibre_address;
  std::optional<StorageRole> role;
  std::optional<uint32_t> mtu;  // bytes
  std::optional<uint32_t> max_speed;
  std::optional<bool> has_link;
  std::optional<uint32_t> speed;  // of the link
  std::optional<Connector> connector;
  std::optional<PortCounters> counters;
  std::optional<std::string> silence;  // why nothing is told of it but its function
};

}  // namespace zymdb::collect

#endif
