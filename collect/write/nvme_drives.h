// NVMe drives, which the library's own operations write.
#ifndef ZYMDB_COLLECT_WRITE_NVME_DRIVES_H
#define ZYMDB_COLLECT_WRITE_NVME_DRIVES_H

#include <set>
#include <vector>

#include "collect/rows/drive_rows.h"
#include "collect/rows/report.h"
#include "collect/write/former_machine.h"

namespace zymdb::collect {

// Throws DatabaseError.
FormerDrives read_former_drives(const FormerMachine& former);

// Marks the drives of functions that are gone as not present; the collector's own rows are the table's.
// What became of them is added to `summary`. Throws DatabaseError.
void mark_drives_of_gone_functions(const std::set<FunctionKey>& present, TableSummary& summary);

// Writes the drives, leaving one alone that has not changed, and marks those that are gone as not present, in
// the calling thread's transaction. Those of `silent` functions stay as they are. What became of the others
// is added to `summary`. Throws DatabaseError.
void write_nvme_drives(const std::vector<NvmeRecord>& drives, const std::set<FunctionKey>& silent,
                       TableSummary& summary);

}  // namespace zymdb::collect

#endif
