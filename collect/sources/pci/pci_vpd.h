// PCI vital product data: what a card's maker stored on the card about it.
#ifndef ZYMDB_COLLECT_SOURCES_PCI_PCI_VPD_H
#define ZYMDB_COLLECT_SOURCES_PCI_PCI_VPD_H

#include <optional>
#include <string>

#include "common/bytes.h"

namespace zymdb::collect {

// Texts are as known_text leaves them; unknown where the data lack the field.
struct PciVpd {
  std::optional<std::string> product_name;   // the identifier string
  std::optional<std::string> serial_number;  // SN
  std::optional<std::string> part_number;    // PN
  std::optional<std::string> manufacturer;   // MN
  std::optional<std::string> fru_number;     // FN
  std::optional<std::string> model;          // MM, as some makers have it in the vendor-specific fields

  bool empty() const;
};

// Reads the resources in turn: identifier string, read-only fields; read-write fields are skipped. Where the
// data end early, a length leaves them or the checksum (RV) is wrong, nothing is believed and the answer is
// nothing.
std::optional<PciVpd> parse_pci_vpd(Bytes data);

}  // namespace zymdb::collect

#endif
