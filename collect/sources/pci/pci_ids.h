// Names of PCI vendors, devices, subsystems and classes, from the list that Debian keeps (pci.ids).
#ifndef ZYMDB_COLLECT_SOURCES_PCI_PCI_IDS_H
#define ZYMDB_COLLECT_SOURCES_PCI_PCI_IDS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zymdb::collect {

class PciIds {
 public:
  // No names at all.
  PciIds() = default;

  // The names of a pci.ids text; lines that are none of its forms are skipped.
  explicit PciIds(std::string text);

  // The names in a file; throws SourceError when it cannot be read.
  static PciIds load(const std::string& path);

  // Each name is empty when it is not known. The texts live as long as this object or a copy of it.
  std::string_view vendor(uint16_t vendor) const;
  std::string_view device(uint16_t vendor, uint16_t device) const;
  std::string_view subsystem(uint16_t vendor, uint16_t device, uint16_t subvendor, uint16_t subdevice) const;
  std::string_view base_class(uint8_t base) const;
  std::string_view subclass(uint8_t base, uint8_t sub) const;

 private:
  enum Level : size_t { kVendor, kDevice, kSubsystem, kClass, kSubclass, kLevels };

  // Where a name stands in the text. There are tens of thousands.
  struct Name {
    uint64_t key;
    uint32_t begin;
    uint32_t size;
  };

  struct Section;
  bool read_section(std::string_view line, Section& section);
  void read_entry(std::string_view line, const Section& section);
  void add(Level level, uint64_t key, std::string_view name);
  std::string_view find(Level level, uint64_t key) const;

  std::shared_ptr<const std::string> text_;       // what the names point into
  std::array<std::vector<Name>, kLevels> names_;  // by their keys
};

// A vendor's name without its legal form and its short name in brackets: "Maker" of "Maker, Inc. [Short]".
std::string_view short_vendor(std::string_view name);

// What people call a vendor: the short name that the list has in brackets, else the name without its legal
// form. Empty when it is not known.
std::string vendor_name(const PciIds& ids, uint16_t vendor);

// What people call a device: vendor and device, with the vendor's legal form left out; "PCI device 15b3:a2d6"
// without a name. At most 128 bytes.
std::string device_name(const PciIds& ids, uint16_t vendor, uint16_t device);

// What people call a card or drive: the subsystem's name where the list has it, else the device's.
std::string card_name(const PciIds& ids, uint16_t vendor, uint16_t device, uint16_t subvendor,
                      uint16_t subdevice);

}  // namespace zymdb::collect

#endif
