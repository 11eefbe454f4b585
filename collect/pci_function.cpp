#include "pci_function.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "text.h"

namespace zymdb::collect {
namespace {

constexpr std::size_t kConfigSizes[] = {64, 128, 256, 4096};

constexpr std::uint8_t kCapabilitySubsystem = 0x0d;
constexpr std::uint8_t kCapabilityExpress = 0x10;
constexpr unsigned kStatusHasCapabilities = 0x10;
constexpr unsigned kMostCapabilities = 48;  // 192 bytes at 4 bytes each: more is a loop

enum HeaderType : std::uint8_t { kHeaderDevice = 0, kHeaderBridge = 1, kHeaderCardBus = 2 };

template <typename T>
T read(Bytes config, std::size_t offset) {
  return little_endian<T>(config, offset).value_or(0);
}

// The offset of a capability, where the bytes reach that far.
std::optional<std::size_t> find_capability(Bytes config, std::uint8_t header, std::uint8_t wanted) {
  if ((read<std::uint16_t>(config, 0x06) & kStatusHasCapabilities) == 0) return std::nullopt;
  std::size_t offset = read<std::uint8_t>(config, header == kHeaderCardBus ? 0x14 : 0x34) & 0xFCU;
  for (unsigned i = 0; i < kMostCapabilities && offset >= 0x40 && offset + 2 <= config.size(); ++i) {
    if (config[offset] == wanted) return offset;
    offset = config[offset + 1] & 0xFCU;
  }
  return std::nullopt;
}

void set_subsystem(PciFunction& function, Bytes config, std::size_t vendor_offset,
                   std::size_t device_offset) {
  const auto vendor = little_endian<std::uint16_t>(config, vendor_offset);
  const auto device = little_endian<std::uint16_t>(config, device_offset);
  if (!vendor || !device || *vendor == 0 || *vendor == 0xFFFF) return;
  function.subsystem_vendor = vendor;
  function.subsystem_device = device;
}

void decode_subsystem(Bytes config, std::uint8_t header, PciFunction& function) {
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

std::optional<std::uint8_t> nonzero(unsigned value) {
  if (value == 0) return std::nullopt;
  return static_cast<std::uint8_t>(value);
}

void decode_express(Bytes config, std::uint8_t header, PciFunction& function) {
  const auto offset = find_capability(config, header, kCapabilityExpress);
  if (!offset) return;
  if (const auto flags = little_endian<std::uint16_t>(config, *offset + 2)) {
    function.port_type = port_type(*flags >> 4 & 0xFU);
  }
  const auto capabilities = read<std::uint32_t>(config, *offset + 0x0c);
  function.link.max_generation = nonzero(capabilities & 0xFU);
  function.link.max_width = nonzero(capabilities >> 4 & 0x3FU);
  const auto status = read<std::uint16_t>(config, *offset + 0x12);
  function.link.generation = nonzero(status & 0xFU);
  function.link.width = nonzero(status >> 4 & 0x3FU);
}

}  // namespace

std::optional<PciAddress> parse_pci_address(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string_view last = text.substr(colon + 1);
  std::string_view bus = text.substr(0, colon);
  std::string_view domain = "0";
  if (const std::size_t other = bus.find(':'); other != std::string_view::npos) {
    domain = bus.substr(0, other);
    bus.remove_prefix(other + 1);
  }
  const std::size_t dot = last.find('.');
  const auto function = hex_number(dot == std::string_view::npos ? "0" : last.substr(dot + 1));
  const auto device = hex_number(last.substr(0, dot));
  const auto bus_number = hex_number(bus);
  const auto domain_number = hex_number(domain);
  if (!function || !device || !bus_number || !domain_number) return std::nullopt;
  if (*function > 7 || *device > 31 || *bus_number > 255) return std::nullopt;
  return PciAddress{*domain_number, static_cast<std::uint8_t>(*bus_number),
                    static_cast<std::uint8_t>(*device), static_cast<std::uint8_t>(*function)};
}

std::string to_string(const PciAddress& address) {
  std::array<char, 24> text;
  const int length = std::snprintf(text.data(), text.size(), "%04x:%02x:%02x.%x", address.domain, address.bus,
                                   address.device, address.function);
  return {text.data(), static_cast<std::size_t>(length)};
}

bool is_config_size(std::size_t size) {
  return std::ranges::find(kConfigSizes, size) != std::end(kConfigSizes);
}

void decode_config(Bytes config, PciFunction& function) {
  function.vendor = read<std::uint16_t>(config, 0x00);
  function.device = read<std::uint16_t>(config, 0x02);
  function.revision = read<std::uint8_t>(config, 0x08);
  function.class_code = read<std::uint32_t>(config, 0x08) >> 8;
  if (!function.answers()) return;
  const std::uint8_t header = read<std::uint8_t>(config, 0x0e) & 0x7FU;
  if (header == kHeaderBridge || header == kHeaderCardBus) {
    function.secondary_bus = read<std::uint8_t>(config, 0x19);
    function.subordinate_bus = read<std::uint8_t>(config, 0x1a);
  }
  decode_subsystem(config, header, function);
  decode_express(config, header, function);
}

}  // namespace zymdb::collect
