// What the property database says about the bays of the backplanes.
#ifndef ZYMDB_SRC_STORAGE_DRIVE_BAYS_H
#define ZYMDB_SRC_STORAGE_DRIVE_BAYS_H

#include <array>
#include <cstdint>
#include <span>

#include "zymdb_storage.h"

namespace zymdb {

enum class BayKind { kEdsff, kNvme };  // NVMe includes EDSFF

// Indices of bays (their numbers less 1, below 64), in the order of the properties.
class DriveBays {
 public:
  std::span<const uint8_t> indices() const { return {indices_.data(), count_}; }
  bool contains(uint16_t index) const;

  void add(uint8_t index);
  void clear() { count_ = 0; }

 private:
  std::array<uint8_t, 64> indices_;
  size_t count_ = 0;
};

// Reads the bays of a kind. Returns ZYM_DB_STATUS_NO_DB without a property database, or a status of the
// client's query or step, and then no bays.
int get_u2_nvme_drive_bays(BayKind kind, DriveBays& bays);

// The form factor of a backplane's bay.
_AimDiskFormFactor bay_form_factor(uint16_t bay);

}  // namespace zymdb

#endif
