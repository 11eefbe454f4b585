// The machine as a whole, as SMBIOS tells it: the system, its board and its firmware.
#ifndef ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_SYSTEM_H
#define ZYMDB_COLLECT_SOURCES_SMBIOS_SMBIOS_SYSTEM_H

#include <optional>
#include <string>
#include <vector>

#include "collect/sources/smbios/smbios.h"

namespace zymdb::collect {

struct SmbiosSystem {
  std::optional<std::string> manufacturer;  // type 1
  std::optional<std::string> model;
  std::optional<std::string> version;
  std::optional<std::string> serial_number;
  std::optional<std::string> sku;
  std::optional<std::string> family;
  std::optional<std::string> uuid;                // "00112233-4455-6677-8899-aabbccddeeff"
  std::optional<std::string> board_manufacturer;  // type 2: of the first board
  std::optional<std::string> board_model;
  std::optional<std::string> board_version;
  std::optional<std::string> board_serial_number;
  std::optional<std::string> firmware_vendor;  // type 0
  std::optional<std::string> firmware_version;
  std::optional<std::string> firmware_date;
};

// One; none where the tables have neither a system, a board nor firmware.
std::vector<SmbiosSystem> decode_system(const SmbiosTables& tables);

}  // namespace zymdb::collect

#endif
