// `zymdb settings` in a workplace of its own.
#ifndef ZYMDB_TESTS_TOOL_SETTINGS_FIXTURE_H
#define ZYMDB_TESTS_TOOL_SETTINGS_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "controller/database_client.h"
#include "support/parsing_marker.h"
#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {

inline constexpr char kFunction[] = "3b:00.0";
inline constexpr unsigned kFunctionKey = 0x3b0000;

class Settings : public testing::Test {
 protected:
  // The tool sees this database here, too.
  _zym_db_handle_t* open_inventory() {
    setenv("ZYMDB_INVENTORY", workplace_.inventory().c_str(), 1);
    return get_dmdb_handle();
  }

  // The function without any settings.
  void given_function() {
    insert_row(
        workplace_, "PCIs",
        {{"FunKey", kFunctionKey}, {"SegNo", 0u}, {"BusNo", 0x3bu}, {"DeviceNo", 0u}, {"FunctionNo", 0u}});
  }

  Outcome import(const std::string& content) {
    const auto file = workplace_.path("settings.json").string();
    write_file(file, content);
    return workplace_.tool({"settings", "import", file});
  }
  void given(const std::string& content) {
    const auto outcome = import(content);
    ASSERT_EQ(outcome.status, 0) << outcome;
  }
  void given_three() {
    given(R"([{"SettingID": "Boot.1", "PfaKey": 3866624, "CurrentValue": "None", "PendingValue": "None"},
              {"SettingID": "Boot.2", "PfaKey": 3866624, "CurrentValue": "Pxe", "PendingValue": "None", "Flags": 2},
              {"SettingID": "Speed.1", "PfaKey": 1, "CurrentValue": "10G", "PendingValue": "10G"}])");
  }

  Outcome list(Words arguments = {}) {
    arguments.insert(arguments.begin(), {"settings", "list", kFunction});
    return workplace_.tool(arguments);
  }
  Outcome set(Words assignments) {
    assignments.insert(assignments.begin(), {"settings", "set"});
    return workplace_.tool(assignments);
  }

  // The lines of a table, the cells separated by one blank.
  std::vector<std::string> table(const Words& arguments) {
    auto lines = lines_of(workplace_.tool(arguments).out);
    for (auto& line : lines) {
      line.erase(std::unique(line.begin(), line.end(), [](char a, char b) { return a == ' ' && b == ' '; }),
                 line.end());
      line = stripped(line);
    }
    return lines;
  }
  void expect_no_settings() {
    const auto outcome = list({"--no-headings"});
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_THAT(outcome.out, testing::IsEmpty());
  }
  std::vector<std::string> pending() {
    return table({"settings", "pending", "--no-headings", "--columns", "SETTING,CURRENT,PENDING,ACCEPTED"});
  }

  Workplace workplace_;
  ParsingMarker marker_;
};

inline void expect_failure(const Outcome& outcome, int status, const std::string& reason) {
  EXPECT_EQ(outcome.status, status) << outcome;
  EXPECT_THAT(outcome.err, testing::StartsWith("zymdb: "));
  EXPECT_THAT(outcome.err, testing::HasSubstr(reason));
  EXPECT_THAT(lines_of(outcome.err), testing::SizeIs(1)) << outcome;
}

// Every field has a value.
inline std::string whole_setting() {
  Json setting;
  for (const auto& field : declared_fields(listing("settings"))) setting[field] = "a " + field;
  unsigned number = 100;
  for (const char* field : {"Type", "Flags", "Minim", "Maxim", "Step", "Mins", "Maxs"})
    setting[field] = ++number;
  for (const char* field : {"Mininstances", "Maxinstances", "Numchoices"})
    setting[field] = -static_cast<int>(++number);
  setting["PfaKey"] = kFunctionKey;
  setting["Maxim"] = UINT32_MAX;
  return setting.dump();
}

}  // namespace zymdb::test

#endif
