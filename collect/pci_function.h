// A PCI function, as its configuration space describes it.
#ifndef ZYMDB_COLLECT_PCI_FUNCTION_H
#define ZYMDB_COLLECT_PCI_FUNCTION_H

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "bytes.h"

namespace zymdb::collect {

struct PciAddress {
  std::uint32_t domain = 0;
  std::uint8_t bus = 0;
  std::uint8_t device = 0;    // 0 to 31
  std::uint8_t function = 0;  // 0 to 7

  auto operator<=>(const PciAddress&) const = default;

  bool same_device(const PciAddress& other) const {
    return domain == other.domain && bus == other.bus && device == other.device;
  }
};

// "0000:3b:00.0", "3b:00.0"; without a function ("0000:3b:00", as slots have it) the function is 0.
std::optional<PciAddress> parse_pci_address(std::string_view text);
std::string to_string(const PciAddress& address);

// Class codes, as far as the collector asks for them.
inline constexpr std::uint8_t kClassStorage = 0x01;
inline constexpr std::uint8_t kClassNetwork = 0x02;
inline constexpr std::uint8_t kClassDisplay = 0x03;
inline constexpr std::uint8_t kClassBridge = 0x06;
inline constexpr std::uint8_t kClassCoprocessor = 0x0b;
inline constexpr std::uint8_t kClassSerialBus = 0x0c;
inline constexpr std::uint8_t kClassEncryption = 0x10;
inline constexpr std::uint8_t kClassAccelerator = 0x12;

// A PCI Express link. Unknown where neither the configuration space nor the system tells.
struct PciLink {
  std::optional<std::uint8_t> width;       // lanes in use
  std::optional<std::uint8_t> generation;  // 1: 2.5 GT/s, 2: 5, 3: 8, 4: 16, 5: 32, 6: 64
  std::optional<std::uint8_t> max_width;   // lanes
  std::optional<std::uint8_t> max_generation;
};

enum class PortType : std::uint8_t { kUnknown, kRootPort, kUpstream, kDownstream, kOther };

struct PciFunction {
  PciAddress address;
  std::uint16_t vendor = 0xFFFF;
  std::uint16_t device = 0xFFFF;
  std::uint32_t class_code = 0;  // class, subclass, programming interface
  std::uint8_t revision = 0;
  std::optional<std::uint16_t> subsystem_vendor;  // both or neither
  std::optional<std::uint16_t> subsystem_device;
  std::optional<std::uint8_t> secondary_bus;  // of a bridge
  std::optional<std::uint8_t> subordinate_bus;
  PortType port_type = PortType::kUnknown;
  PciLink link;
  std::optional<PciAddress> parent;  // the bridge above, where the system names it
  std::optional<unsigned> numa_node;
  std::optional<std::uint64_t> video_memory;  // bytes; of a display controller or processing accelerator
  std::optional<std::string> vpd;             // vital product data as read; empty: there, but not readable

  std::uint8_t base_class() const { return static_cast<std::uint8_t>(class_code >> 16); }
  std::uint8_t subclass() const { return static_cast<std::uint8_t>(class_code >> 8); }
  bool answers() const { return vendor != 0xFFFF; }
  bool has_video_memory() const { return base_class() == kClassDisplay || base_class() == kClassAccelerator; }
  bool is_bridge() const { return base_class() == kClassBridge || secondary_bus.has_value(); }
};

// Configuration spaces are read in these sizes: header, CardBus header, PCI, PCI Express.
bool is_config_size(std::size_t size);

// Reads a configuration space of at least 64 bytes into everything of `function` that it tells.
void decode_config(Bytes config, PciFunction& function);

}  // namespace zymdb::collect

#endif
