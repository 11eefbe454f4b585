// Firmware that PCI functions carry, as a sysfs tree and the drivers of the running machine tell.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_FIRMWARE_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_FIRMWARE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {

enum class FirmwareKind : uint8_t { kNvme, kNetwork, kFabric, kVideo, kOptionRom, kFibreChannel };

struct FirmwareComponent {
  PciAddress function;
  FirmwareKind kind;
  std::optional<std::string> version;       // known_text's; an option ROM's is not told
  std::optional<std::string> silence = {};  // why the function does not tell
};

// Who is asked beside sysfs; nobody where it is not the running machine's.
struct FirmwareDrivers {
  std::function<std::optional<std::string>(const std::string& interface)> network;  // may be empty
  std::string nvidia_folder;  // a folder per card with its "information"; may be empty
};

// One component per function and kind, at most:
//  - NVMe drives (class/nvme), InfiniBand and RDMA devices (class/infiniband)
//  - Fibre Channel hosts (class/fc_host), as their drivers or the names that they bear tell
//  - network interfaces, when their drivers can be asked
//  - graphics cards, of which the driver keeps the version of the video BIOS
//  - option ROMs, where a function has room for one
// Where nothing tells a version there is no component, but for option ROMs and for what does not answer in
// time; where several do not, that is a NoAnswer.
std::vector<FirmwareComponent> read_sysfs_firmware(const std::string& root, const FirmwareDrivers& drivers);

}  // namespace zymdb::collect

#endif
