// Units as base units.
#include "records/units.h"

#include <gtest/gtest.h>

#include <limits>

namespace zymdb::records {
namespace {

struct Amount {
  const char* unit;
  uint64_t number;
  const char* text;
};

constexpr Amount kAmounts[] = {
    {"MiB", 65536, "68719476736"},
    {"KiB", 48, "49152"},
    {"bytes", 1500, "1500"},
    {"bits", 72, "9"},
    {"bits", 4, "0.5"},
    {"Mbit/s", 25000, "3125000000"},
    {"bit/s", 1, "0.125"},
    {"MHz", 3400, "3400000000"},
    {"MT/s", 3200, "3200000000"},
    {"%", 37, "0.37"},
    {"%", 100, "1"},
    {"°C", 41, "41"},
    {"W", 300, "300"},
    {"s", 1767225600, "1767225600"},
    {"bytes", std::numeric_limits<uint64_t>::max(), "18446744073709551615"},
    // More than there is room for.
    {"MiB", std::numeric_limits<uint64_t>::max(), "1.9342813113834067e+25"},
};

TEST(BaseUnit, IsWhatAnAmountIsWrittenIn) {
  for (const auto& [unit, number, text] : kAmounts) {
    const BaseUnit* const base = base_unit(unit);
    ASSERT_NE(base, nullptr) << unit;
    EXPECT_EQ(in_base_units(*base, number), text) << number << " " << unit;
  }
}

TEST(BaseUnit, KeepsTheSign) {
  EXPECT_EQ(in_base_units(*base_unit("°C"), int64_t{-5}), "-5");
  EXPECT_EQ(in_base_units(*base_unit("°C"), int64_t{5}), "5");
  EXPECT_EQ(in_base_units(*base_unit("%"), int64_t{-50}), "-0.5");
}

TEST(BaseUnit, OfAnUnknownUnitIsNone) {
  EXPECT_EQ(base_unit("furlongs"), nullptr);
  EXPECT_EQ(base_unit(""), nullptr);
}

}  // namespace
}  // namespace zymdb::records
