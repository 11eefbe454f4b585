// Where a drive sits.
#ifndef ZYMDB_SRC_STORAGE_DRIVE_LOCATION_H
#define ZYMDB_SRC_STORAGE_DRIVE_LOCATION_H

#include <cstdint>

#include "db/filter.h"
#include "zymdb_db.h"

namespace zymdb {

constexpr int kNvmeDrive = 3;
constexpr int kM2Sata = 4;
constexpr int kM2Nvme = 5;
constexpr int k7mmSata = 6;
constexpr int k7mmNvme = 7;

using LocationText = Filter<16>;

// The key of the drive table, as it is stored: with a space before the number of a slot or bay only. Another
// kind of place than the four counts as a slot.
inline LocationText location_text(int kind, int number) {
  switch (kind) {
    case ZYMDB_LOCATION_BAY:
      return LocationText("Bay %d", number);
    case ZYMDB_LOCATION_M2_BAY:
      return LocationText("M.2 Bay%d", number);
    case ZYMDB_LOCATION_7MM_BAY:
      return LocationText("7MM Bay%d", number);
    default:
      return LocationText("Slot %d", number);
  }
}

}  // namespace zymdb

#endif
