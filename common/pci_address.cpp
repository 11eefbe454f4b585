#include "common/pci_address.h"

#include <array>
#include <charconv>
#include <cstdio>

#include "common/text.h"

namespace zymdb {
namespace {

constexpr uint32_t kSegments = 256;

}  // namespace

std::optional<uint32_t> parse_key(std::string_view text) {
  const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
  if (is_hex) text.remove_prefix(2);
  uint32_t key = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, key, is_hex ? 16 : 10);
  return error == std::errc() && end == last ? std::optional(key) : std::nullopt;
}

std::optional<PciAddress> parse_pci_address(std::string_view text) {
  const size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string_view last = text.substr(colon + 1);
  std::string_view bus = text.substr(0, colon);
  std::string_view domain = "0";
  if (const size_t other = bus.find(':'); other != std::string_view::npos) {
    domain = bus.substr(0, other);
    bus.remove_prefix(other + 1);
  }
  const size_t dot = last.find('.');
  const auto function = hex_number(dot == std::string_view::npos ? "0" : last.substr(dot + 1));
  const auto device = hex_number(last.substr(0, dot));
  const auto bus_number = hex_number(bus);
  const auto domain_number = hex_number(domain);
  if (!function || !device || !bus_number || !domain_number) return std::nullopt;
  if (*function > 7 || *device > 31 || *bus_number > 255) return std::nullopt;
  return PciAddress{*domain_number, static_cast<uint8_t>(*bus_number), static_cast<uint8_t>(*device),
                    static_cast<uint8_t>(*function)};
}

std::string to_string(const PciAddress& address) {
  std::array<char, 24> text;
  const int length = std::snprintf(text.data(), text.size(), "%04x:%02x:%02x.%x", address.domain, address.bus,
                                   address.device, address.function);
  return {text.data(), static_cast<size_t>(length)};
}

std::optional<FunctionKey> FunctionKey::parse(std::string_view text) {
  if (text.find('.') == std::string_view::npos) {
    const auto key = parse_key(text);
    return key ? std::optional(FunctionKey(*key)) : std::nullopt;
  }
  const auto address = parse_pci_address(text);
  if (!address || address->domain >= kSegments) return std::nullopt;
  return FunctionKey(static_cast<uint8_t>(address->domain), address->bus, address->device, address->function);
}

std::string FunctionKey::text() const {
  const auto part = [this](unsigned shift) { return static_cast<uint8_t>(value >> shift); };
  return to_string(PciAddress{part(24), part(16), part(8), part(0)});
}

}  // namespace zymdb
