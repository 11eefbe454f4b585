// NVMe drives, which the library's own operations write.
#ifndef ZYMDB_COLLECT_WRITE_NVME_DRIVES_H
#define ZYMDB_COLLECT_WRITE_NVME_DRIVES_H

#include <vector>

#include "collect/collector.h"
#include "collect/rows/drive_rows.h"

namespace zymdb::collect {

// Writes the drives, leaving one alone that has not changed, and marks those that are gone as not present, in
// the calling thread's transaction. What became of them is added to `summary`. Throws DatabaseError.
void write_nvme_drives(const std::vector<NvmeRecord>& drives, TableSummary& summary);

}  // namespace zymdb::collect

#endif
