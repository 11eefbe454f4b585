#include "collect/sources/sysfs/sysfs_firmware.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

#include "collect/sources/sysfs/sysfs_ports.h"
#include "common/source_access.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kVideoBios = "Video BIOS:";

std::vector<fs::path> entries_of(const fs::path& folder) {
  return folder_entries(folder).value_or(std::vector<fs::path>{});
}

std::optional<std::string> read_version(const fs::path& file) {
  const auto content = read_attribute(file.string());
  return content ? known_text(*content) : std::nullopt;
}

// The value on the line of a name in a driver's list of them.
std::optional<std::string> find_value(std::string_view text, std::string_view name) {
  const size_t start = text.find(name);
  if (start == std::string_view::npos) return std::nullopt;
  text.remove_prefix(start + name.size());
  return known_text(text.substr(0, text.find('\n')));
}

// "14.0.390.1" of "14.0.390.1, sli-4:2:b", "9.08.02" of "9.08.02 (d0d5)".
std::optional<std::string> version_part(const std::optional<std::string>& text) {
  return text ? known_text(std::string_view(*text).substr(0, text->find_first_of(",("))) : std::nullopt;
}

// "12.8.340.8" of "Emulex LPe32002 FV12.8.340.8 DV…", "8.07.00" of "QLE2562 FW:v8.07.00 DVR:…".
std::optional<std::string> version_in_name(std::string_view name) {
  for (const std::string_view mark : {" FV", " FW:v"}) {
    const size_t at = name.find(mark);
    if (at == std::string_view::npos) continue;
    const std::string_view rest = name.substr(at + mark.size());
    return known_text(rest.substr(0, rest.find(' ')));
  }
  return std::nullopt;
}

class FirmwareReader {
 public:
  FirmwareReader(fs::path root, const FirmwareDrivers& drivers) : root_(std::move(root)), drivers_(drivers) {}

  std::vector<FirmwareComponent> read() {
    read_class("nvme", FirmwareKind::kNvme, "firmware_rev");
    read_class("infiniband", FirmwareKind::kFabric, "fw_ver");
    for (const fs::path& folder : entries_of(root_ / "class/fc_host")) read_fibre_host(folder);
    if (drivers_.network) read_interfaces();
    for (const fs::path& folder : entries_of(root_ / "bus/pci/devices")) read_function(folder);
    for (const fs::path& folder : entries_of(drivers_.nvidia_folder)) read_nvidia_card(folder);
    return std::move(components_);
  }

 private:
  // A function with several interfaces or devices has but one firmware for them.
  void add(const std::optional<PciAddress>& function, FirmwareKind kind,
           const std::optional<std::string>& version) {
    const bool is_known = std::ranges::any_of(components_, [&](const FirmwareComponent& component) {
      return component.function == function && component.kind == kind;
    });
    if (function && version && !is_known) components_.push_back({*function, kind, version});
  }

  // Asks for a version. A function that does not answer is a component that is silent.
  template <class Read>
  void ask_for(const std::optional<PciAddress>& function, FirmwareKind kind, Read read) {
    try {
      add(function, kind, read());
    } catch (const NoAnswer& problem) {
      silent_.add(problem);
      if (function) components_.push_back({*function, kind, std::nullopt, problem.what()});
    }
  }

  void read_class(const char* name, FirmwareKind kind, const char* attribute) {
    for (const fs::path& folder : entries_of(root_ / "class" / name))
      ask_for(function_of(folder), kind, [&] { return read_version(folder / attribute); });
  }

  // What the drivers of the two makers publish, else what the host calls itself in the fabric.
  void read_fibre_host(const fs::path& folder) {
    const fs::path host = root_ / "class/scsi_host" / folder.filename();
    auto version = version_part(read_version(host / "fwrev"));
    if (!version) version = version_part(read_version(host / "fw_version"));
    const auto name = read_version(folder / "symbolic_name");
    if (!version && name) version = version_in_name(*name);
    add(function_of(folder), FirmwareKind::kFibreChannel, version);
  }

  void read_interfaces() {
    for (const fs::path& folder : entries_of(root_ / "class/net")) {
      if (const auto function = function_of(folder))
        ask_for(function, FirmwareKind::kNetwork,
                [&] { return drivers_.network(folder.filename().string()); });
    }
  }

  void read_function(const fs::path& folder) {
    const auto function = parse_pci_address(folder.filename().string());
    add(function, FirmwareKind::kVideo, read_version(folder / "vbios_version"));
    if (function && is_there(folder / "rom"))
      components_.push_back({*function, FirmwareKind::kOptionRom, std::nullopt});
  }

  void read_nvidia_card(const fs::path& folder) {
    const auto information = read_attribute((folder / "information").string());
    if (information)
      add(parse_pci_address(folder.filename().string()), FirmwareKind::kVideo,
          find_value(*information, kVideoBios));
  }

  fs::path root_;
  const FirmwareDrivers& drivers_;
  std::vector<FirmwareComponent> components_;
  SilentDevices silent_;
};

}  // namespace

std::vector<FirmwareComponent> read_sysfs_firmware(const std::string& root, const FirmwareDrivers& drivers) {
  return FirmwareReader(root, drivers).read();
}

}  // namespace zymdb::collect
