// Manufacturing dates, compared with the calendar of weeks: week 1 of a year is the one that holds 4 January.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "zymdb_storage.h"

namespace {

using namespace std::chrono;

class ManufacturingDate : public testing::Test {
 protected:
  ManufacturingDate() { set_zone("UTC0"); }
  ~ManufacturingDate() override { unsetenv("TZ"); }

  static void set_zone(const char* zone) { setenv("TZ", zone, 1); }

  static std::string of(const char* code) {
    char text[16] = "untouched";
    vpd_manuf_date_to_ymd(code, text, sizeof text);
    return text;
  }
};

std::string text(sys_days day) {
  const year_month_day date(day);
  char text[32];
  std::snprintf(text, sizeof text, "%d-%02u-%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return text;
}

sys_days first_monday(int of_year) {
  const sys_days fourth = year(of_year) / January / 4;
  return fourth - (weekday(fourth) - Monday);
}

int weeks_of(int of_year) {
  return static_cast<int>((first_monday(of_year + 1) - first_monday(of_year)) / days(7));
}

// The Monday that a code's week and year stand for.
sys_days expected_day(int week, int two_digits) {
  int of_year = two_digits >= 96 ? 1900 + two_digits : 2000 + two_digits;
  int last = weeks_of(of_year);
  if (of_year > 2027) {
    of_year = 2027;
    week = 47;
  }
  if (of_year == 2027) last = 47;
  return first_monday(of_year) + days(7 * (std::clamp(week, 1, last) - 1));
}

TEST_F(ManufacturingDate, OfEveryCodeIsThatOfTheCalendarInEveryZone) {
  // Noon in UTC is still the same day 12 hours to the west, and the next day 14 hours to the east.
  const std::pair<const char*, int> zones[] = {{"UTC0", 0}, {"WEST12", 0}, {"EAST-14", 1}};
  for (const auto& [zone, days_later] : zones) {
    set_zone(zone);
    for (int week = 0; week <= 99; ++week)
      for (int two_digits = 0; two_digits <= 99; ++two_digits) {
        char code[8];
        std::snprintf(code, sizeof code, "%02d%02d", week, two_digits);
        ASSERT_EQ(of(code), text(expected_day(week, two_digits) + days(days_later))) << zone << " " << code;
      }
  }
}

TEST_F(ManufacturingDate, OfACodeIsKnown) {
  const std::pair<const char*, const char*> cases[] = {
      {"0116", "2016-01-04"}, {"6099", "1999-12-27"}, {"0130", "2027-11-22"}, {"0127", "2027-01-04"},
      {"9927", "2027-11-22"}, {"0196", "1996-01-01"}, {"5320", "2020-12-28"}, {"5321", "2021-12-27"},
  };
  for (const auto& [code, date] : cases) EXPECT_EQ(of(code), date) << code;
}

TEST_F(ManufacturingDate, OfAnErasedFieldIsTheFirst) {
  set_zone("WEST12");
  EXPECT_EQ(of("\xFF\xFF\xFF\xFF"), "1996-01-01");
}

TEST_F(ManufacturingDate, OfACodeWithoutNumbersTakesZeroForThem) {
  for (const char* code : {"", "week", "\xFF\xFF\xFF", "  ", "-", "00", "0", "01xx", "-100", " 1 0", "01-1"})
    EXPECT_EQ(of(code), "2000-01-03") << code;
  EXPECT_EQ(of("5"), "2000-01-31");
  EXPECT_EQ(of("+2 16"), "2016-01-11");
}

TEST_F(ManufacturingDate, IsReadFromFourBytesThatNeedNotEndInNul) {
  const std::vector<char> code = {'0', '1', '1', '6'};
  EXPECT_EQ(of(code.data()), "2016-01-04");
  const std::vector<char> one_digit = {'7', '\0'};
  EXPECT_EQ(of(one_digit.data()), "2000-02-14");
}

TEST_F(ManufacturingDate, IsCutToTheOutput) {
  char text[16] = "untouched";
  vpd_manuf_date_to_ymd("0116", text, 0);
  EXPECT_STREQ(text, "untouched");
  vpd_manuf_date_to_ymd("0116", text, 5);
  EXPECT_STREQ(text, "2016");
  EXPECT_EQ(text[5], 'c');
  vpd_manuf_date_to_ymd(nullptr, text, sizeof text);
  EXPECT_STREQ(text, "2016");
  vpd_manuf_date_to_ymd("0116", nullptr, 16);
}

TEST_F(ManufacturingDate, IsMinutesSince1996) {
  const std::tuple<unsigned, const char*, const char*> cases[] = {
      {0, "UTC0", "1996-01-01"},           {0, "WEST1", "1995-12-31"},
      {24 * 60 - 1, "UTC0", "1996-01-01"}, {24 * 60, "UTC0", "1996-01-02"},
      {16773840, "UTC0", "2027-11-22"},    {0xFFFFFF, "UTC0", "2027-11-24"},
      {0xFFFFFF, "EAST-14", "2027-11-25"},
  };
  for (const auto& [minutes, zone, date] : cases) {
    set_zone(zone);
    const unsigned char bytes[] = {static_cast<unsigned char>(minutes),
                                   static_cast<unsigned char>(minutes >> 8),
                                   static_cast<unsigned char>(minutes >> 16)};
    int year = 0;
    int month = 0;
    int day = 0;
    get_manuf_date(bytes, &year, &month, &day);
    char text[32];
    std::snprintf(text, sizeof text, "%d-%02d-%02d", year, month, day);
    EXPECT_STREQ(text, date) << minutes << " " << zone;
  }
}

TEST_F(ManufacturingDate, OfNoBytesLeavesTheOutputs) {
  int year = 1;
  int month = 2;
  int day = 3;
  get_manuf_date(nullptr, &year, &month, &day);
  EXPECT_EQ(year * 100 + month * 10 + day, 123);
}

}  // namespace
