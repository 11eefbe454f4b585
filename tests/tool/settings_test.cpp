// `zymdb settings`: importing, listing and changing the settings of adapters.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "db/database_client.h"
#include "support/parsing_marker.h"
#include "tool/listing_case.h"
#include "tool/run_tool.h"
#include "zymdb_platform.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr char kFunction[] = "3b:00.0";
constexpr unsigned kFunctionKey = 0x3b0000;

class Settings : public testing::Test {
 protected:
  // The tool sees this database here, too.
  _zym_db_handle_t* open_inventory() {
    setenv("ZYMDB_INVENTORY", workplace_.inventory().c_str(), 1);
    return get_dmdb_handle();
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
  std::vector<std::string> pending() {
    return table({"settings", "pending", "--no-headings", "--columns", "SETTING,CURRENT,PENDING,ACCEPTED"});
  }

  Workplace workplace_;
  ParsingMarker marker_;
};

void expect_failure(const Outcome& outcome, int status, const std::string& reason) {
  EXPECT_EQ(outcome.status, status) << outcome;
  EXPECT_THAT(outcome.err, StartsWith("zymdb: "));
  EXPECT_THAT(outcome.err, HasSubstr(reason));
  EXPECT_THAT(lines_of(outcome.err), SizeIs(1)) << outcome;
}

std::string whole_setting() {
  Json setting;
  for (const auto& field : declared_fields({"settings", "zymdb_pci_settings.h", "ZYMDB_PCI_Config_Setting"}))
    setting[field] = "a " + field;
  unsigned number = 100;
  for (const char* field : {"Type", "Flags", "Minim", "Maxim", "Step", "Mins", "Maxs"})
    setting[field] = ++number;
  for (const char* field : {"Mininstances", "Maxinstances", "Numchoices"})
    setting[field] = -static_cast<int>(++number);
  setting["PfaKey"] = kFunctionKey;
  setting["Maxim"] = UINT32_MAX;
  return setting.dump();
}

TEST_F(Settings, AreListedInTheShapeInWhichTheyAreImported) {
  given("[" + whole_setting() + "]");
  const auto listed = Json::parse(list({"--json"}).out);
  EXPECT_EQ(listed.at("settings").size(), 1u);
  EXPECT_EQ(listed.at("settings")[0].dump(), whole_setting());
  given(listed.at("settings").dump());
  EXPECT_EQ(Json::parse(list({"--json"}).out), listed);
}

TEST_F(Settings, OfTheExampleServerAreListedByItsFunctions) {
  const auto file = ZYMDB_SOURCE_DIR "/data/example-server/settings.json";
  workplace_.collect_example();
  ASSERT_EQ(workplace_.tool({"settings", "import", file}).out, "6 settings stored\n");
  for (const auto& setting : Json::parse(read_file(file))) {
    const auto function = std::to_string(setting.at("PfaKey").get<unsigned>());
    const auto id = setting.at("SettingID").get<std::string>();
    const auto listed =
        Json::parse(workplace_.tool({"settings", "list", function, "--prefix", id, "--json"}).out);
    ASSERT_EQ(listed.at("settings").size(), 1u) << id;
    for (const auto& [key, value] : setting.items())
      EXPECT_EQ(listed.at("settings")[0].at(key), value) << key;
  }
  EXPECT_THAT(pending(), ElementsAre("VirtualFunctions.170000 0 16", "WakeOnLan.4b0000 Disabled Enabled"));
  EXPECT_THAT(table({"settings", "list", "4b:00.0", "--flagged", "--columns", "SETTING", "--no-headings"}),
              ElementsAre("BootProtocol.4b0000", "BootVlan.4b0000", "WakeOnLan.4b0000"));
}

TEST_F(Settings, MayLeaveOutWhatIsEmpty) {
  given(R"([{"SettingID": "A", "PfaKey": 3866624, "ShortDesc": null}])");
  const auto setting = Json::parse(list({"--json"}).out).at("settings")[0];
  EXPECT_TRUE(setting.at("ShortDesc").is_null());
  EXPECT_TRUE(setting.at("Choices").is_null());
  EXPECT_EQ(setting.at("Maxim"), 0);
}

TEST_F(Settings, ImportedTwiceAreTheSame) {
  for (int time = 0; time < 2; ++time) {
    const auto outcome = import("[" + whole_setting() + "]");
    EXPECT_EQ(outcome.out, "1 settings stored\n");
    EXPECT_THAT(outcome.err, IsEmpty());
  }
  EXPECT_EQ(Json::parse(list({"--json"}).out).at("settings").size(), 1u);
}

TEST_F(Settings, OfAnEmptyArrayAreNone) {
  EXPECT_EQ(import("[]").out, "0 settings stored\n");
  EXPECT_EQ(list({"--json"}).out, "{\n  \"format_version\": 1,\n  \"settings\": []\n}\n");
}

TEST_F(Settings, AreListedByFunctionPrefixAndFlag) {
  given_three();
  EXPECT_THAT(table({"settings", "list", kFunction}),
              ElementsAre("SETTING NAME CURRENT PENDING TITLE", "Boot.1 None None", "Boot.2 Pxe None"));
  for (const char* function : {"0000:3b:00.0", "3b:00", "0x3b0000", "3866624"})
    EXPECT_THAT(table({"settings", "list", function, "--columns", "SETTING", "--no-headings"}),
                ElementsAre("Boot.1", "Boot.2"))
        << function;
  const Words boot_2 = {"settings", "list", kFunction, "--columns", "SETTING", "--no-headings"};
  for (const Words& choice : {Words{"--prefix", "Boot.2"}, Words{"--flagged"}}) {
    Words arguments = boot_2;
    arguments.insert(arguments.end(), choice.begin(), choice.end());
    EXPECT_THAT(table(arguments), ElementsAre("Boot.2"));
  }
}

TEST_F(Settings, OfAFunctionWithoutAnyAreNone) {
  given_three();
  EXPECT_THAT(lines_of(workplace_.tool({"settings", "list", "ff:1f.7"}).out), SizeIs(1));
}

TEST_F(Settings, OfAnAdapterOfTheVendorWithoutSettingsAreNone) {
  given_three();
  auto* const handle = open_inventory();
  auto* const values = zym_db_get_content_values(handle);
  zym_db_content_put_uint(values, "FunKey", kFunctionKey);
  zym_db_content_put_uint(values, "VendorId", 0x1000);
  EXPECT_EQ(zym_db_insert(handle, "PCIs", values, 0, nullptr), 0);
  zym_db_free_content_values(values);
  zym_db_close(handle);
  const auto outcome = list({"--no-headings"});
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.out, IsEmpty());
}

TEST_F(Settings, GivenNewValuesArePendingAndAccepted) {
  given_three();
  EXPECT_THAT(pending(), ElementsAre("Boot.2 Pxe None"));
  EXPECT_THAT(table({"settings", "set", "Boot.1=Pxe", "Speed.1=25G=auto"}),
              ElementsAre("SETTING VALUE RESULT", "Boot.1 Pxe accepted", "Speed.1 25G=auto accepted"));
  EXPECT_THAT(pending(),
              ElementsAre("Boot.1 None Pxe Pxe", "Boot.2 Pxe None", "Speed.1 10G 25G=auto 25G=auto"));
}

TEST_F(Settings, RefusedByTheManagerStayPendingAndAreTold) {
  given_three();
  auto* const inventory = open_inventory();
  auto* const properties = zym_db_open("localhost", "root", "", "propertiesdb", 0);
  auto* const values = zym_db_get_content_values(properties);
  zym_db_content_put_text(values, "name", "Boot.1");
  EXPECT_EQ(zym_db_insert(properties, "biosAttribute", values, 0, nullptr), 0);
  zym_db_free_content_values(values);
  zym_db_close(properties);
  zym_db_close(inventory);

  const auto outcome = set({"Boot.1=Pxe", "Speed.1=25G"});
  expect_failure(outcome, 1, "the BIOS configuration manager did not accept all values");
  EXPECT_THAT(outcome.out,
              testing::ContainsRegex("Boot.1 +Pxe +accepted\nSpeed.1 +25G +refused \\(status 11\\)\n"));
  EXPECT_THAT(pending(), ElementsAre("Boot.1 None Pxe Pxe", "Boot.2 Pxe None", "Speed.1 10G 25G"));
}

TEST_F(Settings, WithAnUnknownOneAmongThemAreNotChanged) {
  given_three();
  expect_failure(set({"Boot.1=Pxe", "Boot.9=Pxe"}), 1, "no setting 'Boot.9'; nothing was changed");
  EXPECT_THAT(pending(), ElementsAre("Boot.2 Pxe None"));
}

TEST_F(Settings, AreNotSetByWhatIsNoAssignment) {
  given_three();
  const std::pair<Words, const char*> wrong[] = {
      {{"Boot.1"}, "'Boot.1' is not of that form"},
      {{"=Pxe"}, "'=Pxe' is not of that form"},
      {{"Boot.1=a", "Boot.1=b"}, "'Boot.1' is given twice"},
      {{"Boot.1=' OR '1'='1"}, "with a quote cannot be set"},
      {{"' OR '1'='1=a"}, "with a quote cannot be set"},
      {{"Boot.1=" + std::string(65, 'v')}, "more than 64 bytes"},
      {{std::string(65, 'i') + "=v"}, "more than 64 bytes"},
  };
  for (const auto& [assignments, reason] : wrong) expect_failure(set(assignments), 2, reason);
  EXPECT_THAT(pending(), ElementsAre("Boot.2 Pxe None"));
}

TEST_F(Settings, AreNotListedByWhatIsNoFunctionOrPrefix) {
  for (const char* function : {"eth0", "", "3b:00.8", "100:3b:00.0", "4294967296", "0x"})
    expect_failure(workplace_.tool({"settings", "list", function}), 2, "neither a PCI address nor");
  expect_failure(list({"--prefix", "it's"}), 2, "a quote cannot be asked for");
  expect_failure(list({"--prefix", std::string(87, 'p')}), 2, "longer than 86 bytes");
  EXPECT_EQ(list({"--prefix", std::string(86, 'p')}).status, 0);
}

TEST_F(Settings, AreLeftAloneWhileTheyAreBeingParsed) {
  given_three();
  marker_.set();
  const std::string reason = "(/tmp/dp.ucmparsing exists)";
  expect_failure(list(), 1, reason);
  expect_failure(set({"Boot.1=Pxe"}), 1, reason);
  expect_failure(workplace_.tool({"settings", "pending"}), 1, reason);
  expect_failure(import("[]"), 1, reason);
  EXPECT_TRUE(marker_.is_set()) << "it is another program's";
  marker_.remove();
  EXPECT_THAT(pending(), ElementsAre("Boot.2 Pxe None"));
}

TEST_F(Settings, AreReadableAgainAfterAnImport) {
  given_three();
  EXPECT_FALSE(marker_.is_set());
  EXPECT_EQ(import("no JSON").status, 1);
  EXPECT_FALSE(marker_.is_set());
}

// ---- Interrupted imports -----------------------------------------------------------------------------

class InterruptedImport : public Settings, public testing::WithParamInterface<const char*> {};

// Another writer keeps the import waiting, with its marker set, until the signal comes.
TEST_P(InterruptedImport, TakesTheMarkerAwayAndStoresNothing) {
  const auto file = workplace_.path("settings.json").string();
  write_file(file, "[" + whole_setting() + "]");
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
  EXPECT_THAT(list({"--no-headings"}).out, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedImport, testing::Values("INT", "TERM", "HUP"),
                         [](const auto& signal) { return std::string(signal.param); });

// ---- Files that are refused --------------------------------------------------------------------------

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
  const auto outcome = import(GetParam().content);
  expect_failure(outcome, 1, "settings.json" + GetParam().complaint);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(list({"--no-headings"}).out, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Files, RefusedSettings, testing::ValuesIn(kWrongFiles),
                         [](const auto& file) { return std::string(file.param.name); });

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
    for (std::size_t i = 0; i < listed.size(); ++i) {
      EXPECT_EQ(listed[i].at("SettingID"), settings[i].at("SettingID"));
      EXPECT_EQ(listed[i].at("SuppressIf"), settings[i].at("SuppressIf"));
    }
  }
}

}  // namespace
}  // namespace zymdb::test
