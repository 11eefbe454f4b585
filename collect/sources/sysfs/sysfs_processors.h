// Processors and memory as a sysfs tree tells of them, where there is no SMBIOS.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_PROCESSORS_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_PROCESSORS_H

#include <optional>
#include <string>
#include <vector>

#include "collect/sources/smbios/smbios_decode.h"
#include "collect/sources/smbios/smbios_memory.h"

namespace zymdb::collect {

// What the sockets and positions are called that only the system tells of, so that they are known again.
inline constexpr char kPackage[] = "package";
inline constexpr char kNode[] = "node";

// The packages, "package0" and so on by the kernel's numbers, of what runs of them: cores, threads, caches
// (all of a level and package), speeds; names from proc/cpuinfo. Nothing where neither tells of a processor.
std::optional<std::vector<SmbiosProcessor>> read_sysfs_processors(const std::string& root);

// The memory of each NUMA node, "node0" and so on: its memory blocks, else what the node or the system says
// that it has. Nothing where nothing tells of any.
std::optional<std::vector<SmbiosMemoryDevice>> read_sysfs_memory(const std::string& root);

}  // namespace zymdb::collect

#endif
