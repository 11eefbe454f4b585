#include "collect/record/sanitizer.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "collect/record/replacements.h"
#include "collect/sources/pci/pci_vpd.h"
#include "collect/sources/smbios/smbios.h"
#include "collect/sources/smbios/smbios_system.h"
#include "common/bytes.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

// Where structures have the numbers of serial numbers and asset tags.
struct TextPlace {
  uint8_t type;
  uint8_t offset;
};
constexpr TextPlace kTexts[] = {
    {1, 0x07}, {2, 0x07},  {2, 0x08},  {3, 0x07},  {3, 0x08},  {4, 0x20},
    {4, 0x21}, {17, 0x18}, {17, 0x19}, {22, 0x07}, {39, 0x08}, {39, 0x09},
};

constexpr std::string_view kTextFiles[] = {
    "/product_serial",    "/board_serial", "/chassis_serial", "/board_asset_tag",
    "/chassis_asset_tag", "/serial",       "/serial_number",  "/serial-number",
};
constexpr std::string_view kAddressFiles[] = {
    "/perm_hwaddr", "/port_name", "/node_name", "/permanent_port_name", "/node_guid", "/sys_image_guid",
};

constexpr size_t kPageHeader = 4;  // of a disk's page with its serial number

// Capabilities in the extended configuration space.
constexpr size_t kFirstCapability = 0x100;
constexpr uint32_t kSerialNumberCapability = 3;
constexpr size_t kSerialNumberSize = 8;

bool ends_with_any(std::string_view path, std::span<const std::string_view> ends) {
  return std::ranges::any_of(ends, [path](std::string_view end) { return path.ends_with(end); });
}

bool has(std::string_view path, std::string_view part) {
  return path.find(part) != std::string_view::npos;
}

void add_smbios(const MachineCopy& copy, const std::string& table, Replacements& replacements) {
  const auto entry = copy.files.find("sys/firmware/dmi/tables/smbios_entry_point");
  if (entry == copy.files.end()) return;
  try {
    const auto tables = SmbiosTables::parse(as_bytes(entry->second), table, "DMI");
    for (const auto& structure : tables.structures()) {
      for (const auto& [type, offset] : kTexts) {
        if (structure.type() == type) replacements.add_text(structure.text(offset).value_or(""));
      }
    }
    for (const auto& system : decode_system(tables)) replacements.add_uuid(system.uuid.value_or(""));
  } catch (const SourceError&) {
    // Bytes that are no tables have no texts that anybody reads.
  }
}

// The device's serial number, which holds an address.
void add_serial_capability(std::string_view config, Replacements& replacements) {
  size_t at = kFirstCapability;
  for (int left = 64; left > 0 && at >= kFirstCapability; --left) {
    const auto header = little_endian<uint32_t>(as_bytes(config), at);
    if (!header || *header == 0) return;
    if ((*header & 0xFFFFU) == kSerialNumberCapability && at + 4 + kSerialNumberSize <= config.size())
      replacements.add_bytes(config.substr(at + 4, kSerialNumberSize));
    at = *header >> 20;
  }
}

// "naa.5000c500c2000008", "eui.0025385b01411f1c"; else a text whose last word is the serial number.
void add_world_wide_id(std::string_view id, Replacements& replacements) {
  id = trimmed(id);
  if (id.starts_with("naa.") || id.starts_with("eui.")) return replacements.add_address(id.substr(4));
  replacements.add_text(id.substr(id.find_last_of(" .") + 1));
}

// The value of a line that begins with a name.
std::string_view line_of(std::string_view content, std::string_view name) {
  for (size_t at = 0; at < content.size();) {
    const auto line = content.substr(at, content.find('\n', at) - at);
    if (line.starts_with(name)) return trimmed(line.substr(line.find_first_of(": ", name.size()) + 1));
    at += line.size() + 1;
  }
  return {};
}

void add_secrets(const MachineCopy& copy, const std::string& path, const std::string& content,
                 Replacements& replacements) {
  if (path.ends_with("/dmi/tables/DMI")) add_smbios(copy, content, replacements);
  if (path.ends_with("/product_uuid")) replacements.add_uuid(content);
  if (ends_with_any(path, kTextFiles)) replacements.add_text(known_text(content).value_or(""));
  if (ends_with_any(path, kAddressFiles) || has(path, "/gids/")) replacements.add_address(content);
  if (has(path, "/net/") && path.ends_with("/address")) replacements.add_address(content);
  if (path.ends_with("/wwid")) add_world_wide_id(content, replacements);
  if (path.ends_with("/vpd_pg80") && content.size() > kPageHeader)
    replacements.add_text(known_text(content.substr(kPageHeader)).value_or(""));
  if (path.ends_with("/config")) add_serial_capability(content, replacements);
  if (path.ends_with("/vpd")) {
    const auto data = parse_pci_vpd(as_bytes(content));
    if (data) replacements.add_text(data->serial_number.value_or(""));
  }
  if (has(path, "driver-answers/link/")) replacements.add_address(line_of(content, "permanent_address"));
  if (path.ends_with("proc/cpuinfo")) replacements.add_text(line_of(content, "Serial"));
}

// Where the byte is that makes the sum of vital product data zero; nothing where there is none.
std::optional<size_t> find_checksum(Bytes data) {
  constexpr uint8_t kReadOnly = 0x90;
  constexpr size_t kLargeHeader = 3;
  for (size_t at = 0; at + kLargeHeader <= data.size();) {
    const bool is_large = (data[at] & 0x80U) != 0;
    const size_t header = is_large ? kLargeHeader : 1;
    const size_t size = is_large ? little_endian<uint16_t>(data, at + 1).value_or(0) : data[at] & 7U;
    const Bytes fields = slice(data, at + header, size);
    for (size_t field = 0; data[at] == kReadOnly && field + kLargeHeader < fields.size();
         field += kLargeHeader + fields[field + 2]) {
      if (fields[field] == 'R' && fields[field + 1] == 'V') return at + header + field + kLargeHeader;
    }
    at += header + size;
  }
  return std::nullopt;
}

void correct_checksum(std::string& data) {
  const auto at = find_checksum(as_bytes(data));
  if (!at || *at >= data.size()) return;
  data[*at] = 0;
  data[*at] = static_cast<char>(-checksum(as_bytes(data).first(*at + 1)));
}

}  // namespace

MachineCopy sanitized(const MachineCopy& copy) {
  Replacements replacements;
  for (const auto& [path, content] : copy.files) add_secrets(copy, path, content, replacements);
  MachineCopy result;
  for (const auto& [path, content] : copy.files) {
    auto& changed = result.files[replacements.applied(path)] = replacements.applied(content);
    if (path.ends_with("/vpd") && changed != content) correct_checksum(changed);
  }
  for (const auto& [path, target] : copy.links)
    result.links[replacements.applied(path)] = replacements.applied(target);
  for (const auto& path : copy.folders) result.folders.insert(replacements.applied(path));
  result.forbidden = copy.forbidden;
  return result;
}

}  // namespace zymdb::collect
