// What texts can and cannot do to the settings that are stored.
#include <set>

#include "pci_settings/settings_fixture.h"
#include "support/hostile_texts.h"
#include "zymdb_platform.h"

namespace {

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
  const zymdb::Column& id = zymdb::kWrittenColumns.table.columns[0];
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
