// The rows of the inventory's tables that describe a machine.
#ifndef ZYMDB_COLLECT_ROWS_INVENTORY_ROWS_H
#define ZYMDB_COLLECT_ROWS_INVENTORY_ROWS_H

#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/table_content.h"
#include "collect/sources/pci/pci_ids.h"

namespace zymdb::collect {

// The tables that `machine` tells of, in the order in which they are to be written.
std::vector<TableContent> inventory_rows(const Machine& machine, const PciIds& names);

}  // namespace zymdb::collect

#endif
