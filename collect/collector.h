// Fills the inventory with the hardware of a machine: the one this program runs on, or a recorded one.
#ifndef ZYMDB_COLLECT_COLLECTOR_H
#define ZYMDB_COLLECT_COLLECTOR_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zymdb::collect {

// Where a machine is described. With `lspci`, `smbios` and `sysfs` all empty it is the running machine
// (/sys). As soon as one of them is named only named sources are read, so that a recorded machine is never
// mixed with the running one; what no named source describes is left as the inventory has it.
struct Sources {
  std::string lspci;   // dump of the PCI configuration spaces, as `lspci -x`, `-xxx` or `-xxxx` prints it
  std::string smbios;  // SMBIOS tables, as `dmidecode --dump-bin` writes them
  std::string
      sysfs;  // root of a sysfs tree; beside `lspci` it adds only what a dump lacks (slots, links, VPD)
  std::string pci_ids = "/usr/share/misc/pci.ids";  // names of vendors and devices; absent: no names
  bool allow_empty = false;  // believe a source that tells of nothing, and empty what it tells of
};

// Who is told what happens meanwhile. Either function may be empty. Both are called on the calling thread.
struct Observer {
  std::function<void(std::string_view line)> notice;  // one line without a line end: a source that is missing
                                                      // and skipped, a PCI domain that got another number
  std::function<void(size_t done, size_t total)> progress;  // rows compared with the inventory so far;
                                                            // first (0, total), last (total, total)
};

// What became of the rows of one table.
struct TableSummary {
  std::string_view table;  // the table's name
  size_t inserted = 0;
  size_t updated = 0;
  size_t removed = 0;
  size_t unchanged = 0;

  size_t changed() const { return inserted + updated + removed; }
};

struct Summary {
  std::string error;  // one line, what failed and where; empty when the collection is stored
  std::vector<TableSummary>
      tables;  // the tables that were collected, in the order of writing; empty on error

  bool ok() const { return error.empty(); }
};

// Reads the sources, decides every device's place and makes the inventory agree: new hardware is inserted,
// changed rows are updated, rows of hardware that is gone are removed, all in one transaction when the
// database client in the process offers transactions. A second run on an unchanged machine writes nothing.
//
// A source that is not there, may not be read or has nothing in it costs one notice, and its rows stay as
// they were. A file that is named but missing, is cut short or is something else is an error, found before
// anything is written. Nothing is printed and nothing is thrown but std::bad_alloc.
Summary collect_inventory(const Sources& sources, const Observer& observer = {});

}  // namespace zymdb::collect

#endif
