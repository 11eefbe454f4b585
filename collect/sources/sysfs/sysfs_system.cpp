#include "collect/sources/sysfs/sysfs_system.h"

#include <utility>

#include "collect/sources/sysfs/machine_folders.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

using Text = std::optional<std::string> SmbiosSystem::*;

struct Attribute {
  const char* file;
  Text text;
};
constexpr Attribute kDmi[] = {
    {"class/dmi/id/sys_vendor", &SmbiosSystem::manufacturer},
    {"class/dmi/id/product_name", &SmbiosSystem::model},
    {"class/dmi/id/product_version", &SmbiosSystem::version},
    {"class/dmi/id/product_serial", &SmbiosSystem::serial_number},
    {"class/dmi/id/product_uuid", &SmbiosSystem::uuid},
    {"class/dmi/id/product_sku", &SmbiosSystem::sku},
    {"class/dmi/id/product_family", &SmbiosSystem::family},
    {"class/dmi/id/board_vendor", &SmbiosSystem::board_manufacturer},
    {"class/dmi/id/board_name", &SmbiosSystem::board_model},
    {"class/dmi/id/board_version", &SmbiosSystem::board_version},
    {"class/dmi/id/board_serial", &SmbiosSystem::board_serial_number},
    {"class/dmi/id/bios_vendor", &SmbiosSystem::firmware_vendor},
    {"class/dmi/id/bios_version", &SmbiosSystem::firmware_version},
    {"class/dmi/id/bios_date", &SmbiosSystem::firmware_date},
};
constexpr Attribute kDeviceTree[] = {
    {"firmware/devicetree/base/model", &SmbiosSystem::model},
    {"firmware/devicetree/base/serial-number", &SmbiosSystem::serial_number},
};

std::optional<std::string> read_text(const std::string& file) {
  const auto content = read_attribute(file);
  return content ? known_text(*content) : std::nullopt;
}

template <size_t N>
std::optional<SmbiosSystem> read(const std::string& root, const Attribute (&attributes)[N]) {
  SmbiosSystem system;
  bool is_told = false;
  for (const auto& [file, text] : attributes) {
    system.*text = read_text(root + "/" + file);
    is_told = is_told || system.*text;
  }
  if (system.uuid) system.uuid = known_uuid(*system.uuid);
  return is_told ? std::optional(system) : std::nullopt;
}

}  // namespace

std::optional<SmbiosSystem> read_sysfs_system(const std::string& root) {
  auto system = read(root, kDmi);
  return system ? system : read(root, kDeviceTree);
}

std::optional<std::string> read_host_name(const std::string& root) {
  constexpr std::pair<const char*, const char*> kFiles[] = {{"proc", "/sys/kernel/hostname"},
                                                            {"etc", "/hostname"}};
  for (const auto& [folder, file] : kFiles) {
    const std::string beside = folder_beside(root, folder);
    if (auto name = beside.empty() ? std::nullopt : read_text(beside + file)) return name;
  }
  return std::nullopt;
}

}  // namespace zymdb::collect
