// Addresses of PCI functions, and the key that the inventory makes of one.
#ifndef ZYMDB_COMMON_PCI_ADDRESS_H
#define ZYMDB_COMMON_PCI_ADDRESS_H

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zymdb {

struct PciAddress {
  uint32_t domain = 0;
  uint8_t bus = 0;
  uint8_t device = 0;    // 0 to 31
  uint8_t function = 0;  // 0 to 7

  auto operator<=>(const PciAddress&) const = default;

  bool same_device(const PciAddress& other) const {
    return domain == other.domain && bus == other.bus && device == other.device;
  }
};

// "0000:3b:00.0", "3b:00.0"; without a function ("0000:3b:00", as slots have it) the function is 0.
std::optional<PciAddress> parse_pci_address(std::string_view text);
std::string to_string(const PciAddress& address);

// A key as people write it: in decimal or with "0x", and nothing else.
std::optional<uint32_t> parse_key(std::string_view text);

// Segment, bus, device and function, eight bits each.
struct FunctionKey {
  uint32_t value = 0;

  constexpr FunctionKey() = default;
  constexpr explicit FunctionKey(uint32_t key) : value(key) {}
  constexpr FunctionKey(uint8_t segment, uint8_t bus, uint8_t device, uint8_t function)
      : value(uint32_t{segment} << 24 | uint32_t{bus} << 16 | uint32_t{device} << 8 | function) {}

  // Of a record or address that names the parts.
  template <class Record>
  static constexpr FunctionKey of(const Record& record) {
    return {record.SegNo, record.BusNo, record.DeviceNo, record.FunctionNo};
  }

  // What people write: an address with its function ("0000:3b:00.0", "3b:00.0"), or the key itself in decimal
  // or with "0x". Nothing for anything else.
  static std::optional<FunctionKey> parse(std::string_view text);

  // "0000:3b:00.0".
  std::string text() const;

  auto operator<=>(const FunctionKey&) const = default;
};

}  // namespace zymdb

#endif
