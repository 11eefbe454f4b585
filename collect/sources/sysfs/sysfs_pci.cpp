#include "collect/sources/sysfs/sysfs_pci.h"

#include <algorithm>
#include <filesystem>

#include "collect/sources/sysfs/sysfs_gpu.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

constexpr size_t kHeaderSize = 64;

// "current_link_speed" starts with one of these.
struct Speed {
  std::string_view text;
  uint8_t generation;
};
constexpr Speed kSpeeds[] = {{"2.5 ", 1}, {"5 ", 2},    {"5.0 ", 2}, {"8 ", 3},    {"8.0 ", 3}, {"16.0 ", 4},
                             {"16 ", 4},  {"32.0 ", 5}, {"32 ", 5},  {"64.0 ", 6}, {"64 ", 6}};

constexpr uint64_t kMostLanes = 32;  // larger widths are codes for "unknown"

template <typename T>
void read_into(const std::string& path, T& field) {
  if (const auto number = read_number(path)) field = static_cast<T>(*number);
}

void read_subsystem(const std::string& folder, PciFunction& function) {
  const auto vendor = read_number(folder + "/subsystem_vendor");
  const auto device = read_number(folder + "/subsystem_device");
  if (!vendor || !device || *vendor == 0 || *vendor >= 0xFFFF) return;
  function.subsystem_vendor = static_cast<uint16_t>(*vendor);
  function.subsystem_device = static_cast<uint16_t>(*device);
}

void read_identity(const std::string& folder, PciFunction& function) {
  const auto config = read_attribute(folder + "/config");
  if (config && config->size() >= kHeaderSize) {
    decode_config(as_bytes(*config), function);
  } else {
    read_into(folder + "/vendor", function.vendor);
    read_into(folder + "/device", function.device);
    read_into(folder + "/class", function.class_code);
    read_into(folder + "/revision", function.revision);
  }
  if (!function.subsystem_vendor) read_subsystem(folder, function);
}

void read_width(const std::string& path, std::optional<uint8_t>& width) {
  const auto lanes = read_number(path);
  if (lanes && *lanes <= kMostLanes) width = static_cast<uint8_t>(*lanes);
}

void read_generation(const std::string& path, std::optional<uint8_t>& generation) {
  const auto text = read_attribute(path);
  if (!text) return;
  const auto speed = std::ranges::find_if(kSpeeds, [&](const Speed& s) { return text->starts_with(s.text); });
  if (speed != std::end(kSpeeds)) generation = speed->generation;
}

void read_link(const std::string& folder, PciLink& link) {
  read_width(folder + "/current_link_width", link.width);
  read_width(folder + "/max_link_width", link.max_width);
  read_generation(folder + "/current_link_speed", link.generation);
  read_generation(folder + "/max_link_speed", link.max_generation);
  if (link.width != 0) return;
  // A link that is down may still have a most; without one there is no link.
  if (!link.generation) link.generation = 0;
  if (!link.max_width) link.max_width = link.max_generation = 0;
}

// The folder of a function lies in the folder of the bridge above it.
std::optional<PciAddress> parent_of(const fs::path& folder) {
  const auto real = real_path(folder);
  return real ? parse_pci_address(real->parent_path().filename().string()) : std::nullopt;
}

// What a link of a function's folder leads to, by its name; where it leads need not be there.
std::optional<std::string> link_name(const fs::path& link) {
  const auto target = link_target(link);
  return target ? known_text(target->filename().string()) : std::nullopt;
}

std::optional<unsigned> iommu_group(const fs::path& folder) {
  const auto name = link_name(folder / "iommu_group");
  const auto number = name ? leading_number(*name) : std::nullopt;
  return number && *number <= INT32_MAX ? std::optional(static_cast<unsigned>(*number)) : std::nullopt;
}

PciFunction read_function(const fs::path& folder, const PciAddress& address) {
  const std::string path = folder.string();
  PciFunction function;
  function.address = address;
  read_identity(path, function);
  read_link(path, function.link);
  function.parent = parent_of(folder);
  if (const auto node = read_number(path + "/numa_node")) function.numa_node = static_cast<unsigned>(*node);
  function.is_told_by_system = true;
  function.driver = link_name(folder / "driver");
  function.iommu_group = iommu_group(folder);
  if (function.has_video_memory()) function.video_memory = read_video_memory(path);
  if (is_there(folder / "vpd")) function.vpd = read_attribute(path + "/vpd").value_or("");
  return function;
}

}  // namespace

std::optional<std::vector<PciFunction>> read_sysfs_functions(const std::string& root) {
  const auto folders = folder_entries(fs::path(root) / "bus/pci/devices");
  if (!folders) return std::nullopt;
  std::vector<PciFunction> functions;
  for (const auto& folder : *folders) {
    const auto address = parse_pci_address(folder.filename().string());
    if (address) functions.push_back(read_function(folder, *address));
  }
  return functions;
}

std::vector<SysfsSlot> read_sysfs_slots(const std::string& root) {
  std::vector<SysfsSlot> slots;
  for (const auto& folder :
       folder_entries(fs::path(root) / "bus/pci/slots").value_or(std::vector<fs::path>{})) {
    const auto text = read_attribute((folder / "address").string());
    const auto address = text ? parse_pci_address(trimmed(*text)) : std::nullopt;
    if (address) slots.push_back({folder.filename().string(), *address});
  }
  return slots;
}

}  // namespace zymdb::collect
