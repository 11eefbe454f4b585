#include "collect/model/machine.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr uint32_t kSegments = 128;  // a function key of a larger one would not fit 31 bits
constexpr uint8_t kSubclassHost = 0x00;

uint32_t function_key(uint8_t segment, const PciAddress& address) {
  return uint32_t{segment} << 24 | uint32_t{address.bus} << 16 | uint32_t{address.device} << 8 |
         address.function;
}

PciAddress device_of(PciAddress address) {
  address.function = 0;
  return address;
}

PciAddress bus_of(PciAddress address) {
  address.device = 0;
  return device_of(address);
}

bool is_host_bridge(const PciFunction& function) {
  return function.base_class() == kClassBridge && function.subclass() == kSubclassHost;
}

// The functions by address, and which bridge leads to which.
class Topology {
 public:
  explicit Topology(const std::vector<PciFunction>& functions) {
    for (const auto& function : functions) {
      functions_.emplace(function.address, &function);
      // A bridge that nobody configured has bus 0 on both sides.
      if (function.secondary_bus.value_or(0) <= function.address.bus) continue;
      bridges_.emplace(PciAddress{function.address.domain, *function.secondary_bus, 0, 0}, &function);
    }
  }

  const PciFunction* find(const PciAddress& address) const { return lookup(functions_, address); }

  // The bridge above. Its bus number is always the smaller one, so every path ends.
  const PciFunction* parent(const PciFunction& function) const {
    if (!function.parent) return lookup(bridges_, bus_of(function.address));
    const PciFunction* named = find(*function.parent);
    const bool above = named != nullptr && named->address.domain == function.address.domain &&
                       named->address.bus < function.address.bus;
    return above ? named : nullptr;
  }

 private:
  using Index = std::map<PciAddress, const PciFunction*>;

  static const PciFunction* lookup(const Index& index, const PciAddress& address) {
    const auto found = index.find(address);
    return found == index.end() ? nullptr : found->second;
  }

  Index functions_;
  Index bridges_;  // by domain and the bus below
};

// Finds the slot of a function, among the slots of one source.
class SlotFinder {
 public:
  // The slots from `first` on, `last` excluded.
  SlotFinder(const Topology& topology, const std::vector<Slot>& slots, size_t first, size_t last)
      : topology_(topology) {
    for (size_t i = first; i < last; ++i) {
      for (const auto& stated : slots[i].addresses) add(i, stated);
    }
  }

  std::optional<size_t> find(const PciFunction& function) const {
    if (is_host_bridge(function)) return std::nullopt;
    for (const PciFunction* node = &function; node != nullptr; node = topology_.parent(*node)) {
      if (const auto slot = lookup(devices_, device_of(node->address))) return slot;
      if (const auto slot = lookup(buses_, bus_of(node->address))) return slot;
      if (const auto slot = lookup(bridges_, node->address); slot && node != &function) return slot;
    }
    return std::nullopt;
  }

 private:
  // Nothing as a value: several slots lay claim.
  using Index = std::map<PciAddress, std::optional<size_t>>;

  static std::optional<size_t> lookup(const Index& index, const PciAddress& address) {
    const auto found = index.find(address);
    return found == index.end() ? std::nullopt : found->second;
  }

  void add(size_t slot, const SlotAddress& stated) {
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

  // The port that the card itself brought, not the one it is plugged into.
  bool is_on_card(const PciFunction& bridge) const { return bridge.port_type == PortType::kUpstream; }

  const Topology& topology_;
  Index bridges_;
  Index devices_;
  Index buses_;
};

using Segments = std::map<uint32_t, uint8_t>;

// The domains' segment numbers; a domain for which none is left is not among them.
Segments number_domains(const std::vector<PciFunction>& functions, std::vector<std::string>& notices) {
  std::set<uint32_t> domains;
  for (const auto& function : functions) domains.insert(function.address.domain);
  std::set<uint32_t> taken = domains;
  Segments segments;
  for (const uint32_t domain : domains) {
    uint32_t segment = domain;
    if (domain >= kSegments) {
      for (segment = 0; taken.contains(segment);) ++segment;
      if (segment >= kSegments) {
        notices.push_back("PCI domain " + hex_text(domain) +
                          " is left out: no segment number is left for it");
        continue;
      }
      taken.insert(segment);
      notices.push_back("PCI domain " + hex_text(domain) + " is segment " + std::to_string(segment) +
                        " in the inventory");
    }
    segments.emplace(domain, static_cast<uint8_t>(segment));
  }
  return segments;
}

void drop_silent_functions(std::vector<PciFunction>& functions, std::vector<std::string>& notices) {
  for (const auto& function : functions) {
    if (function.answers()) continue;
    notices.push_back("PCI function " + to_string(function.address) + " does not answer and is left out");
  }
  std::erase_if(functions, [](const PciFunction& function) { return !function.answers(); });
}

class MachineBuilder {
 public:
  explicit MachineBuilder(Findings findings) : findings_(std::move(findings)) {}

  Machine build() {
    if (findings_.smbios) {
      machine_.firmware = decode_firmware(*findings_.smbios);
      machine_.processors = decode_processors(*findings_.smbios);
      machine_.memory = decode_memory(*findings_.smbios);
    }
    if (findings_.functions) {
      drop_silent_functions(*findings_.functions, machine_.notices);
      collect_slots();
      add_functions();
      name_onboard_devices();
      number_used_slots();
    }
    return std::move(machine_);
  }

 private:
  void collect_slots() {
    if (findings_.smbios) machine_.slots = slots_of(decode_slots(*findings_.smbios));
    described_ = machine_.slots.size();
    join_slots(machine_.slots, slots_of(findings_.sysfs_slots));
  }

  void add_functions() {
    const auto segments = number_domains(*findings_.functions, machine_.notices);
    const Topology topology(*findings_.functions);
    const SlotFinder described(topology, machine_.slots, 0, described_);
    const SlotFinder named(topology, machine_.slots, described_, machine_.slots.size());
    auto& functions = machine_.functions.emplace();
    for (const auto& pci : *findings_.functions) {
      const auto segment = segments.find(pci.address.domain);
      if (segment == segments.end()) continue;
      auto& function = functions.emplace_back();
      function.pci = pci;
      function.segment = segment->second;
      function.key = function_key(function.segment, pci.address);
      function.device_key = function_key(function.segment, device_of(pci.address));
      if (const auto* bridge = topology.parent(pci))
        function.bridge_key = function_key(function.segment, bridge->address);
      function.slot = described.find(pci);
      if (!function.slot) function.slot = named.find(pci);
      function.place_known = function.slot || findings_.smbios;
    }
    std::ranges::sort(functions, {}, &MachineFunction::key);
  }

  void name_onboard_devices() {
    if (!findings_.smbios) return;
    std::map<PciAddress, std::optional<std::string>> names;
    for (const auto& device : decode_onboard_devices(*findings_.smbios)) {
      if (device.address) names.emplace(*device.address, device.designation);
    }
    for (auto& function : *machine_.functions) {
      const auto name = names.find(function.pci.address);
      if (!function.slot && name != names.end()) function.designation = name->second;
    }
  }

  // SMBIOS's slots keep their numbers whether or not something is in them; the system's count only when used.
  void number_used_slots() {
    std::set<uint32_t> board_keys;
    std::set<size_t> used;
    for (const auto& function : *machine_.functions) {
      if (function.slot) {
        used.insert(*function.slot);
      } else {
        board_keys.insert(function.device_key);
      }
    }
    std::vector<Slot*> slots;
    for (size_t i = 0; i < machine_.slots.size(); ++i) {
      if (i < described_ || used.contains(i)) slots.push_back(&machine_.slots[i]);
    }
    number_slots(slots, [&board_keys](uint32_t key) { return !board_keys.contains(key); });
    for (const size_t slot : used) notice_renumbered(machine_.slots[slot]);
    for (auto& function : *machine_.functions) set_device_key(function);
  }

  void set_device_key(MachineFunction& function) const {
    const Slot* slot = machine_.slot_of(function);
    if (slot != nullptr && slot->number) function.device_key = slot_key(slot->location, *slot->number);
  }

  void notice_renumbered(const Slot& slot) {
    if (slot.wishes.empty() || slot.number == slot.wishes.front()) return;
    const std::string name = slot.designation ? "\"" + *slot.designation + "\"" : "without a designation";
    machine_.notices.push_back("slot " + name + " has number " + std::to_string(slot.number.value_or(0)) +
                               " in the inventory: its own, " + std::to_string(slot.wishes.front()) +
                               ", is taken by another device");
  }

  Findings findings_;
  Machine machine_;
  size_t described_ = 0;  // slots that SMBIOS describes; the system's own follow
};

}  // namespace

Machine build_machine(Findings findings) {
  return MachineBuilder(std::move(findings)).build();
}

}  // namespace zymdb::collect
