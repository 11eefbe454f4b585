// The rows that describe PCI functions themselves.
#ifndef ZYMDB_COLLECT_FUNCTION_ROWS_H
#define ZYMDB_COLLECT_FUNCTION_ROWS_H

#include "machine.h"
#include "pci_ids.h"
#include "table_content.h"

namespace zymdb::collect {

// PCIs: every function of `machine`, bridges too.
TableContent function_rows(const Machine& machine, const PciIds& names);

// VPDs: the vital product data of those functions whose own data can be read.
TableContent vpd_rows(const Machine& machine);

}  // namespace zymdb::collect

#endif
