// The places that take cards and drives: which there are, what they are called and which number they bear.
#ifndef ZYMDB_COLLECT_MODEL_SLOTS_H
#define ZYMDB_COLLECT_MODEL_SLOTS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "collect/sources/pci/pci_function.h"
#include "collect/sources/smbios/smbios_decode.h"
#include "collect/sources/sysfs/sysfs_pci.h"
#include "zymdb_db.h"

namespace zymdb::collect {

using Location = _ZYMDB_Location;

// The PCI key of what sits in a slot or bay.
inline uint32_t slot_key(Location location, uint16_t number) {
  return static_cast<uint32_t>(location) << 16 | number;
}

struct SlotAddress {
  PciAddress address;   // of the device in a slot, or of the port above that
  bool names_function;  // it names one function, not a whole device
};

struct Slot {
  std::optional<std::string> designation;
  std::optional<uint8_t> type;              // SMBIOS code
  std::optional<uint8_t> data_bus_width;    // SMBIOS code
  Location location = ZYMDB_LOCATION_SLOT;  // or ZYMDB_LOCATION_BAY
  std::vector<uint16_t> wishes;             // numbers it may bear, the best first
  std::optional<uint16_t> number;           // the number it bears
  std::vector<SlotAddress> addresses;       // as the sources state them
  bool is_said_to_be_empty = false;         // by SMBIOS, which may be wrong
};

// Whether SMBIOS calls a slot type, or a designation reads like, the bay of a drive. A slot for a hard disk
// is one only with the lanes of a drive: an adapter may be named after what hangs on it.
bool is_drive_bay(std::optional<uint8_t> type, std::string_view designation,
                  std::optional<uint8_t> data_bus_width = {});

// The number in a designation: the one after "slot" or "bay", else the only one there is; lanes ("x16") do
// not count.
std::optional<uint16_t> designated_number(std::string_view designation);

// SMBIOS's slots. An id is a slot's first wish, the number in its designation the second: the id is what the
// firmware's own tables call the slot's user-visible number. An address that several slots state belongs to
// none of them.
std::vector<Slot> slots_of(const std::vector<SmbiosSlot>& slots);

// The system's slots, whose name has the number. All of them are taken for slots, none for a bay.
std::vector<Slot> slots_of(const std::vector<SysfsSlot>& slots);

// Joins the system's slots to SMBIOS's: one whose number is the first wish of a single SMBIOS slot is that
// slot and adds its address to it, the others follow after SMBIOS's.
void join_slots(std::vector<Slot>& slots, std::vector<Slot> named);

// Gives slots their numbers: each its first wish that is free, else the smallest free number from 1 on.
// A number is free when no other of the slots at the same location bears it and `is_free` agrees to the PCI
// key that it makes. First wishes of all slots come before second ones, and slots come in order, so that the
// same machine always gets the same numbers.
void number_slots(const std::vector<Slot*>& slots, const std::function<bool(uint32_t device_key)>& is_free);

}  // namespace zymdb::collect

#endif
