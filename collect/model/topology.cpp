#include "collect/model/topology.h"

namespace zymdb::collect {
namespace {

constexpr uint8_t kSubclassHost = 0x00;

PciAddress bus_of(PciAddress address) {
  address.device = 0;
  return device_of(address);
}

bool is_host_bridge(const PciFunction& function) {
  return function.base_class() == kClassBridge && function.subclass() == kSubclassHost;
}

// The port that the card itself brought, not the one it is plugged into.
bool is_on_card(const PciFunction& bridge) {
  return bridge.port_type == PortType::kUpstream;
}

}  // namespace

PciAddress device_of(PciAddress address) {
  address.function = 0;
  return address;
}

Topology::Topology(const std::vector<PciFunction>& functions) {
  for (const auto& function : functions) {
    functions_.emplace(function.address, &function);
    // A bridge that nobody configured has bus 0 on both sides.
    if (function.secondary_bus.value_or(0) <= function.address.bus) continue;
    bridges_.emplace(PciAddress{function.address.domain, *function.secondary_bus, 0, 0}, &function);
  }
}

const PciFunction* Topology::parent(const PciFunction& function) const {
  if (!function.parent) return lookup(bridges_, bus_of(function.address));
  const PciFunction* named = find(*function.parent);
  const bool above = named != nullptr && named->address.domain == function.address.domain &&
                     named->address.bus < function.address.bus;
  return above ? named : nullptr;
}

bool Topology::has_port_down(const PciAddress& device) const {
  for (auto function = functions_.lower_bound(device_of(device));
       function != functions_.end() && function->first.same_device(device); ++function) {
    const PciFunction& found = *function->second;
    if (found.port_type == PortType::kRootPort || found.port_type == PortType::kDownstream) return true;
    // A dump without capabilities: a bridge at a root.
    if (found.port_type == PortType::kUnknown && found.secondary_bus && parent(found) == nullptr) return true;
  }
  return false;
}

const PciFunction* Topology::lookup(const Index& index, const PciAddress& address) {
  const auto found = index.find(address);
  return found == index.end() ? nullptr : found->second;
}

SlotFinder::SlotFinder(const Topology& topology, const std::vector<Slot>& slots, size_t first, size_t last)
    : topology_(topology) {
  for (size_t i = first; i < last; ++i) {
    for (const auto& stated : slots[i].addresses) {
      if (is_believable(slots[i], stated)) add(i, stated);
    }
  }
}

std::optional<size_t> SlotFinder::find(const PciFunction& function) const {
  if (is_host_bridge(function)) return std::nullopt;
  for (const PciFunction* node = &function; node != nullptr; node = topology_.parent(*node)) {
    if (const auto slot = lookup(devices_, device_of(node->address))) return slot;
    if (const auto slot = lookup(buses_, bus_of(node->address))) return slot;
    if (const auto slot = lookup(bridges_, node->address); slot && node != &function) return slot;
  }
  return std::nullopt;
}

std::optional<size_t> SlotFinder::lookup(const Index& index, const PciAddress& address) {
  const auto found = index.find(address);
  return found == index.end() ? std::nullopt : found->second;
}

// A function that is not there may be one that the card does not have, but not a hidden port beside others.
bool SlotFinder::is_believable(const Slot& slot, const SlotAddress& stated) const {
  if (!stated.names_function || topology_.find(stated.address) != nullptr) return true;
  return !slot.is_said_to_be_empty && !topology_.has_port_down(stated.address);
}

void SlotFinder::add(size_t slot, const SlotAddress& stated) {
  const auto& [address, names_function] = stated;
  const PciFunction* function = topology_.find(names_function ? address : device_of(address));
  if (function != nullptr && is_host_bridge(*function)) return;
  if (function != nullptr && function->secondary_bus && names_function) {
    bridges_.emplace(address, slot);
    if (!is_on_card(*function)) return;
  }
  devices_.emplace(device_of(address), slot);
  const bool behind_bridge = function != nullptr && topology_.parent(*function) != nullptr;
  const auto [claim, first] = buses_.emplace(bus_of(address), slot);
  if (!first || !behind_bridge || address.device != 0) claim->second.reset();
}

}  // namespace zymdb::collect
