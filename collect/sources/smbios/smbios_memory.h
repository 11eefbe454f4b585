// Memory devices (SMBIOS type 17) and the arrays that hold them (type 16).
#ifndef ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_MEMORY_H
#define ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_MEMORY_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "collect/sources/smbios/smbios.h"

namespace zymdb::collect {

// What only a persistent module has, in bytes.
struct SmbiosPersistentMemory {
  std::optional<uint64_t> capacity;      // all of it
  std::optional<uint64_t> non_volatile;  // the part that is persistent
  std::optional<uint64_t> volatile_part;
  std::optional<std::string> firmware_version;
};

// A position for a module. Codes are those of SMBIOS.
struct SmbiosMemoryDevice {
  std::optional<uint16_t> array;  // handle of the array, where that is described
  std::optional<std::string> locator;
  std::optional<std::string> bank;
  std::optional<uint8_t> form_factor;
  std::optional<uint32_t> size;  // MiB; 0: no module; nothing: not known, or less than one

  // Unknown in an empty position.
  std::optional<uint16_t> total_width;  // bits
  std::optional<uint16_t> data_width;   // bits
  std::optional<uint8_t> type;
  std::optional<uint16_t> type_detail;
  std::optional<uint32_t> max_speed;         // MT/s
  std::optional<uint32_t> configured_speed;  // MT/s
  std::optional<std::string> manufacturer;
  std::optional<std::string> serial_number;
  std::optional<std::string> asset_tag;
  std::optional<std::string> part_number;
  std::optional<uint8_t> attributes;  // the low four bits are the rank
  SmbiosPersistentMemory persistent;

  bool populated() const { return size != 0U; }
};

// All memory devices, in the order of the table.
//
// A module is persistent when its technology says so (NVDIMM or persistent memory), or, where the table has
// no technology, when the type detail's non-volatile bit does.
std::vector<SmbiosMemoryDevice> decode_memory(const SmbiosTables& tables);

}  // namespace zymdb::collect

#endif
