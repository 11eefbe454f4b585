// Storing and reading settings on the embedded database.
#include "pci_settings/settings_fixture.h"

using testing::ElementsAre;

namespace {

// Another text or number in one field.
Setting with_changed(Setting setting, const zymdb::Column& column) {
  if (column.reading == zymdb::Reading::kText) return with_text(setting, column, "changed");
  ++field_of(setting, column)[0];
  return setting;
}

TEST_F(Settings, AreReadAsTheyWereStored) {
  const Setting setting = filled_setting();
  store(setting);
  const std::vector<Setting> stored = read(setting.PfaKey);
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_TRUE(equal(stored[0], setting));
}

TEST_F(Settings, FillEveryFieldToItsLastByte) {
  Setting setting{};
  for (const zymdb::Column& column : zymdb::kSettingColumns)
    if (column.reading == zymdb::Reading::kText)
      std::memset(field_of(setting, column), 'x', column.size - 1u);
  setting.PfaKey = kFunction;
  setting.Maxim = UINT32_MAX;
  setting.Mininstances = INT32_MIN;
  store(setting);
  const std::vector<Setting> stored = read(kFunction);
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_TRUE(equal(stored[0], setting));
}

TEST_F(Settings, StoredAgainWithoutAChangeAreNotWritten) {
  store(filled_setting());
  EXPECT_EQ(rewritten_by(filled_setting()), 0);
  store(bare_setting("empty", kFunction));
  EXPECT_EQ(rewritten_by(bare_setting("empty", kFunction)), 0);
}

TEST_F(Settings, AreRewrittenWhenAnyOneFieldDiffers) {
  store(filled_setting());
  for (const zymdb::Column& column : zymdb::kComparedColumns) {
    const Setting changed = with_changed(filled_setting(), column);
    EXPECT_EQ(rewritten_by(changed), 1) << column.name;
    EXPECT_EQ(rewritten_by(changed), 0) << column.name;
    const std::vector<Setting> stored = read(changed.PfaKey);
    ASSERT_EQ(stored.size(), 1u) << column.name;
    EXPECT_TRUE(equal(stored[0], changed)) << column.name;
    EXPECT_EQ(rewritten_by(filled_setting()), 1) << column.name;
  }
}

TEST_F(Settings, AreRewrittenWhenATextBecomesEmptyOrNotEmpty) {
  store(filled_setting());
  for (const zymdb::Column& column : zymdb::kComparedColumns) {
    if (column.reading != zymdb::Reading::kText) continue;
    Setting emptied = filled_setting();
    field_of(emptied, column)[0] = '\0';
    EXPECT_EQ(rewritten_by(emptied), 1) << column.name;
    EXPECT_EQ(rows("PCISetting", {column.name}), "NULL\n");
    EXPECT_EQ(rewritten_by(emptied), 0) << column.name;
    EXPECT_EQ(rewritten_by(filled_setting()), 1) << column.name;
  }
}

TEST_F(Settings, WithAnotherIdAreOthers) {
  store(filled_setting());
  Setting other = filled_setting();
  set_text(other.SettingID, "another");
  EXPECT_EQ(rewritten_by(other), 0);
  EXPECT_THAT(ids(read(other.PfaKey)), ElementsAre("SettingID*", "another"));
}

TEST_F(Settings, WithANegativeNumberAreStoredSoAndWrittenEachTime) {
  Setting setting = bare_setting("A.x", kFunction);
  setting.Mininstances = -1;
  store(setting);
  EXPECT_EQ(rows("PCISetting", {"Mininstances"}), "-1\n");
  EXPECT_EQ(rewritten_by(setting), 1);
  EXPECT_EQ(rewritten_by(setting), 1);
  EXPECT_EQ(int32_t{read(kFunction)[0].Mininstances}, -1);
}

TEST_F(Settings, WithAQuoteInATextAreStoredOnceAndNeverRefreshed) {
  Setting setting = bare_setting("A.x", kFunction);
  set_text(setting.ShortDesc, "5\" disk");
  store(setting);
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_ERROR) << "though it is equal";
  set_text(setting.SettingName, "another");
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(rows("PCISetting", {"SettingName", "ShortDesc"}), "NULL|5\" disk\n");
}

TEST_F(Settings, WithAQuoteInTheIdAreNeverStored) {
  const Setting setting = bare_setting("A\".x", kFunction);
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(rows("PCISetting", {"SettingID"}), "");
}

TEST_F(Settings, ComeUnderTheKeysOfTheirAdapters) {
  store(bare_setting("A.x", 1));
  store(bare_setting("A.y", 2));
  store(bare_setting("B.x", 1));
  EXPECT_THAT(ids(read(1)), ElementsAre("A.x", "B.x"));
  EXPECT_THAT(ids(read(2)), ElementsAre("A.y"));
  EXPECT_THAT(ids(read(3)), ElementsAre());
}

TEST_F(Settings, AreChosenByTheBeginningOfTheirIds) {
  for (const char* id : {"A.x", "A.y", "AA.x", "B.x"}) store(bare_setting(id, kFunction));
  EXPECT_THAT(ids(read(kFunction, "A.")), ElementsAre("A.x", "A.y"));
  EXPECT_THAT(ids(read(kFunction, "A")), ElementsAre("A.x", "A.y", "AA.x"));
  EXPECT_THAT(ids(read(kFunction, "")), ElementsAre("A.x", "A.y", "AA.x", "B.x"));
  EXPECT_THAT(ids(read(kFunction, "%.x")), ElementsAre("A.x", "AA.x", "B.x"));
}

TEST_F(Settings, MayBeReadFlaggedOnly) {
  for (const auto& [id, flags] : {std::pair{"a", 2}, {"b", 1}, {"c", 0}, {"d", 3}, {"e", 4}}) {
    Setting setting = bare_setting(id, kFunction);
    setting.Flags = static_cast<uint32_t>(flags);
    store(setting);
  }
  EXPECT_THAT(ids(read(kFunction, nullptr, true)), ElementsAre("a", "d"));
}

TEST_F(Settings, OfTheVendorWithoutSettingsAreNotCounted) {
  given("PCIs", {{"FunKey", kFunction}, {"VendorId", 0x1000}});
  store(bare_setting("A.x", kFunction));
  uint16_t count = 9;
  EXPECT_EQ(zymdb_get_pci_configSet_count(kFunction, nullptr, &count), ZYM_DB_STATUS_OK);
  EXPECT_EQ(count, 0u);
}

TEST_F(Settings, HaveNoFamiliesForTheCallerOfAnOrdinaryClient) {
  store(bare_setting("A.x", kFunction));
  store(bare_setting("B.x", kFunction));
  char ids[64] = "as it was";
  EXPECT_EQ(zymdb_get_pci_configID(kFunction, ids), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(ids, "as it was");
}

TEST_F(Settings, AreRefusedToEveryQueryWhileTheyAreBeingParsed) {
  marker_.set();
  char ids[64] = "";
  uint16_t count = 0;
  EXPECT_EQ(zymdb_get_pci_configID(kFunction, ids), ZYMDB_PCI_SETTING_PARSING);
  EXPECT_EQ(zymdb_get_pci_configSet_count(kFunction, nullptr, &count), ZYMDB_PCI_SETTING_PARSING);
  EXPECT_EQ(zymdb_get_pci_configSet_list(kFunction, nullptr, 0, nullptr, 0, &count),
            ZYMDB_PCI_SETTING_PARSING);
  store(bare_setting("A.x", kFunction));
}

TEST_F(Settings, NeedADatabase) {
  lose_database();
  const Setting setting = filled_setting();
  ZYMDB_PCI_Config_Set set{};
  EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_save_pci_configSet_list(&set, 1), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
