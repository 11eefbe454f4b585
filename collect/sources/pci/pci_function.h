// A PCI function, as its configuration space describes it.
#ifndef ZYMDB_COLLECT_SOURCES_PCI_PCI_FUNCTION_H
#define ZYMDB_COLLECT_SOURCES_PCI_PCI_FUNCTION_H

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/bytes.h"
#include "common/pci_address.h"

namespace zymdb::collect {

// Class codes, as far as the collector asks for them.
inline constexpr uint8_t kClassStorage = 0x01;
inline constexpr uint8_t kClassNetwork = 0x02;
inline constexpr uint8_t kClassDisplay = 0x03;
inline constexpr uint8_t kClassBridge = 0x06;
inline constexpr uint8_t kClassCoprocessor = 0x0b;
inline constexpr uint8_t kClassSerialBus = 0x0c;
inline constexpr uint8_t kClassEncryption = 0x10;
inline constexpr uint8_t kClassAccelerator = 0x12;

inline constexpr uint8_t kSubclassNvme = 0x08;

// A PCI Express link; all 0 for a function without one. Unknown where neither the configuration space nor the
// system tells.
struct PciLink {
  std::optional<uint8_t> width;       // lanes in use; 0: the link is down
  std::optional<uint8_t> generation;  // 1: 2.5 GT/s, 2: 5, 3: 8, 4: 16, 5: 32, 6: 64
  std::optional<uint8_t> max_width;   // lanes
  std::optional<uint8_t> max_generation;
};

enum class PortType : uint8_t { kUnknown, kRootPort, kUpstream, kDownstream, kOther };

struct PciFunction {
  PciAddress address;
  uint16_t vendor = 0xFFFF;
  uint16_t device = 0xFFFF;
  uint32_t class_code = 0;  // class, subclass, programming interface
  uint8_t revision = 0;
  std::optional<uint16_t> subsystem_vendor;  // both or neither
  std::optional<uint16_t> subsystem_device;
  std::optional<uint8_t> secondary_bus;  // of a bridge
  std::optional<uint8_t> subordinate_bus;
  PortType port_type = PortType::kUnknown;
  PciLink link;
  std::optional<PciAddress> parent;  // the bridge above, where the system names it
  std::optional<unsigned> numa_node;
  std::optional<uint64_t> video_memory;  // bytes; of a display controller or processing accelerator
  bool is_told_by_system = false;        // not by a dump alone, which knows no drivers and the like
  std::optional<std::string> driver;     // the kernel's, by name
  std::optional<unsigned> iommu_group;
  std::optional<std::string> vpd;  // vital product data as read; empty: there, but not readable

  uint8_t base_class() const { return static_cast<uint8_t>(class_code >> 16); }
  uint8_t subclass() const { return static_cast<uint8_t>(class_code >> 8); }
  bool answers() const { return vendor != 0xFFFF; }
  bool is_nvme() const { return class_code >> 8 == (kClassStorage << 8 | kSubclassNvme); }
  bool has_video_memory() const { return base_class() == kClassDisplay || base_class() == kClassAccelerator; }
  bool is_bridge() const { return base_class() == kClassBridge || secondary_bus.has_value(); }
};

// Configuration spaces are read in these sizes: header, CardBus header, PCI, PCI Express.
bool is_config_size(size_t size);

// Whether a configuration space is that of a CardBus bridge, whose header is larger than others.
bool is_card_bus(Bytes config);

// Reads a configuration space of at least 64 bytes into everything of `function` that it tells.
void decode_config(Bytes config, PciFunction& function);

}  // namespace zymdb::collect

#endif
