// The row that describes the machine as a whole.
#ifndef ZYMDB_COLLECT_ROWS_SYSTEM_ROWS_H
#define ZYMDB_COLLECT_ROWS_SYSTEM_ROWS_H

#include <vector>

#include "collect/rows/table_content.h"
#include "collect/sources/smbios/smbios_system.h"

namespace zymdb::collect {

// System: at most one row, whatever the machine.
TableContent system_rows(const std::vector<SmbiosSystem>& systems);

}  // namespace zymdb::collect

#endif
