// PCI functions and slots of a sysfs tree: the running machine's, or a recorded one.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_PCI_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_PCI_H

#include <optional>
#include <string>
#include <vector>

#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {

// The functions below `root`/bus/pci/devices, by address. What `config` does not tell, or all where it cannot
// be read, comes from the attribute files. Nothing when there is no such folder or it cannot be read.
std::optional<std::vector<PciFunction>> read_sysfs_functions(const std::string& root);

// A slot that a hot-plug driver or the firmware named.
struct SysfsSlot {
  std::string name;
  PciAddress address;  // of device 0 in it; the function is 0
};

// The slots below `root`/bus/pci/slots, by name; those without a usable address are left out.
std::vector<SysfsSlot> read_sysfs_slots(const std::string& root);

}  // namespace zymdb::collect

#endif
