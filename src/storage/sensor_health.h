// The health that sensors report, by the slot of the sensor.
#ifndef ZYMDB_SRC_STORAGE_SENSOR_HEALTH_H
#define ZYMDB_SRC_STORAGE_SENSOR_HEALTH_H

#include <cstdint>

#include "controller/database_client.h"
#include "db/growing_list.h"

namespace zymdb {

// Sensor slots of drives. A drive in another place has none.
constexpr uint16_t kNoSensor = 65535;
constexpr uint16_t bay_sensor(uint16_t bay) {
  return bay;
}
constexpr uint16_t m2_sensor(uint16_t bay) {
  return static_cast<uint16_t>(bay + 0x80);
}
constexpr uint16_t sensor_of_7mm(uint16_t bay) {
  return static_cast<uint16_t>(bay + 0xC0);
}

constexpr uint8_t kNoHealth = 2;

class SensorHealth {
 public:
  // Without sensors, or when they cannot be read, nothing has a health.
  explicit SensorHealth(_zym_db_handle_t* handle);

  uint8_t of(uint16_t sensor) const;

 private:
  struct Sensor {
    uint16_t slot;
    uint8_t health;
  };
  GrowingList<Sensor> sensors_;
};

}  // namespace zymdb

#endif
