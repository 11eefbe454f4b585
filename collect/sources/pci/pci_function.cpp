#include "collect/sources/pci/pci_function.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr size_t kConfigSizes[] = {64, 128, 256, 4096};

constexpr uint8_t kCapabilitySubsystem = 0x0d;
constexpr uint8_t kCapabilityExpress = 0x10;
constexpr unsigned kStatusHasCapabilities = 0x10;
constexpr unsigned kMostCapabilities = 48;  // 192 bytes at 4 bytes each: more is a loop

enum HeaderType : uint8_t { kHeaderDevice = 0, kHeaderBridge = 1, kHeaderCardBus = 2 };

template <typename T>
T read(Bytes config, size_t offset) {
  return little_endian<T>(config, offset).value_or(0);
}

// The offset of a capability, where the bytes reach that far.
std::optional<size_t> find_capability(Bytes config, uint8_t header, uint8_t wanted) {
  if ((read<uint16_t>(config, 0x06) & kStatusHasCapabilities) == 0) return std::nullopt;
  size_t offset = read<uint8_t>(config, header == kHeaderCardBus ? 0x14 : 0x34) & 0xFCU;
  for (unsigned i = 0; i < kMostCapabilities && offset >= 0x40 && offset + 2 <= config.size(); ++i) {
    if (config[offset] == wanted) return offset;
    offset = config[offset + 1] & 0xFCU;
  }
  return std::nullopt;
}

void set_subsystem(PciFunction& function, Bytes config, size_t vendor_offset, size_t device_offset) {
  const auto vendor = little_endian<uint16_t>(config, vendor_offset);
  const auto device = little_endian<uint16_t>(config, device_offset);
  if (!vendor || !device || *vendor == 0 || *vendor == 0xFFFF) return;
  function.subsystem_vendor = vendor;
  function.subsystem_device = device;
}

void decode_subsystem(Bytes config, uint8_t header, PciFunction& function) {
  if (header == kHeaderDevice) {
    set_subsystem(function, config, 0x2c, 0x2e);
  } else if (header == kHeaderCardBus) {
    set_subsystem(function, config, 0x40, 0x42);
  } else if (const auto offset = find_capability(config, header, kCapabilitySubsystem)) {
    set_subsystem(function, config, *offset + 4, *offset + 6);
  }
}

PortType port_type(unsigned code) {
  switch (code) {
    case 4:
      return PortType::kRootPort;
    case 5:
      return PortType::kUpstream;
    case 6:
      return PortType::kDownstream;
    default:
      return PortType::kOther;
  }
}

std::optional<uint8_t> nonzero(unsigned value) {
  if (value == 0) return std::nullopt;
  return static_cast<uint8_t>(value);
}

void decode_express(Bytes config, uint8_t header, PciFunction& function) {
  const auto offset = find_capability(config, header, kCapabilityExpress);
  if (!offset) return;
  if (const auto flags = little_endian<uint16_t>(config, *offset + 2)) {
    function.port_type = port_type(*flags >> 4 & 0xFU);
  }
  const auto capabilities = read<uint32_t>(config, *offset + 0x0c);
  function.link.max_generation = nonzero(capabilities & 0xFU);
  function.link.max_width = nonzero(capabilities >> 4 & 0x3FU);
  const auto status = read<uint16_t>(config, *offset + 0x12);
  function.link.generation = nonzero(status & 0xFU);
  function.link.width = nonzero(status >> 4 & 0x3FU);
}

}  // namespace

bool is_config_size(size_t size) {
  return std::ranges::find(kConfigSizes, size) != std::end(kConfigSizes);
}

void decode_config(Bytes config, PciFunction& function) {
  function.vendor = read<uint16_t>(config, 0x00);
  function.device = read<uint16_t>(config, 0x02);
  function.revision = read<uint8_t>(config, 0x08);
  function.class_code = read<uint32_t>(config, 0x08) >> 8;
  if (!function.answers()) return;
  const uint8_t header = read<uint8_t>(config, 0x0e) & 0x7FU;
  if (header == kHeaderBridge || header == kHeaderCardBus) {
    function.secondary_bus = read<uint8_t>(config, 0x19);
    function.subordinate_bus = read<uint8_t>(config, 0x1a);
  }
  decode_subsystem(config, header, function);
  decode_express(config, header, function);
}

}  // namespace zymdb::collect
