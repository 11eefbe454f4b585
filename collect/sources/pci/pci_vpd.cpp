#include "collect/sources/pci/pci_vpd.h"

#include <string_view>

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr uint8_t kLargeTag = 0x80;
constexpr uint8_t kTagIdentifier = 0x82;
constexpr uint8_t kTagReadOnly = 0x90;
constexpr uint8_t kSmallTagEnd = 0x0F;  // a small resource's tag is in bits 3 to 6, its length in 0 to 2

struct Keyword {
  std::string_view name;
  std::optional<std::string> PciVpd::*field;
};

constexpr Keyword kKeywords[] = {
    {"SN", &PciVpd::serial_number}, {"PN", &PciVpd::part_number}, {"MN", &PciVpd::manufacturer},
    {"FN", &PciVpd::fru_number},    {"MM", &PciVpd::model},
};

struct Resource {
  uint8_t tag;    // the whole first byte of a large resource, bits 3 to 6 of a small one
  size_t offset;  // of the content
  Bytes content;
};

std::optional<Resource> read_resource(Bytes data, size_t offset) {
  const auto first = little_endian<uint8_t>(data, offset);
  if (!first) return std::nullopt;
  const bool large = (*first & kLargeTag) != 0;
  const auto length = large ? little_endian<uint16_t>(data, offset + 1) : std::optional<uint16_t>(*first & 7);
  if (!length) return std::nullopt;
  const size_t start = offset + (large ? 3 : 1);
  const Bytes content = slice(data, start, *length);
  if (content.size() < *length) return std::nullopt;
  return Resource{static_cast<uint8_t>(large ? *first : *first >> 3), start, content};
}

void store(std::string_view keyword, Bytes content, PciVpd& vpd) {
  for (const auto& [name, field] : kKeywords) {
    if (name == keyword) vpd.*field = known_text(as_text(content));
  }
}

// False when a field leaves the resource or the checksum over everything before it is wrong.
bool read_fields(Bytes data, const Resource& resource, PciVpd& vpd) {
  for (size_t at = 0; at < resource.content.size();) {
    const auto length = little_endian<uint8_t>(resource.content, at + 2);
    const Bytes content = slice(resource.content, at + 3, length.value_or(0));
    if (!length || content.size() < *length) return false;
    const std::string_view keyword = as_text(slice(resource.content, at, 2));
    if (keyword == "RV") return *length > 0 && checksum(slice(data, 0, resource.offset + at + 4)) == 0;
    store(keyword, content, vpd);
    at += 3U + *length;
  }
  return true;
}

}  // namespace

bool PciVpd::empty() const {
  bool found = product_name.has_value();
  for (const auto& keyword : kKeywords) found = found || (this->*keyword.field).has_value();
  return !found;
}

std::optional<PciVpd> parse_pci_vpd(Bytes data) {
  PciVpd vpd;
  for (size_t offset = 0;;) {
    const auto resource = read_resource(data, offset);
    if (!resource) return std::nullopt;
    if (resource->tag == kSmallTagEnd) return vpd;
    if (resource->tag == kTagIdentifier) vpd.product_name = known_text(as_text(resource->content));
    if (resource->tag == kTagReadOnly && !read_fields(data, *resource, vpd)) return std::nullopt;
    offset = resource->offset + resource->content.size();
  }
}

}  // namespace zymdb::collect
