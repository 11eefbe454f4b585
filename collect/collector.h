// Fills the inventory with the hardware of a machine: the one this program runs on, or a recorded one.
#ifndef ZYMDB_COLLECT_COLLECTOR_H
#define ZYMDB_COLLECT_COLLECTOR_H

#include <string>
#include <vector>

#include "collect/rows/report.h"
#include "collect/sources/sources.h"

namespace zymdb::collect {

// The classes of hardware that can be collected on their own.
std::vector<std::string> class_names();

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
// An inventory of another machine is refused, or replaced wholly where that is wanted. When, by what and from
// which sources something changed last is kept in the machine's row.
//
// A source that is not there, may not be read or has nothing in it costs one notice, and its rows stay as
// they were. A file that is named but missing, is cut short or is something else is an error, found before
// anything is written. Nothing is printed and nothing is thrown but std::bad_alloc.
Summary collect_inventory(const Sources& sources, const Observer& observer = {});

}  // namespace zymdb::collect

#endif
