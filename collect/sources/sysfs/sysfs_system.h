// The machine as a whole, as its sysfs tree tells.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_SYSTEM_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_SYSTEM_H

#include <optional>
#include <string>

#include "collect/sources/smbios/smbios_system.h"

namespace zymdb::collect {

// What SMBIOS tells, as the kernel has kept it in `root`/class/dmi/id, else what the device tree tells.
// Serial numbers and the UUID are for root only. Nothing where neither tells anything.
std::optional<SmbiosSystem> read_sysfs_system(const std::string& root);

// The name of the machine whose sysfs tree is `root`: the kernel's, else that of /etc.
std::optional<std::string> read_host_name(const std::string& root);

}  // namespace zymdb::collect

#endif
