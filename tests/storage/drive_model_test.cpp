// What a drive's model tells: its maker, and where the model proper begins.
#include <gtest/gtest.h>

#include <string>

#include "zymdb_storage.h"

namespace {

TEST(DriveModel, TellsItsMakerByItsFirstCharacters) {
  const std::pair<const char*, const char*> cases[] = {
      {"AL15SEB120N", "Toshiba"},   {"CV8-CE512", "SSSTC"},       {"DC4800", "SMART"},
      {"ER2-GD480", "SSSTC"},       {"HUSMR7676BHP3Y1", "WDC"},   {"HM3T8", "WDC"},
      {"HFS480G3H2X069N", "Hynix"}, {"KHK61RSE960G", "KIOXIA"},   {"KPM6XRUG3T84", "KIOXIA"},
      {"Liteon CV3", "Liteon"},     {"liteon 123", "Liteon"},     {"LITEON", "Liteon"},
      {"MTFDDAK480TDS", "Micron"},  {"Micron_5300", "Micron"},    {"MZ7LH480HAHQ", "Samsung"},
      {"MG08ACA16TE", "Toshiba"},   {"ST16000NM001G", "Seagate"}, {"SSDSC2KB480G8", "Intel"},
      {"SSSTC ER2", "SSSTC"},       {"SVE1DM", "SMART"},          {"SFPC240", "SWISSBIT"},
      {"THNSF8400CCSE", "KIOXIA"},  {"WDS400T1R0A", "WDC"},       {"WUS4BB019D7P3E1", "WDC"},
  };
  for (const auto& [model, maker] : cases) EXPECT_STREQ(driveModel2Manufacture(model), maker) << model;
}

TEST(DriveModel, OfNoKnownMakerTellsNothing) {
  for (const char* model :
       {"",   "A",       "C",  "H",   "KH", "KP", "Lite", "M",   "MT", "Micro", "micron",
        "SS", "SSST",    "SV", "SFP", "TH", "W",  "al15", "mz7", "wd", " AL15", "INTEL SSDPE2KX",
        "HX", "Samsung", "S",  "XT"})
    EXPECT_STREQ(driveModel2Manufacture(model), "") << model;
  EXPECT_EQ(driveModel2Manufacture(nullptr), nullptr);
}

TEST(DriveModel, ThePrefixIsTheWholeModelAtLeast) {
  for (const char* model : {"AL", "KHK", "Micron", "Liteon", "SSSTC", "WU"})
    EXPECT_STRNE(driveModel2Manufacture(model), "") << model;
}

TEST(TrimDriveModel, SkipsTheMakersNameAndAShortSeries) {
  const std::pair<const char*, const char*> cases[] = {
      {"SAMSUNG MZ7LH480HAHQ-00005", "MZ7LH480HAHQ-00005"},
      {"Micron_5300_MTFDDAK480TDS", "MTFDDAK480TDS"},
      {"INTEL SSDPE2KX040T8", "SSDPE2KX040T8"},
      {"  WDC WD4003FFBX-68MU3N0", "WD4003FFBX-68MU3N0"},
      {"Sam X", "X"},
      {"  ABCDEFGHIJ XY", "ABCDEFGHIJ XY"},
      {"ABC SAMSUNG XY", "ABC SAMSUNG XY"},
      {"Seagates X", "Seagates X"},
      {"HGST", "HGST"},
      {"  HGST", "HGST"},
      {"HGST ", ""},
      {"WD_", ""},
      {"", ""},
      {"   ", "   "},
      // The series may have seven characters, no more.
      {"HGST 1234567 X", "X"},
      {"HGST 12345678 X", "12345678 X"},
      {"HGST  X", "X"},
      {"HGST A B C", "B C"},
      {"Toshiba_ X", "X"},
      {"AB CD EF GH", "AB CD EF GH"},
      {"123456789 WD X", "123456789 WD X"},
  };
  for (const auto& [model, rest] : cases) {
    std::string text = model;
    const char* const trimmed = trim_drive_model(text.data());
    EXPECT_STREQ(trimmed, rest) << model;
    EXPECT_GE(trimmed, text.data());
    EXPECT_EQ(text, model);
  }
  EXPECT_EQ(trim_drive_model(nullptr), nullptr);
}

TEST(TrimDriveModel, KnowsEveryMaker) {
  for (const std::string maker : {"Seagate", "WD", "WDC", "Intel", "Samsung", "Toshiba", "Kioxia", "Micron",
                                  "Hynix", "Liteon", "SSSTC", "HGST", "seagate", "kioxia", "hynix", "MICRON"})
    for (const char separator : {' ', '_'}) {
      std::string text = maker + separator + "M0DEL";
      EXPECT_STREQ(trim_drive_model(text.data()), "M0DEL") << text;
    }
}

TEST(TrimDriveModel, AnEmptyFirstWordIsSkippedUnlessItBeginsTheString) {
  std::string leading = "_ABC X";
  EXPECT_STREQ(trim_drive_model(leading.data()), "_ABC X");
  std::string spaced = "  _ABC";
  EXPECT_STREQ(trim_drive_model(spaced.data()), "ABC");
}

}  // namespace
