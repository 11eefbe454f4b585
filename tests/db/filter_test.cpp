// Filters beside what printf makes of the same.
#include "db/filter.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstdio>

namespace {

template <size_t N>
[[gnu::format(printf, 1, 2)]] void expect_what_printf_writes(const char* format, ...) {
  char expected[N] = {};
  char text[N] = {};
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(expected, N, format, arguments);
  va_end(arguments);
  va_start(arguments, format);
  EXPECT_EQ(zymdb::write_filter(text, N, format, arguments), length) << format;
  va_end(arguments);
  EXPECT_STREQ(text, expected) << format;
}

TEST(FilterTest, HoldsNumbersAndTexts) {
  expect_what_printf_writes<64>("Location=%d AND SlotNo=%d", 3, -17);
  expect_what_printf_writes<64>("%d %d %u", INT_MIN, INT_MAX, UINT_MAX);
  expect_what_printf_writes<64>("Name=\"%s\" AND Key=%u", "a name", 0U);
  expect_what_printf_writes<64>("%s%s", "", "\xC3\xA4%d");
  expect_what_printf_writes<64>("no value");
  expect_what_printf_writes<64>("%s", "");
}

TEST(FilterTest, HoldsWhatElsePrintfKnows) {
  expect_what_printf_writes<64>("Key=%d AND Id=0x%02X AND Name=%s", 1, 0xAU, "x");
  expect_what_printf_writes<64>("Name like '%%%s%%' AND Key=%5d", "x", 3);
  expect_what_printf_writes<8>("%d %x", 12345, 0xABCDEFU);
}

TEST(FilterTest, IsCutWhereItsRoomEnds) {
  for (const char* text : {"", "1", "12", "123", "1234", "12345", "12345678901234567890"}) {
    expect_what_printf_writes<5>("%s", text);
    expect_what_printf_writes<5>("=%s", text);
    expect_what_printf_writes<5>("%s AND %s", text, text);
  }
  expect_what_printf_writes<5>("%d%d", 123, 4567);
  expect_what_printf_writes<1>("%d", 1);
}

TEST(FilterTest, TakesNoTextAsPrintfDoes) {
  const char* volatile none = nullptr;
  expect_what_printf_writes<16>("Name='%s'", static_cast<const char*>(none));
}

TEST(FilterTest, KnowsWhetherItWasCut) {
  EXPECT_FALSE(zymdb::Filter<5>("%d", 1234).is_cut());
  EXPECT_TRUE(zymdb::Filter<5>("%d", 12345).is_cut());
  EXPECT_STREQ(zymdb::Filter<5>("%d", 12345), "1234");
}

}  // namespace
