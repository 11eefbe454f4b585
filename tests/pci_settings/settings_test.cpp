// Storing, saving and reading settings on the embedded database.
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <set>
#include <vector>

#include "pci_settings/setting.h"
#include "support/hostile_texts.h"
#include "support/inventory.h"
#include "support/parsing_marker.h"
#include "zymdb_platform.h"

using testing::ElementsAre;

namespace {

int64_t rows_rewritten = 0;

}  // namespace

// Stands between the library and its database, and counts what the library does not ask for.
extern "C" [[gnu::visibility("default")]] int zym_db_update(_zym_db_handle_t* handle, const char* table,
                                                            const zym_db_content_values_t* values,
                                                            const char* where, const _zym_db_param_t* params,
                                                            int nparams, int64_t* changed) {
  static const auto update = reinterpret_cast<decltype(&zym_db_update)>(dlsym(RTLD_NEXT, "zym_db_update"));
  int64_t rows = 0;
  const int status = update(handle, table, values, where, params, nparams, &rows);
  rows_rewritten += rows;
  if (changed != nullptr) *changed = rows;
  return status;
}

namespace {

constexpr uint32_t kFunction = 0x10000;

class Settings : public InventoryTest {
 protected:
  static void store(const Setting& setting) {
    EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_OK) << setting.SettingID;
  }

  // How many rows it rewrites to store a setting.
  static int64_t rewritten_by(const Setting& setting) {
    rows_rewritten = 0;
    store(setting);
    return rows_rewritten;
  }

  static std::vector<Setting> read(uint32_t function, const char* prefix = nullptr, bool flagged = false) {
    uint16_t count = 0;
    EXPECT_EQ(zymdb_get_pci_configSet_count(function, prefix, &count), ZYM_DB_STATUS_OK);
    std::vector<Setting> settings(count);
    EXPECT_EQ(zymdb_get_pci_configSet_list(function, prefix, count, settings.data(), flagged, &count),
              ZYM_DB_STATUS_OK);
    settings.resize(count);
    return settings;
  }

  static std::vector<std::string> ids(const std::vector<Setting>& settings) {
    std::vector<std::string> ids;
    for (const Setting& setting : settings) ids.push_back(setting.SettingID);
    return ids;
  }

  static bool equal(const Setting& a, const Setting& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

  ParsingMarker marker_;
};

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
  EXPECT_EQ(read(kFunction)[0].Mininstances, -1);
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

  static std::string pending() { return rows("PCISetting", {"SettingID", "PendingValue"}); }

  _zym_db_handle_t* properties_;
};

TEST_F(SavedSettings, ArePendingAndDoNotChangeWhatIsInForce) {
  ZYMDB_PCI_Config_Set list[] = {entry("A.x", "new"), entry("C.z", "7")};
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 2), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("PCISetting", {"SettingID", "CurrentValue", "PendingValue"}),
            "A.x|old|new\nB.y|old|old\nC.z|old|7\n");
  EXPECT_EQ(list[0].Result, 0u);
  EXPECT_EQ(list[1].Result, 0u);
}

TEST_F(SavedSettings, WithTheValueTheyHaveAreNotWritten) {
  ZYMDB_PCI_Config_Set list[] = {entry("A.x", "old"), entry("B.y", "new")};
  rows_rewritten = 0;
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 2), ZYM_DB_STATUS_OK);
  EXPECT_EQ(pending(), "A.x|old\nB.y|new\nC.z|old\n");
  EXPECT_EQ(rows_rewritten, 1);
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
  EXPECT_EQ(list[0].Result, 0u);
  EXPECT_EQ(list[1].Result, uint32_t{ZYM_DB_STATUS_NOT_FOUND});
  EXPECT_EQ(list[2].Result, 0u);
  EXPECT_EQ(pending(), "A.x|1\nB.y|2\nC.z|3\n");
}

TEST_F(SavedSettings, WithAnUnknownOneAmongThemChangeNothing) {
  ZYMDB_PCI_Config_Set list[] = {entry("A.x", "1"), entry("no such setting", "2"), entry("C.z", "3")};
  EXPECT_EQ(zymdb_save_pci_configSet_list(list, 3), ZYMDB_PCI_SETTING_ID_NOEXIT);
  EXPECT_EQ(pending(), "A.x|old\nB.y|old\nC.z|old\n");
  EXPECT_EQ(list[0].Result, 0xABCDEF01u);
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

class HostileSettings : public Settings {
 protected:
  // One transaction: to wait for the disk after every text would take long.
  HostileSettings() {
    EXPECT_EQ(zym_db_begin(get_dmdb_handle()), ZYM_DB_STATUS_OK);
    store(bystander());
  }
  ~HostileSettings() override { EXPECT_EQ(zym_db_commit(get_dmdb_handle()), ZYM_DB_STATUS_OK); }

  static Setting bystander() {
    Setting setting = filled_setting();
    set_text(setting.SettingID, "bystander");
    setting.PfaKey = 1;
    return setting;
  }

  static bool bystander_is_intact() {
    const std::vector<Setting> settings = read(1);
    return settings.size() == 1 && equal(settings[0], bystander());
  }
};

std::vector<std::string> hostile_values() {
  std::vector<std::string> texts = hostile_texts();
  for (const char* text : {"it's", "5\" disk", "100%", "%s%n%p", "%%", "a\nb", "\x80", "\xf5\x80\x80\x80",
                           "\xed\xa0\x80", "caf\xc3\xa9"})
    texts.push_back(text);
  for (const char* text : {"x", "\"", "'", "%", "((", "\xff"}) {
    std::string expression;
    while (expression.size() < 1024) expression += text;
    texts.push_back(expression);
  }
  return texts;
}

// A row keeps what it was, or holds exactly the bytes.
TEST_F(HostileSettings, InAnyTextFailOrAreStoredAsTheyAre) {
  for (const zymdb::Column& column : zymdb::kComparedColumns) {
    if (column.reading != zymdb::Reading::kText) continue;
    for (const std::string& text : hostile_values()) {
      SCOPED_TRACE(std::string(column.name) + ": " + text.substr(0, 100));
      const Setting hostile = with_text(filled_setting(), column, text);
      const bool had_quote = text.find('"') != std::string::npos;
      store(filled_setting());
      const int status = extract_PCISetting_info(&hostile);
      const std::vector<Setting> settings = read(11);
      ASSERT_EQ(settings.size(), 1u);
      EXPECT_TRUE(equal(settings[0], status == ZYM_DB_STATUS_OK ? hostile : filled_setting()));
      EXPECT_TRUE(status == ZYM_DB_STATUS_OK || had_quote);
    }
  }
  EXPECT_TRUE(bystander_is_intact());
}

// What is not quoted is stored under its own id; a lone quote breaks the address.
TEST_F(HostileSettings, InAnIdFailOrAreStoredAsTheyAre) {
  const zymdb::Column& id = zymdb::kWrittenColumns[0];
  std::set<std::string> stored;
  for (const std::string& text : hostile_values()) {
    if (text.find('"') != std::string::npos) continue;
    SCOPED_TRACE(text.substr(0, 100));
    const Setting hostile = with_text(filled_setting(), id, text);
    for (int time = 0; time < 2; ++time) EXPECT_EQ(extract_PCISetting_info(&hostile), ZYM_DB_STATUS_OK);
    const std::vector<Setting> settings = read(11);
    // Some texts are the same when cut.
    if (!stored.insert(hostile.SettingID).second) continue;
    ASSERT_EQ(settings.size(), stored.size());
    EXPECT_TRUE(equal(settings.back(), hostile));
  }
  for (const char* text : {"\"", "a\"b", "\"\"\""}) {
    const Setting hostile = with_text(filled_setting(), id, text);
    EXPECT_EQ(extract_PCISetting_info(&hostile), ZYM_DB_STATUS_ERROR) << text;
  }
  EXPECT_EQ(read(11).size(), stored.size());
  EXPECT_TRUE(bystander_is_intact());
}

TEST_F(HostileSettings, PrefixesReadSettingsOfTheirAdapterOrNone) {
  for (const std::string& text : hostile_values()) {
    uint16_t count = 0;
    if (zymdb_get_pci_configSet_count(1, text.c_str(), &count) != ZYM_DB_STATUS_OK) continue;
    EXPECT_LE(count, 1u) << text;
  }
  EXPECT_TRUE(bystander_is_intact());
}

}  // namespace
