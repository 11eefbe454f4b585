#include "collect/model/machine.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "collect/model/segments.h"
#include "collect/model/topology.h"

namespace zymdb::collect {
namespace {

FunctionKey key_of(uint8_t segment, const PciAddress& address) {
  return {segment, address.bus, address.device, address.function};
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
      machine_.systems = decode_system(*findings_.smbios);
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
    if (findings_.smbios) describe_places(*findings_.smbios);
    described_ = machine_.slots.size();
    const bool breaks_off = findings_.smbios && !findings_.smbios->is_whole();
    tells_places_ = !breaks_off && (described_ != 0 || !onboard_.empty());
    join_slots(machine_.slots, slots_of(findings_.sysfs_slots));
  }

  void describe_places(const SmbiosTables& tables) {
    const SegmentFinder segments(*findings_.functions);
    auto slots = decode_slots(tables);
    for (auto& slot : slots) segments.settle(slot.address);
    machine_.slots = slots_of(slots);
    onboard_ = decode_onboard_devices(tables);
    for (auto& device : onboard_) segments.settle(device.address);
  }

  // SMBIOS itself may list a device on the board that is behind the port of a slot that it calls empty.
  bool is_in(const Slot& slot, const PciFunction& function) const {
    return !slot.is_said_to_be_empty ||
           std::ranges::none_of(onboard_, [&](const SmbiosOnboardDevice& device) {
             return device.address && device.address->same_device(function.address);
           });
  }

  std::optional<size_t> find_slot(const SlotFinder& described, const SlotFinder& named,
                                  const PciFunction& function) const {
    const auto slot = described.find(function);
    if (!slot) return named.find(function);
    return is_in(machine_.slots[*slot], function) ? slot : std::nullopt;
  }

  void add_functions() {
    const auto segments = number_domains(*findings_.functions, machine_.notices);
    const Topology topology(*findings_.functions);
    const SlotFinder described(topology, machine_.slots, 0, described_);
    const SlotFinder named(topology, machine_.slots, described_, machine_.slots.size());
    auto& functions = machine_.functions.emplace();
    functions.reserve(findings_.functions->size());
    std::vector<PciFunction*> origins;
    for (auto& pci : *findings_.functions) {
      const auto segment = segments.find(pci.address.domain);
      if (segment == segments.end()) continue;
      origins.push_back(&pci);
      auto& function = functions.emplace_back();
      function.segment = segment->second;
      function.key = key_of(function.segment, pci.address);
      function.device_key = key_of(function.segment, device_of(pci.address)).value;
      if (const auto* bridge = topology.parent(pci))
        function.bridge_key = key_of(function.segment, bridge->address);
      function.slot = find_slot(described, named, pci);
      function.place_known = function.slot || tells_places_;
    }
    // The topology needs them where they are until all are placed.
    for (size_t i = 0; i < functions.size(); ++i) functions[i].pci = std::move(*origins[i]);
    findings_.functions.reset();
    std::ranges::sort(functions, {}, &MachineFunction::key);
  }

  void name_onboard_devices() {
    std::map<PciAddress, std::optional<std::string>> names;
    for (const auto& device : onboard_) {
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
  std::vector<SmbiosOnboardDevice> onboard_;
  bool tells_places_ = false;  // SMBIOS knows of a slot or of a device on the board
  size_t described_ = 0;       // slots that SMBIOS describes; the system's own follow
};

}  // namespace

Machine build_machine(Findings findings) {
  return MachineBuilder(std::move(findings)).build();
}

}  // namespace zymdb::collect
