// Drives of a sysfs tree.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_DRIVES_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_DRIVES_H

#include <optional>
#include <string>
#include <vector>

#include "collect/sources/sysfs/drive.h"

namespace zymdb::collect {

// A drive hangs on the PCI function that its folder lies in; what lies in none (drives across a network) or
// behind USB is not the server's, nor are removable disks. A volume that a RAID controller or the system
// makes of disks is none.

// The NVMe drives below `root`/class/nvme, by name; nothing when there is no such folder. `health` is asked
// about each; it is empty for a tree that is not the running machine's. One that does not answer in time is
// silent; several are a NoAnswer.
std::optional<std::vector<Drive>> read_nvme_drives(const std::string& root, const HealthReader& health);

// The SATA and SAS disks and those of a virtual machine (virtio) below `root`/block, by name; nothing when
// there is no such folder. The port of a SATA disk is the number of its link, that of a SAS disk its
// target's.
std::optional<std::vector<Drive>> read_disks(const std::string& root);

// Whether `root`/block has any entry, of whatever kind.
bool has_block_devices(const std::string& root);

}  // namespace zymdb::collect

#endif
