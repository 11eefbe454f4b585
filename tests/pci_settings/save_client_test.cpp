// Saving new values: the exact calls and log lines, and what becomes of every failure.
#include <gmock/gmock.h>

#include "pci_settings/setting.h"
#include "support/scripted_client.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using Entry = ZYMDB_PCI_Config_Set;

constexpr int kFailure = 77;
constexpr uint32_t kUntouched = 0xABCDEF01;

Entry entry(const char* id, const char* value) {
  Entry entry{};
  set_text(entry.SettingID, id);
  set_text(entry.PendingValue, value);
  entry.Result = kUntouched;
  return entry;
}

class SaveSettings : public scripted::ClientTest {
 protected:
  int save() { return zymdb_save_pci_configSet_list(list_, 2); }
  std::vector<uint32_t> results() const { return {list_[0].Result, list_[1].Result}; }

  Entry list_[2] = {entry("A.x", "on"), entry("B.y", "7")};
};

TEST_F(SaveSettings, ChecksAllThenWritesAllThenHandsThemToTheManager) {
  answer({Row(5)});
  answer({Row(6)});
  EXPECT_EQ(save(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().calls,
      ElementsAre("query PCISetting [_id] where  SettingID='A.x'", "step", "int64 0", "free_result",
                  "query PCISetting [_id] where  SettingID='B.y'", "step", "int64 0", "free_result",
                  "get_content_values", "clear", "put PendingValue=text:on",
                  "update PCISetting {PendingValue=text:on} where  SettingID='A.x' AND  PendingValue!='on'",
                  "clear", "put PendingValue=text:7",
                  "update PCISetting {PendingValue=text:7} where  SettingID='B.y' AND  PendingValue!='7'",
                  "free_content_values", "cmr_initialize", "cmr_set {2:A.x=on, 2:B.y=7}",
                  "cmr_uninitialize"));
  EXPECT_THAT(results(), ElementsAre(0, 0));
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(SaveSettings, AFailedLookUpTellsThatItsFilterWasCut) {
  // Without an end of its own the id goes on with the value.
  std::memset(list_[0].SettingID, 'A', sizeof list_[0].SettingID);
  std::memset(list_[0].PendingValue, 'B', sizeof list_[0].PendingValue - 1);
  answer(Answer::failing(kFailure));
  EXPECT_EQ(save(), ZYMDB_PCI_SETTING_ID_NOEXIT);
  ASSERT_EQ(client().log.size(), 5u);
  EXPECT_THAT(client().log[2], StartsWith("error: filter= SettingID='AAAA"));
  EXPECT_EQ(client().log[3], "error: the filter was cut at 95 bytes");
}

TEST_F(SaveSettings, OfNoneOpensAndClosesASessionWithTheManager) {
  EXPECT_EQ(zymdb_save_pci_configSet_list(nullptr, 0), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().calls, ElementsAre("get_content_values", "free_content_values", "cmr_initialize",
                                          "cmr_set {}", "cmr_uninitialize"));
}

TEST_F(SaveSettings, HandsTheLongestIdAndValueOverWhole) {
  const std::string id(64, 'i');
  const std::string value(64, 'v');
  Entry longest = entry(id.c_str(), value.c_str());
  answer({Row(5)});
  EXPECT_EQ(zymdb_save_pci_configSet_list(&longest, 1), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCISetting [_id] where  SettingID='" + id + "'",
                          "update PCISetting {PendingValue=text:" + value + "} where  SettingID='" + id +
                              "' AND  PendingValue!='" + value + "'"));
  EXPECT_EQ(client().calls[client().calls.size() - 2], "cmr_set {2:" + id + "=" + value + "}");
}

TEST_F(SaveSettings, PutsAnEmptyValueAsAText) {
  Entry empty = entry("A.x", "");
  answer({Row(5)});
  EXPECT_EQ(zymdb_save_pci_configSet_list(&empty, 1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.back(),
            "update PCISetting {PendingValue=text:} where  SettingID='A.x' AND  PendingValue!=''");
}

TEST_F(SaveSettings, WithoutADatabaseAsksNobody) {
  client().has_database = false;
  EXPECT_EQ(save(), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().calls, IsEmpty());
  EXPECT_THAT(results(), ElementsAre(kUntouched, kUntouched));
}

TEST_F(SaveSettings, OfAnUnknownSettingChangesNothing) {
  const Answer unknown[] = {Answer{}, Answer::failing(kFailure), Answer::of({Row(0)}), Answer::of({Row(-3)}),
                            Answer::of({Row(nullptr)})};
  for (const Answer& second : unknown) {
    client().calls.clear();
    client().log.clear();
    answer({Row(5)});
    answer(second);
    EXPECT_EQ(save(), ZYMDB_PCI_SETTING_ID_NOEXIT);
    EXPECT_EQ(client().log.back(),
              "error: zymdb_save_pci_configSet_list failed, ZYMDB_PCI_SETTING_ID_NOEXIT");
    EXPECT_THAT(client().calls,
                testing::Each(testing::AnyOf(StartsWith("query"), "step", "int64 0", "free_result")));
    EXPECT_THAT(results(), ElementsAre(kUntouched, kUntouched));
  }
}

TEST_F(SaveSettings, StopsLookingAtTheFirstUnknownSetting) {
  answer(std::vector<Row>{});
  EXPECT_EQ(save(), ZYMDB_PCI_SETTING_ID_NOEXIT);
  EXPECT_THAT(client().statements, ElementsAre("query PCISetting [_id] where  SettingID='A.x'"));
}

TEST_F(SaveSettings, WithoutAValueSetIsLogged) {
  answer({Row(5)});
  answer({Row(6)});
  client().has_values = false;
  EXPECT_EQ(save(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(client().log, ElementsAre("error: zymdb_save_pci_configSet_list, ZYM_DB_STATUS_NO_MEMORY"));
  EXPECT_THAT(results(), ElementsAre(kUntouched, kUntouched));
}

TEST_F(SaveSettings, ThatCannotWriteAnEntryLeavesThoseBeforeItWritten) {
  answer({Row(5)});
  answer({Row(6)});
  client().failures[{"update", 1}] = kFailure;
  EXPECT_EQ(save(), kFailure);
  char line[256];
  std::snprintf(line, sizeof line,
                "error: zymdb_update failed, filter:  SettingID='B.y' AND  PendingValue!='7', value: "
                "PendingValue(0x%p), rc: 77",
                static_cast<const void*>(list_[1].PendingValue));
  EXPECT_THAT(client().log, ElementsAre(line));
  EXPECT_THAT(client().statements[2], StartsWith("update PCISetting {PendingValue=text:on}"));
  EXPECT_EQ(client().calls.back(), "free_content_values");
  EXPECT_THAT(results(), ElementsAre(kUntouched, kUntouched));
}

TEST_F(SaveSettings, ThatCannotFillAValueSetWritesNothingFromIt) {
  for (const auto& [call, number] : {std::pair{"clear", 0}, std::pair{"put", 1}}) {
    client().statements.clear();
    client().failures = {{{call, number}, kFailure}};
    answer({Row(5)});
    answer({Row(6)});
    EXPECT_EQ(save(), kFailure) << call;
    EXPECT_EQ(client().statements.size(), 2u) << call;
  }
}

TEST_F(SaveSettings, RefusedByTheManagerTellsTheOutcomeOfEachEntry) {
  answer({Row(5)});
  answer({Row(6)});
  client().failures[{"cmr_set", 0}] = kFailure;
  client().attribute_outcomes = {0, 11};
  EXPECT_EQ(save(), ZYMDB_PCI_SETTING_BIOS_SET_FAIL);
  EXPECT_THAT(client().log, ElementsAre("error: cmr_set_bios_attribute_value failed, rc: 77"));
  EXPECT_THAT(results(), ElementsAre(0, 11));
  EXPECT_EQ(client().calls.back(), "cmr_uninitialize");
  EXPECT_EQ(client().statements.size(), 4u) << "both values stay written";
}

// Only what the manager says of the set counts.
TEST_F(SaveSettings, SucceedsWhereTheManagerAcceptsWhateverItsSessionSays) {
  answer({Row(5)});
  answer({Row(6)});
  client().failures = {{{"cmr_initialize", 0}, kFailure}, {{"cmr_uninitialize", 0}, kFailure}};
  client().attribute_outcomes = {3, 4};
  EXPECT_EQ(save(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(results(), ElementsAre(3, 4));
  EXPECT_THAT(client().log, IsEmpty());
}

}  // namespace
