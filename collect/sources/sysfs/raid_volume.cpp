#include "collect/sources/sysfs/raid_volume.h"

#include <algorithm>
#include <string>

#include "collect/sources/sysfs/sysfs_ports.h"
#include "common/pci_address.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

// What the drivers of hpsa, smartpqi and aacraid say of a disk that is no volume.
constexpr std::string_view kNoLevels[] = {"N/A", "Hidden"};

constexpr std::string_view kMegaraid = "megaraid_sas";
constexpr uint64_t kFirstVolumeChannel = 2;  // of megaraid_sas; disks are on those before

// These show nothing but volumes.
constexpr std::string_view kVolumeDrivers[] = {"megaraid_mbox", "megaraid_legacy", "3w-xxxx",
                                               "3w-9xxx",       "3w-sas",          "ips"};

// How models of volumes start, in lower case.
constexpr std::string_view kVolumeModels[] = {
    "logical volume", "logical drive", "virtual disk", "perc ", "mr9", "megaraid", "serveraid", "raid "};

bool is_among(std::string_view text, const auto& texts) {
  return std::ranges::find(texts, text) != std::end(texts);
}

// The kernel's driver of the PCI function that a folder lies in, else the name that the SCSI host has for it.
std::string driver_of(const fs::path& device) {
  fs::path folder = device;
  fs::path host;
  while (folder.has_relative_path() && !parse_pci_address(folder.filename().string())) {
    if (folder.filename().string().starts_with("host")) host = folder;
    folder = folder.parent_path();
  }
  if (const auto driver = link_target(folder / "driver")) return driver->filename().string();
  return read_word(host / "scsi_host" / host.filename() / "proc_name").value_or("");
}

// The second number of "0:2:5:0".
uint64_t channel_of(const fs::path& device) {
  const std::string name = device.filename().string();
  const size_t colon = name.find(':');
  return colon == std::string::npos ? 0
                                    : leading_number(std::string_view(name).substr(colon + 1)).value_or(0);
}

}  // namespace

bool is_raid_volume(const fs::path& device, std::string_view model) {
  if (const auto level = read_word(device / "raid_level"); level && !is_among(*level, kNoLevels)) return true;
  if (is_there(device / "raid_devices")) return true;
  const std::string driver = driver_of(device);
  if (driver == kMegaraid && channel_of(device) >= kFirstVolumeChannel) return true;
  const std::string lower = lower_case(model);
  return is_among(driver, kVolumeDrivers) ||
         std::ranges::any_of(kVolumeModels, [&](std::string_view start) { return lower.starts_with(start); });
}

}  // namespace zymdb::collect
