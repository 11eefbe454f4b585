// A storage drive, as the system that drives it tells.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_DRIVE_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_DRIVE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {

// The inventory's drive type codes; it has none for the disks of virtual machines.
enum class DriveBus : uint8_t { kVirtio = 0, kSata = 1, kSas = 2, kNvme = 3 };

struct DriveHealth {
  uint8_t warning = 0;               // the drive's critical-warning bits
  uint8_t temperature = 0;           // degrees Celsius
  uint8_t remaining_life = 0;        // percent
  std::optional<uint64_t> capacity;  // bytes, over all namespaces
};

// Everything that is not told is nothing.
struct Drive {
  DriveBus bus = DriveBus::kNvme;
  std::string name;              // the system's: "nvme0", "sda"
  PciAddress function;           // its controller, which is the drive itself with NVMe
  std::optional<uint16_t> port;  // of a controller for several drives
  std::optional<std::string> model;
  std::optional<std::string> maker;
  std::optional<std::string> serial;
  std::optional<std::string> firmware;
  std::optional<std::string> unique_id;
  std::optional<uint64_t> capacity;  // bytes
  bool rotates = false;
  std::optional<DriveHealth> health;
  std::optional<std::string> silence;  // why nothing is told of it but name and function
};

// Asks an NVMe drive ("nvme0") of the running machine for its health.
using HealthReader = std::function<std::optional<DriveHealth>(const std::string& name)>;

}  // namespace zymdb::collect

#endif
