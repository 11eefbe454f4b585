// PCI domains as the inventory numbers them, and as firmware states them.
#ifndef ZYMDB_COLLECT_MODEL_SEGMENTS_H
#define ZYMDB_COLLECT_MODEL_SEGMENTS_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {

// The domains' segment numbers; a domain for which none is left is not among them.
using Segments = std::map<uint32_t, uint8_t>;

// Domains from 128 on do not fit a function key: each gets the smallest free number, and a notice.
Segments number_domains(const std::vector<PciFunction>& functions, std::vector<std::string>& notices);

// Puts addresses right whose segment is not so: one that the machine does not have stands for the only one
// that has a function of that bus, device and number.
class SegmentFinder {
 public:
  explicit SegmentFinder(const std::vector<PciFunction>& functions);

  void settle(std::optional<PciAddress>& stated) const;

 private:
  std::set<uint32_t> domains_;
  std::map<PciAddress, std::optional<uint32_t>> owners_;  // by address in domain 0; nothing: several
};

}  // namespace zymdb::collect

#endif
