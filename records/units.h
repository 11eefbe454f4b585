// The units of records as base units, for readers that want no others.
#ifndef ZYMDB_RECORDS_UNITS_H
#define ZYMDB_RECORDS_UNITS_H

#include <cstdint>
#include <string>
#include <string_view>

namespace zymdb::records {

// One `unit` is `multiplier` / `divisor` of the unit called `name`.
struct BaseUnit {
  std::string_view unit;
  std::string_view name;
  uint64_t multiplier = 1;
  uint64_t divisor = 1;
};

inline constexpr BaseUnit kBaseUnits[] = {
    {"bytes", "bytes"},
    {"KiB", "bytes", 1024},
    {"MiB", "bytes", 1024 * 1024},
    {"bits", "bytes", 1, 8},
    {"bit/s", "bytes_per_second", 1, 8},
    {"Mbit/s", "bytes_per_second", 1'000'000, 8},
    {"MHz", "hertz", 1'000'000},
    {"MT/s", "transfers_per_second", 1'000'000},
    {"W", "watts"},
    {"°C", "celsius"},
    {"%", "ratio", 1, 100},
    {"s", "seconds"},
};

// Null for a unit that no field has.
const BaseUnit* base_unit(std::string_view unit);

// So many of a unit, as a decimal number in its base unit.
std::string in_base_units(const BaseUnit& unit, uint64_t amount);
std::string in_base_units(const BaseUnit& unit, int64_t amount);

}  // namespace zymdb::records

#endif
