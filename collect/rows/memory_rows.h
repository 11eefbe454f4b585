// The rows that describe memory modules and the positions for them.
#ifndef ZYMDB_COLLECT_ROWS_MEMORY_ROWS_H
#define ZYMDB_COLLECT_ROWS_MEMORY_ROWS_H

#include <vector>

#include "collect/rows/table_content.h"
#include "collect/sources/smbios/smbios_memory.h"

namespace zymdb::collect {

// Memory: one row per position, numbered from 1 in the order of the table. Another module in a position is
// another row, so that no module inherits what was known of the one before. What only the modules themselves
// can tell (health, security, partition) is left to those who ask them.
TableContent memory_rows(const std::vector<SmbiosMemoryDevice>& memory);

}  // namespace zymdb::collect

#endif
