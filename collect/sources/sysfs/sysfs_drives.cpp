#include "collect/sources/sysfs/sysfs_drives.h"

#include <algorithm>

#include "collect/sources/sysfs/raid_volume.h"
#include "collect/sources/sysfs/sysfs_ports.h"
#include "common/source_access.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kSectorSize = 512;  // whatever the disk's own is
constexpr size_t kPageHeader = 4;      // of the page with the serial number

std::optional<std::string> read_text(const fs::path& file) {
  const auto content = read_attribute(file.string());
  return content ? known_text(*content) : std::nullopt;
}

std::optional<uint64_t> read_capacity(const fs::path& disk) {
  const auto sectors = read_number((disk / "size").string());
  if (!sectors || *sectors == 0 || *sectors > UINT64_MAX / kSectorSize) return std::nullopt;
  return *sectors * kSectorSize;
}

// The namespaces lie in the folder of their drive.
std::optional<uint64_t> namespaces_capacity(const fs::path& drive) {
  std::optional<uint64_t> total;
  for (const auto& entry : folder_entries(drive).value_or(std::vector<fs::path>{})) {
    if (!entry.filename().string().starts_with("nvme")) continue;
    if (const auto capacity = read_capacity(entry)) total = total.value_or(0) + *capacity;
  }
  return total;
}

std::optional<Drive> read_nvme_drive(const fs::path& folder, const HealthReader& health) {
  const auto function = function_of(folder);
  if (!function) return std::nullopt;
  Drive drive;
  drive.bus = DriveBus::kNvme;
  drive.name = folder.filename().string();
  drive.function = *function;
  drive.model = read_text(folder / "model");
  drive.serial = read_text(folder / "serial");
  drive.firmware = read_text(folder / "firmware_rev");
  drive.capacity = namespaces_capacity(folder);
  if (health) drive.health = health(drive.name);
  if (drive.health && drive.health->capacity) drive.capacity = drive.health->capacity;
  return drive;
}

std::optional<Drive> silent_drive(const fs::path& folder, const NoAnswer& problem) {
  const auto function = function_of(folder);
  if (!function) return std::nullopt;
  Drive drive;
  drive.name = folder.filename().string();
  drive.function = *function;
  drive.silence = problem.what();
  return drive;
}

// The number after `mark` in a part of the path: 3 of "…/ata3/…" with "ata".
std::optional<uint16_t> numbered_part(const fs::path& path, std::string_view mark) {
  for (const auto& part : path) {
    const std::string name = part.string();
    if (!name.starts_with(mark)) continue;
    const auto number = leading_number(std::string_view(name).substr(mark.size()));
    if (number && *number <= UINT16_MAX) return static_cast<uint16_t>(*number);
  }
  return std::nullopt;
}

// The third number of "0:0:5:0".
std::optional<uint16_t> target_of(const std::string& name) {
  const auto channel = name.find(':');
  const auto target = channel == std::string::npos ? channel : name.find(':', channel + 1);
  if (target == std::string::npos) return std::nullopt;
  const auto number = leading_number(std::string_view(name).substr(target + 1));
  return number && *number <= UINT16_MAX ? std::optional(static_cast<uint16_t>(*number)) : std::nullopt;
}

std::optional<std::string> read_serial(const fs::path& device) {
  const auto page = read_attribute((device / "vpd_pg80").string());
  return page && page->size() > kPageHeader ? known_text(std::string_view(*page).substr(kPageHeader))
                                            : std::nullopt;
}

bool is_servers_own(const fs::path& disk, const fs::path& device) {
  const std::string path = device.string();
  return read_number((disk / "removable").string()).value_or(0) == 0 &&
         path.find("/usb") == std::string::npos;
}

bool is_named(const fs::path& disk, std::string_view start) {
  return disk.filename().string().starts_with(start);
}

void read_scsi_disk(const fs::path& device, Drive& drive) {
  const auto vendor = read_text(device / "vendor");
  drive.port = numbered_part(device, "ata");
  drive.bus = vendor == "ATA" || drive.port ? DriveBus::kSata : DriveBus::kSas;
  // A virtual machine's controller numbers no bays.
  if (numbered_part(device, "virtio"))
    drive.bus = DriveBus::kVirtio;
  else if (!drive.port)
    drive.port = target_of(device.filename().string());
  drive.model = read_text(device / "model");
  if (drive.bus == DriveBus::kSas) drive.maker = vendor;
  drive.serial = read_serial(device);
  drive.firmware = read_text(device / "rev");
  drive.unique_id = read_text(device / "wwid");
}

// A recording may lack the link: a disk lies in the folder "block" of its device.
std::optional<fs::path> device_of_disk(const fs::path& disk) {
  if (auto device = real_path(disk / "device")) return device;
  const auto folder = real_path(disk);
  return folder ? std::optional(folder->parent_path().parent_path()) : std::nullopt;
}

std::optional<Drive> read_disk(const fs::path& disk) {
  const auto found = device_of_disk(disk);
  const fs::path device = found.value_or("");
  const bool is_scsi = is_named(disk, "sd");
  if (!found || !(is_scsi || is_named(disk, "vd")) || !is_servers_own(disk, device)) return std::nullopt;
  const auto function = function_of(device);
  if (!function) return std::nullopt;
  Drive drive;
  drive.name = disk.filename().string();
  drive.function = *function;
  drive.capacity = read_capacity(disk);
  drive.rotates = read_number((disk / "queue/rotational").string()).value_or(0) != 0;
  if (is_scsi) {
    read_scsi_disk(device, drive);
    if (is_raid_volume(device, drive.model.value_or(""))) return std::nullopt;
  } else {
    drive.bus = DriveBus::kVirtio;
    drive.serial = read_text(disk / "serial");
  }
  return drive;
}

template <class Read>
std::optional<std::vector<Drive>> read_each(const fs::path& folder, Read read) {
  const auto entries = folder_entries(folder);
  if (!entries) return std::nullopt;
  std::vector<Drive> drives;
  for (const auto& entry : *entries) {
    if (auto drive = read(entry)) drives.push_back(std::move(*drive));
  }
  return drives;
}

}  // namespace

std::optional<std::vector<Drive>> read_nvme_drives(const std::string& root, const HealthReader& health) {
  SilentDevices silent;
  return read_each(fs::path(root) / "class/nvme", [&](const fs::path& folder) {
    try {
      return read_nvme_drive(folder, health);
    } catch (const NoAnswer& problem) {
      silent.add(problem);
      return silent_drive(folder, problem);
    }
  });
}

std::optional<std::vector<Drive>> read_disks(const std::string& root) {
  return read_each(fs::path(root) / "block", read_disk);
}

bool has_block_devices(const std::string& root) {
  const auto entries = folder_entries(fs::path(root) / "block");
  return entries && !entries->empty();
}

}  // namespace zymdb::collect
