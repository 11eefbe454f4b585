#include "collect/sources/sysfs/sysfs_gpu.h"

#include <algorithm>
#include <sstream>

#include "common/source_file.h"

namespace zymdb::collect {
namespace {

constexpr int kRegions = 6;  // of the function itself; the lines after them are its ROM and other windows

// Flags of a region.
constexpr uint64_t kMemory = 0x200;
constexpr uint64_t kPrefetchable = 0x2000;

std::optional<uint64_t> largest_prefetchable_region(const std::string& resource) {
  std::istringstream lines(resource);
  lines >> std::hex;
  uint64_t largest = 0;
  uint64_t start = 0;
  uint64_t end = 0;
  uint64_t flags = 0;
  for (int region = 0; region < kRegions && lines >> start >> end >> flags; ++region) {
    const bool wanted = (flags & kMemory) != 0 && (flags & kPrefetchable) != 0;
    if (wanted && end > start) largest = std::max(largest, end - start + 1);
  }
  return largest == 0 ? std::nullopt : std::optional(largest);
}

}  // namespace

std::optional<uint64_t> read_video_memory(const std::string& folder) {
  const auto told = read_number(folder + "/mem_info_vram_total");
  if (told.value_or(0) != 0) return told;
  const auto resource = read_attribute(folder + "/resource");
  return resource ? largest_prefetchable_region(*resource) : std::nullopt;
}

}  // namespace zymdb::collect
