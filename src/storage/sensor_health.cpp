#include "storage/sensor_health.h"

#include <algorithm>

#include "db/query.h"

namespace zymdb {
namespace {

constexpr int kDriveHardware[] = {ZYMDB_HARDWARE_DRIVE, 21, 22};

}  // namespace

SensorHealth::SensorHealth(_zym_db_handle_t* handle) {
  Query query(
      handle, "SensorSlotMap", {"SlotNo", "HealthStatusId"},
      Filter<64>("HardwareTypeId IN (%d,%d,%d)", kDriveHardware[0], kDriveHardware[1], kDriveHardware[2]));
  while (query.step() == ZYM_DB_STATUS_ROW)
    if (!sensors_.append({query.read_or(0, kNoSensor), query.read_or(1, kNoHealth)})) return;
}

uint8_t SensorHealth::of(uint16_t sensor) const {
  // Of several rows for a sensor the last one counts.
  const auto sensors = sensors_.elements();
  const auto found =
      std::find_if(sensors.rbegin(), sensors.rend(), [&](const Sensor& each) { return each.slot == sensor; });
  return found != sensors.rend() ? found->health : kNoHealth;
}

}  // namespace zymdb
