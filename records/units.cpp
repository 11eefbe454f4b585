#include "records/units.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace zymdb::records {
namespace {

std::string shortest(double number) {
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  return {text.data(), end};
}

template <class Number>
std::string fraction(const BaseUnit& unit, Number amount) {
  return shortest(static_cast<double>(amount) * static_cast<double>(unit.multiplier) /
                  static_cast<double>(unit.divisor));
}

}  // namespace

const BaseUnit* base_unit(std::string_view unit) {
  const auto* const found = std::ranges::find(kBaseUnits, unit, &BaseUnit::unit);
  return found == std::end(kBaseUnits) ? nullptr : found;
}

// Whole numbers keep all their digits, as long as there is room for them.
std::string in_base_units(const BaseUnit& unit, uint64_t amount) {
  uint64_t product = 0;
  if (__builtin_mul_overflow(amount, unit.multiplier, &product) || product % unit.divisor != 0)
    return fraction(unit, amount);
  return std::to_string(product / unit.divisor);
}

std::string in_base_units(const BaseUnit& unit, int64_t amount) {
  if (amount >= 0) return in_base_units(unit, static_cast<uint64_t>(amount));
  return unit.multiplier == unit.divisor ? std::to_string(amount) : fraction(unit, amount);
}

}  // namespace zymdb::records
