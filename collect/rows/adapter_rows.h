// The rows that describe what people call adapters.
#ifndef ZYMDB_COLLECT_ROWS_ADAPTER_ROWS_H
#define ZYMDB_COLLECT_ROWS_ADAPTER_ROWS_H

#include <set>
#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/table_content.h"
#include "collect/sources/pci/pci_ids.h"

namespace zymdb::collect {

// PCIAdapter and PCIMisc: a function in a slot or bay unless it is a bridge, and on the board the functions
// of the classes that are adapters. Where this collection cannot tell places, the adapters among
// `known_removable` are in the slots and bays that the inventory has them in.
std::vector<TableContent> adapter_rows(const Machine& machine, const PciIds& names,
                                       const std::set<FunctionKey>& known_removable);

}  // namespace zymdb::collect

#endif
