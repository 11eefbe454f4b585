// Saving new values on the embedded database, with its BIOS configuration manager.
#include "pci_settings/settings_fixture.h"

namespace {

class SavedSettings : public Settings {
 protected:
  SavedSettings() : properties_(zym_db_open("localhost", "root", "", "propertiesdb", 0)) {
    for (const char* id : {"A.x", "B.y", "C.z"}) {
      Setting setting = bare_setting(id, kFunction);
      set_text(setting.CurrentValue, "old");
      set_text(setting.PendingValue, "old");
      store(setting);
    }
  }
  ~SavedSettings() override { zym_db_close(properties_); }

  // From the first on, the firmware knows these attributes alone.
  void given_attribute(const char* name) {
    zym_db_content_values_t* const values = zym_db_get_content_values(properties_);
    zym_db_content_put_text(values, "name", name);
    EXPECT_EQ(zym_db_insert(properties_, "biosAttribute", values, 0, nullptr), ZYM_DB_STATUS_OK);
    zym_db_free_content_values(values);
  }

  static ZYMDB_PCI_Config_Set entry(const std::string& id, const std::string& value) {
    ZYMDB_PCI_Config_Set entry{};
    set_text(entry.SettingID, id);
    set_text(entry.PendingValue, value);
    entry.Result = 0xABCDEF01;
    return entry;
  }

  // By value: the entry is packed.
  static uint32_t result_of(const ZYMDB_PCI_Config_Set& entry) { return entry.Result; }

  static std::string pending() { return rows("PCISetting", {"SettingID", "PendingValue"}); }

  _zym_db_handle_t* properties_;
};

TEST_F(SavedSettings, ArePendingAndDoNotChangeWhatIsInForce) {
  ZYMDB_PCI_Config_Set list[] = {entry("A.x", "new"), entry("C.z", "7")};
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 2), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("PCISetting", {"SettingID", "CurrentValue", "PendingValue"}),
            "A.x|old|new\nB.y|old|old\nC.z|old|7\n");
  EXPECT_EQ(result_of(list[0]), 0u);
  EXPECT_EQ(result_of(list[1]), 0u);
}

TEST_F(SavedSettings, WithTheValueTheyHaveAreNotWritten) {
  ZYMDB_PCI_Config_Set list[] = {entry("A.x", "old"), entry("B.y", "new")};
  reset_rewritten_rows();
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 2), ZYM_DB_STATUS_OK);
  EXPECT_EQ(pending(), "A.x|old\nB.y|new\nC.z|old\n");
  EXPECT_EQ(rewritten_rows(), 1);
}

TEST_F(SavedSettings, StoredWithoutAPendingValueGetNone) {
  store(bare_setting("D.w", kFunction));
  ZYMDB_PCI_Config_Set list[] = {entry("D.w", "new")};
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(pending(), "A.x|old\nB.y|old\nC.z|old\nD.w|NULL\n");
}

TEST_F(SavedSettings, RefusedByTheManagerKeepTheirPendingValues) {
  given_attribute("A.x");
  given_attribute("C.z");
  ZYMDB_PCI_Config_Set list[] = {entry("A.x", "1"), entry("B.y", "2"), entry("C.z", "3")};
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 3), ZYMDB_PCI_SETTING_BIOS_SET_FAIL);
  EXPECT_EQ(result_of(list[0]), 0u);
  EXPECT_EQ(result_of(list[1]), uint32_t{ZYM_DB_STATUS_NOT_FOUND});
  EXPECT_EQ(result_of(list[2]), 0u);
  EXPECT_EQ(pending(), "A.x|1\nB.y|2\nC.z|3\n");
}

TEST_F(SavedSettings, WithAnUnknownOneAmongThemChangeNothing) {
  ZYMDB_PCI_Config_Set list[] = {entry("A.x", "1"), entry("no such setting", "2"), entry("C.z", "3")};
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 3), ZYMDB_PCI_SETTING_ID_NOEXIT);
  EXPECT_EQ(pending(), "A.x|old\nB.y|old\nC.z|old\n");
  EXPECT_EQ(result_of(list[0]), 0xABCDEF01u);
}

TEST_F(SavedSettings, WithAQuoteInTheIdOrTheValueChangeNothing) {
  ZYMDB_PCI_Config_Set id = entry("A'x", "1");
  EXPECT_EQ(zymdb_save_pci_configSet_list(&id, 1), ZYMDB_PCI_SETTING_ID_NOEXIT);
  ZYMDB_PCI_Config_Set value = entry("A.x", "it's");
  EXPECT_EQ(zymdb_save_pci_configSet_list(&value, 1), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(pending(), "A.x|old\nB.y|old\nC.z|old\n");
}

TEST_F(SavedSettings, OfNoneAreAccepted) {
  EXPECT_EQ(zymdb_save_pci_configSet_list(nullptr, 0), ZYM_DB_STATUS_OK);
}

TEST_F(SavedSettings, ParsedAgainLoseTheirPendingValues) {
  ZYMDB_PCI_Config_Set list[] = {entry("A.x", "new")};
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 1), ZYM_DB_STATUS_OK);
  Setting parsed = bare_setting("A.x", kFunction);
  set_text(parsed.PendingValue, "parsed");
  store(parsed);
  EXPECT_EQ(pending(), "A.x|parsed\nB.y|old\nC.z|old\n");
}

}  // namespace
