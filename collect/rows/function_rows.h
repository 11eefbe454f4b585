// The rows that describe PCI functions themselves.
#ifndef ZYMDB_COLLECT_ROWS_FUNCTION_ROWS_H
#define ZYMDB_COLLECT_ROWS_FUNCTION_ROWS_H

#include "collect/model/machine.h"
#include "collect/rows/table_content.h"
#include "collect/sources/pci/pci_ids.h"

namespace zymdb::collect {

// PCIs: every function of `machine`, bridges too.
TableContent function_rows(const Machine& machine, const PciIds& names);

// VPDs: the vital product data of those functions whose own data can be read.
TableContent vpd_rows(const Machine& machine);

}  // namespace zymdb::collect

#endif
