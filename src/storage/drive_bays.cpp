#include "storage/drive_bays.h"

#include <algorithm>
#include <cstdlib>

#include "controller/property_database.h"
#include "storage/properties.h"

namespace zymdb {
namespace {

constexpr uint8_t kNvmeBay = 3;
constexpr uint8_t kEdsffBay = 8;

// Where a bay's number, of one or two digits, stands in its property's path.
constexpr size_t kNumber = 22;
constexpr size_t kMostDigits = 2;

uint8_t index_of_bay(const PropertyName& name) {
  char digits[kMostDigits + 1] = {name[kNumber], name[kNumber + 1]};
  if (digits[1] == '/') digits[1] = '\0';
  return static_cast<uint8_t>(std::strtol(digits, nullptr, 10) - 1);
}

struct Backplane {
  uint32_t last_bay;
  _AimDiskFormFactor form_factor;
};

class Backplanes {
 public:
  Backplanes() {
    for (int digit = 1; digit <= 8; ++digit) {
      unsigned int last_bay = 0;
      unsigned char type = 0;
      const Filter<64> bays("/dc/votc/dm/planar/0/bp/%d/bay_no_e", digit);
      const Filter<64> kind("/dc/votc/dm/planar/0/bp/%d/type", digit);
      // A backplane that states no type is none.
      if (propdb_get_dword(bays, &last_bay) == 0 && propdb_get_byte(kind, &type) == 0)
        backplanes_[count_++] = {last_bay, ZYMDB_FORM_FACTOR_DRIVE_BAY};
    }
  }

  _AimDiskFormFactor form_factor_of(uint16_t bay) const {
    for (const Backplane& backplane : std::span(backplanes_).first(count_))
      if (backplane.last_bay >= bay) return backplane.form_factor;
    return ZYMDB_FORM_FACTOR_DRIVE_BAY;
  }

 private:
  std::array<Backplane, 8> backplanes_;
  size_t count_ = 0;
};

}  // namespace

bool DriveBays::contains(uint16_t index) const {
  const auto known = indices();
  return std::ranges::find(known, index) != known.end();
}

void DriveBays::add(uint8_t index) {
  if (count_ < indices_.size()) indices_[count_++] = index;
}

int get_u2_nvme_drive_bays(BayKind kind, DriveBays& bays) {
  const PropertyConnection properties;
  if (!properties) return ZYM_DB_STATUS_NO_DB;

  PropertyQuery query(properties, "propName like \"%hdd%type\"");
  int status = query.status();
  if (status != ZYM_DB_STATUS_OK) return status;
  while ((status = query.step()) == ZYM_DB_STATUS_ROW) {
    const uint8_t type = query.value();
    if (type != kEdsffBay && (kind == BayKind::kEdsff || type != kNvmeBay)) continue;
    PropertyName name = {};
    query.read_name(name);
    if (const uint8_t index = index_of_bay(name); index < 64) bays.add(index);
  }
  if (status == ZYM_DB_STATUS_DONE) return ZYM_DB_STATUS_OK;
  bays.clear();
  return status;
}

_AimDiskFormFactor bay_form_factor(uint16_t bay) {
  // Backplanes are read once: what is plugged in later is seen when the process starts anew.
  static const Backplanes backplanes;
  return backplanes.form_factor_of(bay);
}

}  // namespace zymdb
