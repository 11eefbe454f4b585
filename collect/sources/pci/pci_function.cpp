#include "collect/sources/pci/pci_function.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr size_t kConfigSizes[] = {64, 128, 256, 4096};
constexpr size_t kHeaderSize = 64;

constexpr uint8_t kCapabilitySubsystem = 0x0d;
constexpr uint8_t kCapabilityExpress = 0x10;
constexpr unsigned kStatusHasCapabilities = 0x10;
constexpr unsigned kMostCapabilities = 48;  // 192 bytes at 4 bytes each: more is a loop

enum HeaderType : uint8_t { kHeaderDevice = 0, kHeaderBridge = 1, kHeaderCardBus = 2 };

template <typename T>
T read(Bytes config, size_t offset) {
  return little_endian<T>(config, offset).value_or(0);
}

uint8_t header_type(Bytes config) {
  return read<uint8_t>(config, 0x0e) & 0x7FU;
}

struct Capability {
  std::optional<size_t> offset;
  bool is_absent = false;  // neither: the bytes end before the list does
};

Capability find_capability(Bytes config, uint8_t header, uint8_t wanted) {
  if (config.size() <= kHeaderSize) return {};
  if ((read<uint16_t>(config, 0x06) & kStatusHasCapabilities) == 0) return {.offset = {}, .is_absent = true};
  size_t offset = read<uint8_t>(config, header == kHeaderCardBus ? 0x14 : 0x34) & 0xFCU;
  for (unsigned i = 0; i < kMostCapabilities; ++i) {
    if (offset < kHeaderSize) return {.offset = {}, .is_absent = true};
    if (offset + 2 > config.size()) return {};
    if (config[offset] == wanted) return {.offset = offset};
    offset = config[offset + 1] & 0xFCU;
  }
  return {};
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
  } else if (const auto offset = find_capability(config, header, kCapabilitySubsystem).offset) {
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

// Within the root complex there is no link to tell of.
bool is_integrated(unsigned code) {
  return code == 9 || code == 10;
}

uint8_t generation_of(unsigned link_register) {
  return static_cast<uint8_t>(link_register & 0xFU);
}

uint8_t width_of(unsigned link_register) {
  return static_cast<uint8_t>(link_register >> 4 & 0x3FU);
}

void decode_express(Bytes config, uint8_t header, PciFunction& function) {
  constexpr PciLink kNoLink{0, 0, 0, 0};
  const auto [offset, is_absent] = find_capability(config, header, kCapabilityExpress);
  if (is_absent) function.link = kNoLink;
  const auto flags = offset ? little_endian<uint16_t>(config, *offset + 2) : std::nullopt;
  if (!flags) return;
  const unsigned code = *flags >> 4 & 0xFU;
  function.port_type = port_type(code);
  const auto capabilities = little_endian<uint32_t>(config, *offset + 0x0c);
  const auto status = little_endian<uint16_t>(config, *offset + 0x12);
  if (is_integrated(code)) {
    function.link = kNoLink;
  } else if (capabilities && status) {
    function.link = {width_of(*status), generation_of(*status), width_of(*capabilities),
                     generation_of(*capabilities)};
  }
}

}  // namespace

bool is_config_size(size_t size) {
  return std::ranges::find(kConfigSizes, size) != std::end(kConfigSizes);
}

bool is_card_bus(Bytes config) {
  return header_type(config) == kHeaderCardBus;
}

void decode_config(Bytes config, PciFunction& function) {
  function.vendor = read<uint16_t>(config, 0x00);
  function.device = read<uint16_t>(config, 0x02);
  function.revision = read<uint8_t>(config, 0x08);
  function.class_code = read<uint32_t>(config, 0x08) >> 8;
  if (!function.answers()) return;
  const uint8_t header = header_type(config);
  if (header == kHeaderBridge || header == kHeaderCardBus) {
    function.secondary_bus = read<uint8_t>(config, 0x19);
    function.subordinate_bus = read<uint8_t>(config, 0x1a);
  }
  decode_subsystem(config, header, function);
  decode_express(config, header, function);
}

}  // namespace zymdb::collect
