// The machine model: every PCI function with its keys and its place, the processors and the memory.
#ifndef ZYMDB_COLLECT_MODEL_MACHINE_H
#define ZYMDB_COLLECT_MODEL_MACHINE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "collect/model/slots.h"
#include "collect/sources/pci/pci_function.h"
#include "collect/sources/smbios/smbios.h"
#include "collect/sources/smbios/smbios_decode.h"
#include "collect/sources/smbios/smbios_memory.h"
#include "collect/sources/smbios/smbios_system.h"
#include "collect/sources/sysfs/sysfs_pci.h"

namespace zymdb::collect {

// What the sources told. Nothing: the source was not there.
struct Findings {
  std::optional<std::vector<PciFunction>> functions;
  std::vector<SysfsSlot> sysfs_slots;
  std::optional<SmbiosTables> smbios;
};

struct MachineFunction {
  PciFunction pci;
  uint8_t segment = 0;  // the domain, or the number it got instead
  FunctionKey key;
  uint32_t device_key = 0;                 // PCI key
  std::optional<FunctionKey> bridge_key;   // of the bridge above; nothing at a root
  std::optional<size_t> slot;              // index into the machine's slots; nothing: on the board
  bool place_known = false;                // false: no source could say whether it sits in a slot
  std::optional<std::string> designation;  // the board's own name for it
};

struct Machine {
  std::optional<std::vector<MachineFunction>> functions;  // by key; nothing: not told
  std::vector<Slot> slots;
  std::optional<std::vector<SmbiosSystem>> systems;        // one at most; nothing: not told
  std::optional<std::vector<SmbiosProcessor>> processors;  // nothing: not told
  std::optional<std::vector<SmbiosMemoryDevice>> memory;   // nothing: not told
  std::optional<std::vector<SmbiosFirmware>> firmware;     // of the system; nothing: not told
  std::vector<std::string>
      notices;  // one line each: a function that is left out, a domain or slot renumbered

  const Slot* slot_of(const MachineFunction& function) const {
    return function.slot ? &slots[*function.slot] : nullptr;
  }
  Location location_of(const MachineFunction& function) const {
    return function.slot ? slots[*function.slot].location : ZYMDB_LOCATION_BOARD;
  }
};

// Decides keys and places.
//
// A function is in a slot when the slot states the address of its device, or of a bridge on the path to it;
// the nearest one counts, and SMBIOS's slots before the system's. A slot that names device 0 behind a bridge
// has the whole bus (a PCI Express link has one device). A bridge that a slot names is itself in the slot
// only as the upstream port of a card's switch; host bridges are never in one. Everything else is on the
// board; that is known where SMBIOS describes any slot or device on the board.
//
// Firmware is believed as far as the bus bears it out. A slot may state a function of its card that is not
// there, but not a port that is hidden among other ports; one that is said to be empty takes only what is
// plainly there, at the very address that it states or behind it, and not on the board by SMBIOS's own
// account. A segment that the machine does not have is the one that has the function.
//
// Domains from 128 on do not fit the function key: each gets the smallest free number. Functions that do not
// answer (vendor FFFF) and domains for which no number is left are left out. Each of these is a notice.
Machine build_machine(Findings findings);

}  // namespace zymdb::collect

#endif
