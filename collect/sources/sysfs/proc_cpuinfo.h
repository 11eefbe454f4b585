// The kernel's list of processors in proc/cpuinfo.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_PROC_CPUINFO_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_PROC_CPUINFO_H

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace zymdb::collect {

// The lines about one processor, by their names.
using CpuinfoBlock = std::map<std::string, std::string, std::less<>>;

// The blocks of a list, by the number of the processor that each is about.
std::map<unsigned, CpuinfoBlock> parse_cpuinfo(std::string_view text);

// Who made the processor, and what it is called. Arm processors, which have no names of their own, are what
// the numbers of their implementer and part say.
std::optional<std::string> cpu_manufacturer(const CpuinfoBlock& block);
std::optional<std::string> cpu_name(const CpuinfoBlock& block);

}  // namespace zymdb::collect

#endif
