// Drives of a sysfs tree.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_DRIVES_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_DRIVES_H

#include <optional>
#include <string>
#include <vector>

#include "collect/sources/sysfs/drive.h"

namespace zymdb::collect {

// NVMe drives below `root`/class/nvme, SATA and SAS disks below `root`/block, each by name. Nothing when
// `root` has neither folder.
//
// A drive hangs on the PCI function that its folder lies in; what lies in none (drives across a network) or
// behind USB is not the server's, nor are removable disks. The port of a SATA disk is the number of its link,
// that of a SAS disk its target's. `health` is asked about NVMe drives; it is empty for a tree that is not
// the running machine's.
std::optional<std::vector<Drive>> read_sysfs_drives(const std::string& root, const HealthReader& health);

}  // namespace zymdb::collect

#endif
