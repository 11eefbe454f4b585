// How PCI functions hang together, and which of them sit in which slot.
#ifndef ZYMDB_COLLECT_MODEL_TOPOLOGY_H
#define ZYMDB_COLLECT_MODEL_TOPOLOGY_H

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "collect/model/slots.h"
#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {

// Function 0 of the address's device.
PciAddress device_of(PciAddress address);

// The functions by address, and which bridge leads to which. Points to the functions it is made of.
class Topology {
 public:
  explicit Topology(const std::vector<PciFunction>& functions);

  // Null where there is none.
  const PciFunction* find(const PciAddress& address) const { return lookup(functions_, address); }

  // Whether a function of the device is a port to which links lead down: a root port or a switch's.
  bool has_port_down(const PciAddress& device) const;

  // The bridge above; null at a root. Its bus number is always the smaller one, so every path ends.
  const PciFunction* parent(const PciFunction& function) const;

 private:
  using Index = std::map<PciAddress, const PciFunction*>;

  static const PciFunction* lookup(const Index& index, const PciAddress& address);

  Index functions_;
  Index bridges_;  // by domain and the bus below
};

// Finds the slot of a function, among the slots of one source.
class SlotFinder {
 public:
  // The slots from `first` on, `last` excluded.
  SlotFinder(const Topology& topology, const std::vector<Slot>& slots, size_t first, size_t last);

  std::optional<size_t> find(const PciFunction& function) const;

 private:
  // Nothing as a value: several slots lay claim.
  using Index = std::map<PciAddress, std::optional<size_t>>;

  static std::optional<size_t> lookup(const Index& index, const PciAddress& address);
  bool is_believable(const Slot& slot, const SlotAddress& stated) const;
  void add(size_t slot, const SlotAddress& stated);

  const Topology& topology_;
  Index bridges_;
  Index devices_;
  Index buses_;
};

}  // namespace zymdb::collect

#endif
