// Drives in the inventory: table AimDisks.
#ifndef ZYMDB_COLLECT_ROWS_DRIVE_ROWS_H
#define ZYMDB_COLLECT_ROWS_DRIVE_ROWS_H

#include <vector>

#include "collect/collector.h"
#include "collect/model/machine.h"
#include "collect/rows/table_content.h"
#include "collect/sources/sysfs/drive.h"
#include "zymdb_db.h"

namespace zymdb::collect {

// The SATA and SAS disks: all rows of their drive types are the collector's. A disk's bay has the number of
// its port, or the next that is free where another drive, NVMe drives first, has that.
TableContent disk_rows(const Machine& machine, const std::vector<Drive>& drives);

// Writes the NVMe drives that are in a slot or bay through the library's operations, which leave a drive
// alone that has not changed, and marks those that are gone as not present. The others are told to
// `observer`. What became of them is added to `disks`. Throws DatabaseError.
void write_nvme_drives(const Machine& machine, const std::vector<Drive>& drives, const Observer& observer,
                       TableSummary& disks);

}  // namespace zymdb::collect

#endif
