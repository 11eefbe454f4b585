#include "collect/sources/pci/pci_ids.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <utility>

#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr size_t kLongestCardName = 128;

// Legal forms at the end of a maker's name.
constexpr std::string_view kLegalForms[] = {"Corporation", "Corp.",         "Corp",        "Inc.",
                                            "Inc",         "Incorporated",  "Co., Ltd.",   "Co.",
                                            "Ltd.",        "Ltd",           "Limited",     "LLC",
                                            "GmbH",        "Group",         "AG",          "Technologies",
                                            "Technology",  "Semiconductor", "Electronics", "Co"};

constexpr uint64_t device_key(uint16_t vendor, uint16_t device) {
  return uint64_t{vendor} << 16 | device;
}

constexpr uint64_t subsystem_key(uint64_t device, uint32_t subsystem) {
  return device << 32 | subsystem;
}

constexpr uint64_t subclass_key(uint8_t base, uint8_t sub) {
  return uint64_t{base} << 8 | sub;
}

struct Entry {
  uint32_t id;
  std::string_view rest;
};

// A number of `digits` hexadecimal digits and what stands after the blanks that follow it.
std::optional<Entry> parse_entry(std::string_view line, size_t digits) {
  if (line.size() <= digits || line[digits] != ' ') return std::nullopt;
  const auto id = hex_number(line.substr(0, digits));
  if (!id) return std::nullopt;
  return Entry{*id, trimmed(line.substr(digits))};
}

std::string numeric_name(uint16_t vendor, uint16_t device) {
  std::array<char, 32> text;
  const int length = std::snprintf(text.data(), text.size(), "PCI device %04x:%04x", vendor, device);
  return {text.data(), static_cast<size_t>(length)};
}

}  // namespace

// Where in the list a line stands: below a vendor and a device, or below a class.
struct PciIds::Section {
  bool is_class = false;
  std::optional<uint32_t> top;  // vendor or class; nothing in sections of other kinds
  std::optional<uint32_t> device;
};

PciIds::PciIds(std::string text) : text_(std::make_shared<const std::string>(std::move(text))) {
  Section section;
  std::string_view rest = *text_;
  while (!rest.empty()) {
    const size_t end = std::min(rest.find('\n'), rest.size() - 1);
    const std::string_view line = rest.substr(0, end + 1);
    rest.remove_prefix(end + 1);
    if (line.front() != '#' && !trimmed(line).empty() && !read_section(line, section))
      read_entry(line, section);
  }
  for (auto& names : names_) {
    // The list is in order; where it is not, the first of several names stays the first.
    if (!std::ranges::is_sorted(names, {}, &Name::key)) std::ranges::stable_sort(names, {}, &Name::key);
    names.shrink_to_fit();
  }
}

PciIds PciIds::load(const std::string& path) {
  return PciIds(read_source(path));
}

// A vendor, class or device line, which the lines below it belong to.
bool PciIds::read_section(std::string_view line, Section& section) {
  if (line.front() != '\t') {
    section.is_class = line.starts_with("C ");
    const auto entry = section.is_class ? parse_entry(line.substr(2), 2) : parse_entry(line, 4);
    section.top = entry ? std::optional(entry->id) : std::nullopt;
    section.device.reset();
    if (entry) add(section.is_class ? kClass : kVendor, entry->id, entry->rest);
    return true;
  }
  if (section.is_class || line.starts_with("\t\t")) return false;
  const auto entry = parse_entry(line.substr(1), 4);
  section.device = entry && section.top ? std::optional(entry->id) : std::nullopt;
  if (section.device) add(kDevice, uint64_t{*section.top} << 16 | entry->id, entry->rest);
  return true;
}

void PciIds::read_entry(std::string_view line, const Section& section) {
  if (!section.top) return;
  if (section.is_class) {
    const auto sub = parse_entry(line.substr(1), 2);
    if (sub) add(kSubclass, uint64_t{*section.top} << 8 | sub->id, sub->rest);
    return;
  }
  const auto subvendor = section.device ? parse_entry(line.substr(2), 4) : std::nullopt;
  const auto subdevice = subvendor ? parse_entry(subvendor->rest, 4) : std::nullopt;
  if (!subdevice) return;
  const uint64_t device = uint64_t{*section.top} << 16 | *section.device;
  add(kSubsystem, subsystem_key(device, subvendor->id << 16 | subdevice->id), subdevice->rest);
}

void PciIds::add(Level level, uint64_t key, std::string_view name) {
  const auto begin = static_cast<uint32_t>(name.data() - text_->data());
  names_[level].push_back({key, begin, static_cast<uint32_t>(name.size())});
}

std::string_view PciIds::find(Level level, uint64_t key) const {
  const auto found = std::ranges::lower_bound(names_[level], key, {}, &Name::key);
  if (found == names_[level].end() || found->key != key) return {};
  return std::string_view(*text_).substr(found->begin, found->size);
}

std::string_view PciIds::vendor(uint16_t vendor) const {
  return find(kVendor, vendor);
}

std::string_view PciIds::device(uint16_t vendor, uint16_t device) const {
  return find(kDevice, device_key(vendor, device));
}

std::string_view PciIds::subsystem(uint16_t vendor, uint16_t device, uint16_t subvendor,
                                   uint16_t subdevice) const {
  return find(kSubsystem, subsystem_key(device_key(vendor, device), uint32_t{subvendor} << 16 | subdevice));
}

std::string_view PciIds::base_class(uint8_t base) const {
  return find(kClass, base);
}

std::string_view PciIds::subclass(uint8_t base, uint8_t sub) const {
  return find(kSubclass, subclass_key(base, sub));
}

std::string_view short_vendor(std::string_view name) {
  name = trimmed(name.substr(0, name.find(" [")));
  for (bool again = true; again;) {
    again = false;
    for (const std::string_view form : kLegalForms) {
      if (!name.ends_with(form) || name.size() < form.size() + 2) continue;
      const std::string_view rest = name.substr(0, name.size() - form.size());
      if (!rest.ends_with(' ') && !rest.ends_with(',')) continue;
      name = rest.substr(0, rest.find_last_not_of(", ") + 1);
      again = true;
    }
  }
  return name;
}

std::string vendor_name(const PciIds& ids, uint16_t vendor) {
  const std::string_view name = ids.vendor(vendor);
  const size_t open = name.rfind(" [");
  const bool has_short = open != std::string_view::npos && name.ends_with(']');
  return std::string(has_short ? name.substr(open + 2, name.size() - open - 3) : short_vendor(name));
}

std::string device_name(const PciIds& ids, uint16_t vendor, uint16_t device) {
  const std::string_view maker = short_vendor(ids.vendor(vendor));
  const std::string_view product = ids.device(vendor, device);
  if (maker.empty() || product.empty()) return numeric_name(vendor, device);
  const bool names_maker = product.starts_with(maker);
  return std::string(cut(names_maker ? std::string(product) : std::string(maker).append(" ").append(product),
                         kLongestCardName));
}

std::string card_name(const PciIds& ids, uint16_t vendor, uint16_t device, uint16_t subvendor,
                      uint16_t subdevice) {
  const auto name = ids.subsystem(vendor, device, subvendor, subdevice);
  return name.empty() ? device_name(ids, vendor, device) : std::string(cut(name, kLongestCardName));
}

}  // namespace zymdb::collect
