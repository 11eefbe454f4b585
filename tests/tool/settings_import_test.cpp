// `zymdb settings import`: files that are refused, imports that are interrupted, texts that are hostile.
#include <csignal>
#include <map>

#include "tool/settings_fixture.h"
#include "zymdb_platform.h"

namespace zymdb::test {
namespace {

using testing::IsEmpty;

class InterruptedImport : public Settings, public testing::WithParamInterface<const char*> {};

// Another writer keeps the import waiting, with its marker set, until the signal comes.
TEST_P(InterruptedImport, TakesTheMarkerAwayAndStoresNothing) {
  const auto file = workplace_.path("settings.json").string();
  write_file(file, "[" + whole_setting() + "]");
  given_function();
  auto* const handle = open_inventory();
  ASSERT_EQ(zym_db_begin(handle), 0);
  const auto outcome = run_program(
      {"bash", "-c",
       "env --default-signal=" + std::string(GetParam()) + R"( "$1" settings import "$2" & import=$!
        for ((i = 0; i < 400; i++)); do [[ ! -e $3 ]] || break; sleep 0.01; done
        [[ -e $3 ]] || echo 'no marker'
        kill -)" +
           std::string(GetParam()) + R"( $import; wait $import; echo $?)",
       "bash", ZYMDB_TOOL, file, ParsingMarker::kPath},
      workplace_.with_inventory());
  EXPECT_EQ(zym_db_rollback(handle), 0);
  zym_db_close(handle);
  const std::map<std::string, int> numbers = {{"INT", SIGINT}, {"TERM", SIGTERM}, {"HUP", SIGHUP}};
  EXPECT_EQ(outcome.out, std::to_string(128 + numbers.at(GetParam())) + "\n") << outcome;
  EXPECT_FALSE(marker_.is_set());
  expect_no_settings();
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedImport, testing::Values("INT", "TERM", "HUP"),
                         [](const auto& signal) { return std::string(signal.param); });

struct WrongFile {
  const char* name;
  std::string content;
  std::string complaint;  // after the file's name
};

std::ostream& operator<<(std::ostream& stream, const WrongFile& file) {
  return stream << file.name;
}

class RefusedSettings : public Settings, public testing::WithParamInterface<WrongFile> {};

std::string with(const std::string& member) {
  return "[\n{\"SettingID\": \"A\",\n \"PfaKey\": 3866624,\n " + member + "\n}]";
}

const WrongFile kWrongFiles[] = {
    {"Empty", "", ", line 1: syntax error"},
    {"NoJson", "settings", ", line 1: syntax error"},
    {"Unfinished", "[\n{\"SettingID\": \"A\",\n", ", line 2: syntax error"},
    {"TwoValues", "[]\n[]", ", line 2: syntax error"},
    {"BrokenUtf8", with("\"Choices\": \"\xff\""), ", line 4: syntax error"},
    {"Object", "{}", ", line 1: an array of settings is expected"},
    {"Number", "\n7", ", line 2: an array of settings is expected"},
    {"Null", "null", ", line 1: an array of settings is expected"},
    {"ArrayOfNumbers", "[\n7\n]", ", line 2: an object is expected"},
    {"ArrayOfNulls", "[null]", ", line 1: an object is expected"},
    {"ArrayOfArrays", "[\n[]]", ", line 2: an array is not expected here"},
    {"UnknownKey", with("\"Colour\": 1"), ", line 4: Colour: no such key"},
    {"NumberBehindWhatIsDerived", "[{\"SettingID\": \"A\", \"PfaKey\": 1, \"Function\": \"\"}, 7]",
     ", line 1: an object is expected"},
    {"ArrayForWhatIsDerived", with("\"Function\": []"), ", line 4: Function: an array is not expected here"},
    {"KeyInAnotherCase", with("\"flags\": 1"), ", line 4: flags: no such key"},
    {"KeyTwice", with("\"Flags\": 1, \"Type\": 1,\n\"Flags\": 1"), ", line 5: Flags: is given twice"},
    {"TextForANumber", with("\"Flags\":\n\"1\""), ", line 4: Flags: a whole number from 0 on is expected"},
    {"NullForANumber", with("\"Flags\": null"), ", line 4: Flags: a whole number from 0 on is expected"},
    {"TextForASignedNumber", with("\"Numchoices\": \"1\""),
     ", line 4: Numchoices: a whole number is expected"},
    {"NumberForAText", with("\"Choices\": 1"), ", line 4: Choices: a text is expected"},
    {"NegativeForAText", with("\"Choices\": -1"), ", line 4: Choices: a text is expected"},
    {"TruthForAText", with("\"Choices\": true"), ", line 4: Choices: a text is expected"},
    {"ArrayForAText", with("\"Choices\": []"), ", line 4: Choices: an array is not expected here"},
    {"ObjectForAText", with("\"Choices\": {}"), ", line 4: Choices: an object is not expected here"},
    {"Fraction", with("\"Maxim\": 1.5"), ", line 4: Maxim: a whole number from 0 on is expected"},
    {"NegativeNumber", with("\"Maxim\": -1"), ", line 4: Maxim: a whole number from 0 on is expected"},
    {"LargeNumber", with("\"Maxim\": 4294967296"), ", line 4: Maxim: the number is too large"},
    {"LargeSignedNumber", with("\"Numchoices\": 2147483648"),
     ", line 4: Numchoices: the number is too large"},
    {"SmallSignedNumber", with("\"Numchoices\": -2147483649"),
     ", line 4: Numchoices: the number is too small"},
    {"LongText", with("\"Mriname\": \"" + std::string(65, 'm') + "\""),
     ", line 4: Mriname: longer than 64 bytes"},
    {"Nul", with("\"Choices\": \"a\\u0000b\""), ", line 4: Choices: a text with a NUL cannot be stored"},
    {"DoubleQuote", with("\"GrayIf\": \"\\\" OR _id>0 OR \\\"\""),
     ", line 4: GrayIf: a text with a double quote cannot be stored"},
    {"NoId", "[\n\n{\"PfaKey\": 1}]", ", line 3: SettingID: is missing"},
    {"EmptyId", "[{\"SettingID\": \"\", \"PfaKey\": 1}]", ", line 1: SettingID: must not be empty"},
    {"NullId", "[{\"PfaKey\": 1, \"SettingID\": null}]", ", line 1: SettingID: must not be empty"},
    {"NoFunction", "[\n{\"SettingID\": \"A\"}]", ", line 2: PfaKey: is missing"},
    {"IdTwice", "[{\"SettingID\": \"A\", \"PfaKey\": 1},\n{\"SettingID\": \"A\", \"PfaKey\": 1}]",
     ", line 2: SettingID: 'A' stands in line 1 already"},
};

// The setting before the mistake is not stored either.
TEST_P(RefusedSettings, AreToldByLineAndKeyAndNotStored) {
  given_function();
  const auto outcome = import(GetParam().content);
  expect_failure(outcome, 1, "settings.json" + GetParam().complaint);
  EXPECT_THAT(outcome.out, IsEmpty());
  expect_no_settings();
}

INSTANTIATE_TEST_SUITE_P(Files, RefusedSettings, testing::ValuesIn(kWrongFiles),
                         [](const auto& file) { return std::string(file.param.name); });

TEST_F(Settings, OfARefusedFileMakeNoInventory) {
  EXPECT_EQ(import("{}").status, 1);
  EXPECT_FALSE(exists(workplace_.inventory()));
}

TEST_F(Settings, OfAMissingFileAreToldByItsName) {
  expect_failure(workplace_.tool({"settings", "import", "/nowhere/settings.json"}), 1,
                 "/nowhere/settings.json");
}

TEST_F(Settings, WithHostileTextsAreStoredByteForByte) {
  const char* const texts[] = {
      "it's", "100%", "%s%n", "'; DELETE FROM PCISetting; --", "a\\b\n\t\x01", "caf\xc3\xa9 \xf0\x9f\x94\xa7",
      "((((", "NULL", "?"};
  auto settings = Json::array();
  for (const char* text : texts)
    settings.push_back({{"SettingID", text}, {"PfaKey", kFunctionKey}, {"SuppressIf", text}});
  settings.push_back(
      {{"SettingID", "long"}, {"PfaKey", kFunctionKey}, {"SuppressIf", std::string(1024, '(')}});
  for (int time = 0; time < 2; ++time) {
    given(settings.dump());
    const auto listed = Json::parse(list({"--json"}).out).at("settings");
    ASSERT_EQ(listed.size(), settings.size());
    for (size_t i = 0; i < listed.size(); ++i) {
      EXPECT_EQ(listed[i].at("SettingID"), settings[i].at("SettingID"));
      EXPECT_EQ(listed[i].at("SuppressIf"), settings[i].at("SuppressIf"));
    }
  }
}

}  // namespace
}  // namespace zymdb::test
