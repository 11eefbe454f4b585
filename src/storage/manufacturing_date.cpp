#include <time.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "zymdb_storage.h"

namespace {

constexpr time_t kFruEpoch = 820454400;  // 1996-01-01 00:00 UTC
constexpr int kFirstYear = 1996;
constexpr int kLastYear = 2027;
constexpr int kLastWeekOfLastYear = 47;  // the last that 24 bits of minutes can state
constexpr int kMinutesPerWeek = 7 * 24 * 60;
constexpr int kNoon = 12 * 60;

constexpr std::array kLongYears = {1998, 2004, 2009, 2015, 2020, 2026};

int weeks_in(int year) {
  return std::ranges::find(kLongYears, year) != kLongYears.end() ? 53 : 52;
}

// A number of at most two characters, after any white space. Reads no further than it must: a code field that
// holds four digits need not end in NUL.
int read_number(const char*& code) {
  while (std::isspace(static_cast<unsigned char>(*code))) ++code;
  char digits[3] = {};
  for (int i = 0; i < 2 && code[i] != '\0'; ++i) digits[i] = code[i];
  char* end = nullptr;
  const long number = std::strtol(digits, &end, 10);
  code += end - digits;
  return static_cast<int>(number);
}

struct Week {
  int week;
  int year;
};

Week read_week(const char* code) {
  const int week = std::max(read_number(code), 1);
  const int two_digits = std::max(read_number(code), 0);
  const int year = two_digits >= 96 ? 1900 + two_digits : 2000 + two_digits;
  if (year > kLastYear) return {kLastWeekOfLastYear, kLastYear};
  if (year == kLastYear) return {std::min(week, kLastWeekOfLastYear), year};
  return {std::min(week, weeks_in(year)), year};
}

// Noon of the week's first day.
int minutes_since_epoch(Week date) {
  int weeks = date.week - 1;
  for (int year = kFirstYear; year < date.year; ++year) weeks += weeks_in(year);
  return kMinutesPerWeek * weeks + kNoon;
}

bool is_erased(const char* code) {
  return std::all_of(code, code + 4, [](char c) { return static_cast<unsigned char>(c) == 0xFF; });
}

}  // namespace

void get_manuf_date(const unsigned char* minutes3, int* year, int* month, int* day) {
  if (minutes3 == nullptr) return;
  const int minutes = minutes3[0] | minutes3[1] << 8 | minutes3[2] << 16;
  const time_t seconds = time_t{minutes} * 60 + kFruEpoch;
  tm local{};
  tzset();  // localtime_r alone would miss that the controller was given another time zone
  localtime_r(&seconds, &local);
  *year = local.tm_year + 1900;
  *month = local.tm_mon + 1;
  *day = local.tm_mday;
}

void vpd_manuf_date_to_ymd(const char* code, char* out, size_t out_len) {
  if (code == nullptr || out == nullptr) return;
  int year = kFirstYear;
  int month = 1;
  int day = 1;
  if (!is_erased(code)) {
    const int minutes = minutes_since_epoch(read_week(code));
    const unsigned char minutes3[] = {static_cast<unsigned char>(minutes),
                                      static_cast<unsigned char>(minutes >> 8),
                                      static_cast<unsigned char>(minutes >> 16)};
    get_manuf_date(minutes3, &year, &month, &day);
  }
  std::snprintf(out, out_len, "%d-%02d-%02d", year, month, day);
}
