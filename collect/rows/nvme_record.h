// Drives as the library's own operations take them, and what all rows of drives say in its words.
#ifndef ZYMDB_COLLECT_ROWS_NVME_RECORD_H
#define ZYMDB_COLLECT_ROWS_NVME_RECORD_H

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

#include "collect/model/machine.h"
#include "collect/sources/sysfs/drive.h"
#include "zymdb_storage.h"

namespace zymdb::collect {

// A slot or bay, by its number; on the board there is none.
struct DrivePlace {
  Location location = ZYMDB_LOCATION_BOARD;
  std::optional<uint16_t> number;

  auto operator<=>(const DrivePlace&) const = default;
};

struct NvmeRecord {
  _ZYMDB_AimDisk drive;
  bool has_health;
};

NvmeRecord nvme_record(const Drive& drive, FunctionKey function, const DrivePlace& place);

// Which values of a drive's health are valid, where it tells its health: all.
inline constexpr uint16_t kAllHealth = 0x0F;

std::string capacity_text(uint64_t bytes);

// The maker's own word, else what the model tells, with or without a maker's name in front.
std::optional<std::string> maker_of(const Drive& drive);

}  // namespace zymdb::collect

#endif
