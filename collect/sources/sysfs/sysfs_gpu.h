// What sysfs tells of graphics functions beyond what it tells of all.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_GPU_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_GPU_H

#include <cstdint>
#include <optional>
#include <string>

namespace zymdb::collect {

// The video memory in bytes of the function with this folder: what its driver tells, else the size of its
// largest prefetchable memory region, which is all of the memory or the part that the bus shows at a time.
// Nothing where there is neither.
std::optional<uint64_t> read_video_memory(const std::string& folder);

}  // namespace zymdb::collect

#endif
