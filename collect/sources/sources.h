// What a collection reads.
#ifndef ZYMDB_COLLECT_SOURCES_SOURCES_H
#define ZYMDB_COLLECT_SOURCES_SOURCES_H

#include <string>
#include <vector>

namespace zymdb::collect {

// Where a machine is described. With `lspci`, `smbios` and `sysfs` all empty it is the running machine
// (/sys). As soon as one of them is named only named sources are read, so that a recorded machine is never
// mixed with the running one; what no named source describes is left as the inventory has it.
struct Sources {
  std::string lspci = {};  // dump of the PCI configuration spaces, as `lspci -x`, `-xxx` or `-xxxx` prints it
  std::string smbios = {};  // SMBIOS tables, as `dmidecode --dump-bin` writes them
  std::string sysfs =
      {};  // root of a sysfs tree; beside `lspci` what it knows of the dump's functions counts
  std::string pci_ids = "/usr/share/misc/pci.ids";  // names of vendors and devices; absent: no names
  bool allow_empty = false;            // believe a source that tells of nothing, and empty what it tells of
  bool replace = false;                // put the machine in the place of another one that the inventory is of
  unsigned timeout = 5;                // seconds that a question to the machine may take
  std::vector<std::string> only = {};  // the classes that are collected; empty: all
};

}  // namespace zymdb::collect

#endif
