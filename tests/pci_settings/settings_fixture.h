// Settings on the embedded database.
#ifndef ZYMDB_TESTS_PCI_SETTINGS_SETTINGS_FIXTURE_H
#define ZYMDB_TESTS_PCI_SETTINGS_SETTINGS_FIXTURE_H

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "pci_settings/rewritten_rows.h"
#include "pci_settings/setting.h"
#include "support/inventory.h"
#include "support/parsing_marker.h"

inline constexpr uint32_t kFunction = 0x10000;

class Settings : public InventoryTest {
 protected:
  static void store(const Setting& setting) {
    EXPECT_EQ(extract_PCISetting_info(&setting), ZYM_DB_STATUS_OK) << setting.SettingID;
  }

  // How many rows it rewrites to store a setting.
  static int64_t rewritten_by(const Setting& setting) {
    reset_rewritten_rows();
    store(setting);
    return rewritten_rows();
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

#endif
