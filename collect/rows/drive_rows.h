// Drives in the inventory: table AimDisks.
#ifndef ZYMDB_COLLECT_ROWS_DRIVE_ROWS_H
#define ZYMDB_COLLECT_ROWS_DRIVE_ROWS_H

#include <optional>
#include <string>
#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/table_content.h"
#include "collect/sources/sysfs/drive.h"
#include "zymdb_storage.h"

namespace zymdb::collect {

// An NVMe drive as the library's own operations take it.
struct NvmeRecord {
  _ZYMDB_AimDisk drive;
  bool has_health;
};

// The NVMe drives that are in a slot or bay; each of the others is a notice.
std::vector<NvmeRecord> nvme_records(const Machine& machine, const std::vector<Drive>& drives,
                                     std::vector<std::string>& notices);

// The SATA and SAS disks: all rows of their drive types are the collector's. A disk's bay has the number of
// its port, or the next that is free where another drive, NVMe drives first, has that. Without `drives` all
// rows stay as they are.
TableContent disk_rows(const Machine& machine, const std::optional<std::vector<Drive>>& drives,
                       const std::vector<NvmeRecord>& nvme);

}  // namespace zymdb::collect

#endif
