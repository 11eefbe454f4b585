// The SMBIOS structures that the collector knows, read out of their tables.
#ifndef ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_DECODE_H
#define ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_DECODE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "collect/sources/pci/pci_function.h"
#include "collect/sources/smbios/smbios.h"

namespace zymdb::collect {

// A processor's cache (type 7).
struct SmbiosCache {
  std::optional<uint32_t> max_size;   // KB
  std::optional<uint32_t> installed;  // KB
  std::optional<uint8_t> type;        // 3: instruction, 4: data, 5: unified
  std::optional<uint16_t> configuration;
};

// A processor socket (type 4). Codes are those of SMBIOS.
struct SmbiosProcessor {
  std::optional<std::string> socket;
  std::optional<uint8_t> type;
  std::optional<uint8_t> status;  // bit 6: populated; bits 0 to 2: state
  std::optional<uint8_t> upgrade;

  // Unknown in an empty socket.
  std::optional<uint64_t> id;
  std::optional<uint16_t> family;
  std::optional<std::string> manufacturer;
  std::optional<std::string> version;
  std::optional<uint8_t> voltage;          // as SMBIOS codes it
  std::optional<uint16_t> external_clock;  // MHz
  std::optional<uint16_t> max_speed;       // MHz
  std::optional<uint16_t> current_speed;   // MHz
  std::optional<std::string> serial_number;
  std::optional<std::string> asset_tag;
  std::optional<std::string> part_number;
  std::optional<uint16_t> core_count;
  std::optional<uint16_t> cores_enabled;
  std::optional<uint16_t> thread_count;
  std::optional<uint16_t> characteristics;
  std::array<SmbiosCache, 3> caches;  // levels 1 to 3

  bool populated() const { return (status.value_or(0) & 0x40U) != 0; }
};

// A slot that takes cards or drives (type 9).
struct SmbiosSlot {
  std::optional<std::string> designation;
  std::optional<uint8_t> type;
  std::optional<uint8_t> data_bus_width;  // the code
  uint16_t id = 0;
  std::optional<PciAddress> address;  // of the device in it or the port above it; nothing when not stated
  uint8_t usage = 0;                  // current usage, the code

  // As the firmware has it, which may be wrong: available, or unavailable with the socket that it hangs on.
  bool is_said_to_be_empty() const { return usage == 3 || usage == 5; }
};

// A device on the system board (type 41).
struct SmbiosOnboardDevice {
  std::optional<std::string> designation;
  std::optional<PciAddress> address;
};

// The firmware of the system (type 0). Releases are unknown where SMBIOS has no number for them.
struct SmbiosFirmware {
  std::optional<std::string> vendor;
  std::optional<std::string> version;
  std::optional<std::string> release_date;
  std::optional<uint8_t> major_release;
  std::optional<uint8_t> minor_release;
  std::optional<uint8_t> controller_major_release;  // of the embedded controller's firmware
  std::optional<uint8_t> controller_minor_release;
};

std::vector<SmbiosFirmware> decode_firmware(const SmbiosTables& tables);
std::vector<SmbiosProcessor> decode_processors(const SmbiosTables& tables);
std::vector<SmbiosSlot> decode_slots(const SmbiosTables& tables);
std::vector<SmbiosOnboardDevice> decode_onboard_devices(const SmbiosTables& tables);

}  // namespace zymdb::collect

#endif
