// `zymdb settings`: listing and changing the settings of adapters.
#include "tool/settings_fixture.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(Settings, AreListedInTheShapeInWhichTheyAreImported) {
  given("[" + whole_setting() + "]");
  const auto listed = Json::parse(list({"--json"}).out);
  ASSERT_EQ(listed.at("settings").size(), 1u);
  auto setting = listed.at("settings")[0];
  EXPECT_EQ(setting.at("Function"), "0000:3b:00.0");
  setting.erase("Function");
  EXPECT_EQ(setting.dump(), whole_setting());
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
  given_function();
  EXPECT_EQ(import("[]").out, "0 settings stored\n");
  EXPECT_EQ(list({"--json"}).out, "{\n  \"format_version\": 2,\n  \"settings\": []\n}\n");
}

TEST_F(Settings, AreListedByFunctionPrefixAndFlag) {
  given_three();
  EXPECT_THAT(table({"settings", "list", kFunction}),
              ElementsAre("SETTING NAME CURRENT PENDING TITLE", "Boot.1 None None", "Boot.2 Pxe None"));
  for (const char* function : {"0000:3b:00.0", "0x3b0000", "0X3B0000", "3866624"})
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
  insert_row(
      workplace_, "PCIs",
      {{"FunKey", 0xff1f07u}, {"SegNo", 0u}, {"BusNo", 0xffu}, {"DeviceNo", 0x1fu}, {"FunctionNo", 7u}});
  const auto outcome = workplace_.tool({"settings", "list", "ff:1f.7"});
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(lines_of(outcome.out), SizeIs(1));
}

TEST_F(Settings, OfAllFunctionsAreListedByFunction) {
  given_three();
  EXPECT_THAT(table({"show", "settings", "--columns", "FUNCTION,SETTING,CURRENT", "--no-headings"}),
              ElementsAre("0000:00:00.1 Speed.1 10G", "0000:3b:00.0 Boot.1 None", "0000:3b:00.0 Boot.2 Pxe"));
  marker_.set();
  expect_failure(workplace_.tool({"show", "settings"}), 1, "(/tmp/dp.ucmparsing exists)");
}

TEST_F(Settings, OfAFunctionThatIsNotThereAreAFailure) {
  given_three();
  expect_failure(workplace_.tool({"settings", "list", "ff:1f.7"}), 1,
                 "there is no function 0000:ff:1f.7 in the inventory");
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
  expect_no_settings();
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
  given_three();
  for (const char* function : {"eth0", "", "3b:00", "3b0000", "3b:00.8", "100:3b:00.0", "4294967296", "0x"})
    expect_failure(workplace_.tool({"settings", "list", function}), 2,
                   "'" + std::string(function) + "' is neither an address like 0000:3b:00.0 nor a key");
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

}  // namespace
}  // namespace zymdb::test
