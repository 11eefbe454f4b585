// The rows that describe what people call adapters.
#ifndef ZYMDB_COLLECT_ADAPTER_ROWS_H
#define ZYMDB_COLLECT_ADAPTER_ROWS_H

#include <vector>

#include "machine.h"
#include "pci_ids.h"
#include "table_content.h"

namespace zymdb::collect {

// PCIAdapter and PCIMisc: a function in a slot or bay unless it is a bridge, and on the board the functions
// of the classes that are adapters.
std::vector<TableContent> adapter_rows(const Machine& machine, const PciIds& names);

}  // namespace zymdb::collect

#endif
