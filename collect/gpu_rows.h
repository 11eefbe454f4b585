// The rows that describe graphics functions and processing accelerators.
#ifndef ZYMDB_COLLECT_GPU_ROWS_H
#define ZYMDB_COLLECT_GPU_ROWS_H

#include <vector>

#include "machine.h"
#include "pci_ids.h"
#include "table_content.h"

namespace zymdb::collect {

// PCIGPU and PCIGPUChip: one row each for every display controller and processing accelerator, which is one
// chip to the bus.
std::vector<TableContent> gpu_rows(const Machine& machine, const PciIds& names);

}  // namespace zymdb::collect

#endif
