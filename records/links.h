// PCI Express links, seen from both ends.
#ifndef ZYMDB_RECORDS_LINKS_H
#define ZYMDB_RECORDS_LINKS_H

#include <cstdint>
#include <map>
#include <optional>

#include "common/pci_address.h"

namespace zymdb::records {

// What one end tells of its link. Nothing: not known. All 0: a function without a link.
struct Link {
  std::optional<FunctionKey> bridge;  // above the function; nothing at a root
  bool is_bridge = false;
  std::optional<unsigned> lanes;  // in use; 0: nothing is plugged in
  std::optional<unsigned> max_lanes;
  std::optional<unsigned> generation;  // in use
  std::optional<unsigned> max_generation;
};

using Links = std::map<FunctionKey, Link>;

enum class LinkState : uint8_t {
  kUnknown,
  kDown,     // nothing at the other end
  kFull,     // as wide and fast as both ends can do
  kReduced,  // narrower or slower than that
};

// Judged by what both ends can do: a slow card in a fast slot is no fault. Where the other end is not known,
// a link is taken for full.
LinkState state_of(const Links& links, FunctionKey function);

}  // namespace zymdb::records

#endif
