// Whatever text a drive gives for its model or its manufacturing date: no byte beside it is read, a model is
// cut to an end of itself, a date is a Monday that an FRU image can state.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "checks.h"
#include "zymdb_storage.h"

namespace {

using namespace std::chrono;
using namespace zymdb::fuzz;

// A copy of its own size, so that a read beyond it is noticed.
std::unique_ptr<char[]> copy_of(const std::string& bytes) {
  auto copy = std::make_unique<char[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), copy.get());
  return copy;
}

void check_model(const std::string& text) {
  const auto model = copy_of(text + '\0');
  const char* const maker = driveModel2Manufacture(model.get());
  require(maker != nullptr && std::strlen(maker) < sizeof(_ZYMDB_AimDisk::Manufacture), "no maker", text);
  const std::string trimmed = trim_drive_model(model.get());
  require(text == model.get(), "a model is changed", text);
  require(text.ends_with(trimmed), "a model is not cut to its end", trimmed);
}

void check_date(const std::string& text) {
  const auto code = copy_of(text + '\0');
  char date[16];
  vpd_manuf_date_to_ymd(code.get(), date, sizeof date);
  require_ended(date);
  int of_year = 0;
  unsigned of_month = 0;
  unsigned of_day = 0;
  require(std::sscanf(date, "%4d-%2u-%2u", &of_year, &of_month, &of_day) == 3, "no date", date);
  const year_month_day read = year(of_year) / month(of_month) / day(of_day);
  require(read.ok() && weekday(read) == Monday, "no Monday", date);
  require(read >= 1996y / January / 1 && read <= 2027y / November / 22, "no date of an FRU image", date);
  char cut[5];
  vpd_manuf_date_to_ymd(code.get(), cut, sizeof cut);
  require(std::string(date, 4) == cut, "a date that is cut otherwise", cut);
}

// Four digits need no end.
void check_digits(const std::string& text) {
  const std::string digits = text.substr(0, 4);
  if (digits.size() < 4 || digits.find_first_not_of("0123456789") != digits.npos) return;
  char with_end[16];
  char without[16];
  vpd_manuf_date_to_ymd(digits.c_str(), with_end, sizeof with_end);
  vpd_manuf_date_to_ymd(copy_of(digits).get(), without, sizeof without);
  require(std::strcmp(with_end, without) == 0, "the end of a code changes its date", without);
}

void check_minutes(const std::string& text) {
  if (text.size() < 3) return;
  const auto minutes = copy_of(text.substr(0, 3));
  int of_year = 0;
  int of_month = 0;
  int of_day = 0;
  get_manuf_date(reinterpret_cast<const unsigned char*>(minutes.get()), &of_year, &of_month, &of_day);
  const auto byte = [&](size_t place) { return static_cast<unsigned char>(minutes[place]); };
  const sys_days expected =
      sys_days(1996y / January / 1) + days((byte(0) | byte(1) << 8 | byte(2) << 16) / (24 * 60));
  const year_month_day day = year(of_year) / of_month / of_day;
  require(day.ok() && sys_days(day) == expected, "minutes that give another day");
}

// A field of fixed length, which need not end.
void check_field(const std::string& bytes) {
  const auto field = copy_of(bytes);
  rm_invalid_chars(field.get(), static_cast<unsigned>(bytes.size()));
  const std::string cleaned(field.get(), strnlen(field.get(), bytes.size()));
  require(bytes.starts_with(cleaned), "a field is changed", cleaned);
  const auto is_control = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
  require(std::none_of(cleaned.begin(), cleaned.end(), is_control), "a control character stays", cleaned);
  require(cleaned.find("  ", 1) == cleaned.npos && (cleaned.size() < 2 || !cleaned.ends_with(' ')),
          "a space stays at an end", cleaned);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  setenv("TZ", "UTC0", 1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  check_field(bytes);
  check_minutes(bytes);
  const std::string text = bytes.c_str();
  check_model(text);
  check_date(text);
  check_digits(text);
  return 0;
}
