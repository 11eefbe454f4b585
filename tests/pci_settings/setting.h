// Settings to store.
#ifndef ZYMDB_TESTS_PCI_SETTINGS_SETTING_H
#define ZYMDB_TESTS_PCI_SETTINGS_SETTING_H

#include <algorithm>
#include <cstring>
#include <string>

#include "pci_settings/setting_columns.h"

using Setting = ZYMDB_PCI_Config_Setting;

inline char* field_of(Setting& setting, const zymdb::Column& column) {
  return reinterpret_cast<char*>(&setting) + column.offset;
}

template <size_t N>
void set_text(char (&field)[N], const std::string& text) {
  ASSERT_LT(text.size(), N);
  std::memcpy(field, text.c_str(), text.size() + 1);
}

// Every text is its column's name with an asterisk, and every number another one.
inline Setting filled_setting() {
  Setting setting{};
  for (const zymdb::Column& column : zymdb::kSettingColumns)
    if (column.reading == zymdb::Reading::kText)
      std::snprintf(field_of(setting, column), column.size, "%s*", column.name);
  setting.PfaKey = 11;
  setting.Type = 1;
  setting.Flags = 2;
  setting.Mininstances = 3;
  setting.Maxinstances = 4;
  setting.Minim = 5;
  setting.Maxim = 6;
  setting.Step = 7;
  setting.Mins = 8;
  setting.Maxs = 9;
  setting.Numchoices = 10;
  return setting;
}

// The text, cut to the field, in the place of the column's.
inline Setting with_text(Setting setting, const zymdb::Column& column, const std::string& text) {
  std::memset(field_of(setting, column), 0, column.size);
  std::memcpy(field_of(setting, column), text.c_str(), std::min<size_t>(text.size(), column.size - 1u));
  return setting;
}

// A setting that bears an id and is otherwise empty.
inline Setting bare_setting(const std::string& id, uint32_t function = 0) {
  Setting setting{};
  set_text(setting.SettingID, id);
  setting.PfaKey = function;
  return setting;
}

#endif
