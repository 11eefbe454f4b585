// Storing a setting: its exact statements, and what it answers to every failure of the client.
#include <gmock/gmock.h>

#include <tuple>

#include "pci_settings/setting.h"
#include "support/scripted_client.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

constexpr char kAllPut[] =
    "SettingID=text:SettingID*, SettingName=text:SettingName*, PendingValue=text:PendingValue*, "
    "CurrentValue=text:CurrentValue*, PfaKey=uint:11, SuppressIf=text:SuppressIf*, GrayIf=text:GrayIf*, "
    "GroupID=text:GroupID*, GroupName=text:GroupName*, GroupSuppressIf=text:GroupSuppressIf*, "
    "GroupGrayIf=text:GroupGrayIf*, Mriname=text:Mriname*, ShortDesc=text:ShortDesc*, "
    "FullDesc=text:FullDesc*, Defvalue=text:Defvalue*, Mfg_default=text:Mfg_default*, "
    "Defaultaction=text:Defaultaction*, RecordId=text:RecordId*, Type=uint:1, Flags=uint:2, Minim=uint:5, "
    "Maxim=uint:6, Step=uint:7, Mins=uint:8, Maxs=uint:9, Pattern=text:Pattern*, Numchoices=int:10, "
    "Choices=text:Choices*, Mininstances=int:3, Maxinstances=int:4";

constexpr char kAllCompared[] =
    R"((PendingValue IS NULL OR PendingValue!="PendingValue*") OR )"
    R"((SettingName IS NULL OR SettingName!="SettingName*") OR )"
    R"((CurrentValue IS NULL OR CurrentValue!="CurrentValue*") OR )"
    R"(PfaKey!=11 OR )"
    R"((SuppressIf IS NULL OR SuppressIf!="SuppressIf*") OR )"
    R"((GrayIf IS NULL OR GrayIf!="GrayIf*") OR )"
    R"((GroupID IS NULL OR GroupID!="GroupID*") OR )"
    R"((GroupName IS NULL OR GroupName!="GroupName*") OR )"
    R"((GroupSuppressIf IS NULL OR GroupSuppressIf!="GroupSuppressIf*") OR )"
    R"((GroupGrayIf IS NULL OR GroupGrayIf!="GroupGrayIf*") OR )"
    R"((Mriname IS NULL OR Mriname!="Mriname*") OR )"
    R"((ShortDesc IS NULL OR ShortDesc!="ShortDesc*") OR )"
    R"((FullDesc IS NULL OR FullDesc!="FullDesc*") OR )"
    R"((Defvalue IS NULL OR Defvalue!="Defvalue*") OR )"
    R"((Mfg_default IS NULL OR Mfg_default!="Mfg_default*") OR )"
    R"((Defaultaction IS NULL OR Defaultaction!="Defaultaction*") OR )"
    R"((RecordId IS NULL OR RecordId!="RecordId*") OR )"
    R"(Type!=1 OR Flags!=2 OR Minim!=5 OR Maxim!=6 OR Step!=7 OR Mins!=8 OR Maxs!=9 OR )"
    R"((Pattern IS NULL OR Pattern!="Pattern*") OR )"
    R"(Numchoices!=10 OR )"
    R"((Choices IS NULL OR Choices!="Choices*") OR )"
    R"(Mininstances!=3 OR Maxinstances!=4)";

class StoreSetting : public scripted::ClientTest {};

TEST_F(StoreSetting, InsertsARowOfAllColumns) {
  const Setting setting = filled_setting();
  answer(std::vector<Row>{});
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre(R"(query PCISetting [_id] where SettingID="SettingID*")",
                                               "insert PCISetting {" + std::string(kAllPut) + "}"));
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(StoreSetting, RewritesAllColumnsOfARowThatDiffersInAny) {
  const Setting setting = filled_setting();
  answer({Row(5)});
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre(R"(query PCISetting [_id] where SettingID="SettingID*")",
                                               "update PCISetting {" + std::string(kAllPut) +
                                                   "} where _id=5 AND (" + kAllCompared + ")"));
}

TEST_F(StoreSetting, PutsAnEmptyTextAsNullAndComparesItSo) {
  const Setting setting = bare_setting("A.x");
  answer({Row(5)});
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_OK);
  EXPECT_EQ(
      client().statements.back(),
      "update PCISetting {SettingID=text:A.x, SettingName=null:, PendingValue=null:, CurrentValue=null:, "
      "PfaKey=uint:0, SuppressIf=null:, GrayIf=null:, GroupID=null:, GroupName=null:, "
      "GroupSuppressIf=null:, GroupGrayIf=null:, Mriname=null:, ShortDesc=null:, FullDesc=null:, "
      "Defvalue=null:, Mfg_default=null:, Defaultaction=null:, RecordId=null:, Type=uint:0, Flags=uint:0, "
      "Minim=uint:0, Maxim=uint:0, Step=uint:0, Mins=uint:0, Maxs=uint:0, Pattern=null:, Numchoices=int:0, "
      "Choices=null:, Mininstances=int:0, Maxinstances=int:0} where _id=5 AND (PendingValue IS NOT NULL OR "
      "SettingName IS NOT NULL OR CurrentValue IS NOT NULL OR PfaKey!=0 OR SuppressIf IS NOT NULL OR GrayIf "
      "IS NOT NULL OR GroupID IS NOT NULL OR GroupName IS NOT NULL OR GroupSuppressIf IS NOT NULL OR "
      "GroupGrayIf IS NOT NULL OR Mriname IS NOT NULL OR ShortDesc IS NOT NULL OR FullDesc IS NOT NULL OR "
      "Defvalue IS NOT NULL OR Mfg_default IS NOT NULL OR Defaultaction IS NOT NULL OR RecordId IS NOT NULL "
      "OR Type!=0 OR Flags!=0 OR Minim!=0 OR Maxim!=0 OR Step!=0 OR Mins!=0 OR Maxs!=0 OR Pattern IS NOT "
      "NULL OR Numchoices!=0 OR Choices IS NOT NULL OR Mininstances!=0 OR Maxinstances!=0)");
}

TEST_F(StoreSetting, WritesASignedNumberWithItsSignAndComparesItWithout) {
  Setting setting = bare_setting("A.x");
  setting.Mininstances = -1;
  setting.Maxinstances = INT32_MIN;
  setting.Numchoices = -2;
  setting.Maxim = UINT32_MAX;
  answer({Row(5)});
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_OK);
  const std::string& update = client().statements.back();
  EXPECT_THAT(update, testing::HasSubstr("Maxim=uint:4294967295, "));
  EXPECT_THAT(update, testing::HasSubstr("Numchoices=int:-2, Choices=null:, Mininstances=int:-1, "
                                         "Maxinstances=int:-2147483648} where "));
  EXPECT_THAT(update, testing::HasSubstr(" OR Maxim!=4294967295 OR "));
  EXPECT_THAT(update, testing::HasSubstr("Numchoices!=4294967294 OR Choices IS NOT NULL OR "
                                         "Mininstances!=4294967295 OR Maxinstances!=2147483648)"));
}

TEST_F(StoreSetting, LooksForTheDatabaseBeforeTheRecord) {
  EXPECT_EQ(extract_PCISetting_info(nullptr), ZYM_DB_STATUS_OK);
  client().has_database = false;
  const Setting setting = filled_setting();
  EXPECT_EQ(extract_PCISetting_info(nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().calls, IsEmpty());
}

TEST_F(StoreSetting, WithoutAValueSetAsksNothing) {
  client().has_values = false;
  const Setting setting = filled_setting();
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(client().calls, ElementsAre("get_content_values"));
  EXPECT_THAT(client().log, IsEmpty());
}

// The column whose put fails, counted from 0, and whether there is a row of the setting.
class StoreSettingThatCannotPut : public StoreSetting,
                                  public testing::WithParamInterface<std::tuple<int, bool>> {};

TEST_P(StoreSettingThatCannotPut, IsAnErrorThatNamesTheSetting) {
  const auto [column, exists] = GetParam();
  client().failures = {{{"put", column}, kFailure}};
  answer(exists ? Answer::of({Row(5)}) : Answer{});
  const Setting setting = filled_setting();
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_ERROR);
  ASSERT_THAT(client().log, testing::Not(IsEmpty()));
  EXPECT_EQ(client().log.back(),
            "error: Failed to insert ZYMDB_PCI_Config_Setting info: ZYMDB_PCI_Setting_ID=SettingID*");
}

INSTANTIATE_TEST_SUITE_P(Columns, StoreSettingThatCannotPut,
                         testing::Combine(testing::Range(0, 30), testing::Bool()));

TEST_F(StoreSetting, ThatCannotBeLookedUpIsAnErrorThatNamesIt) {
  client().failures = {{{"query", 0}, kFailure}};
  answer({Row(5)});
  const Setting setting = filled_setting();
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_ERROR);
  ASSERT_THAT(client().log, testing::Not(IsEmpty()));
  EXPECT_EQ(client().log.back(),
            "error: Failed to insert ZYMDB_PCI_Config_Setting info: ZYMDB_PCI_Setting_ID=SettingID*");
}

TEST_F(StoreSetting, ThatCannotReadTheRowsIdOrWriteItFails) {
  const Setting setting = filled_setting();
  for (const char* call : {"int64", "update"}) {
    client().failures = {{{call, 0}, kFailure}};
    answer({Row(5)});
    EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_ERROR) << call;
  }
  client().failures = {{{"insert", 0}, kFailure}};
  answer(std::vector<Row>{});
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(client().log.back(),
            "error: Failed to insert ZYMDB_PCI_Config_Setting info: ZYMDB_PCI_Setting_ID=SettingID*");
}

}  // namespace
