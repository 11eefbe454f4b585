// The rows that describe graphics functions and processing accelerators.
#ifndef ZYMDB_COLLECT_ROWS_GPU_ROWS_H
#define ZYMDB_COLLECT_ROWS_GPU_ROWS_H

#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/table_content.h"
#include "collect/sources/pci/pci_ids.h"

namespace zymdb::collect {

// PCIGPU and PCIGPUChip: one row each for every display controller and processing accelerator, which is one
// chip to the bus.
std::vector<TableContent> gpu_rows(const Machine& machine, const PciIds& names);

}  // namespace zymdb::collect

#endif
