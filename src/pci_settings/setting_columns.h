// The fields of a setting and their columns, in the three orders that the operations need.
#ifndef ZYMDB_SRC_PCI_SETTINGS_SETTING_COLUMNS_H
#define ZYMDB_SRC_PCI_SETTINGS_SETTING_COLUMNS_H

#include "db/column.h"
#include "zymdb_pci_settings.h"

namespace zymdb {

// As queries list them. The flags stand first: they decide whether the rest of a row is read.
inline constexpr auto kSettingColumns = columns_of<ZYMDB_PCI_Config_Setting>({
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Flags),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, GroupName),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, SettingID),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, PfaKey),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, CurrentValue),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, PendingValue),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, SuppressIf),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, GrayIf),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, GroupID),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, GroupSuppressIf),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, GroupGrayIf),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Mriname),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, ShortDesc),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, FullDesc),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Type),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, SettingName),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Mininstances),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Maxinstances),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Defvalue),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Mfg_default),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Defaultaction),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, RecordId),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Minim),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Maxim),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Step),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Mins),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Maxs),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Pattern),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Numchoices),
    ZYMDB_FIELD(ZYMDB_PCI_Config_Setting, Choices),
});

// As a parsed setting is written.
inline constexpr auto kWrittenColumns =
    written(in_order(kSettingColumns,
                     {"SettingID",   "SettingName",   "PendingValue", "CurrentValue", "PfaKey",
                      "SuppressIf",  "GrayIf",        "GroupID",      "GroupName",    "GroupSuppressIf",
                      "GroupGrayIf", "Mriname",       "ShortDesc",    "FullDesc",     "Defvalue",
                      "Mfg_default", "Defaultaction", "RecordId",     "Type",         "Flags",
                      "Minim",       "Maxim",         "Step",         "Mins",         "Maxs",
                      "Pattern",     "Numchoices",    "Choices",      "Mininstances", "Maxinstances"}),
            Puts::kWideOrNull);

// As it is compared with the row that bears its id.
inline constexpr auto kComparedColumns =
    in_order(kSettingColumns,
             {"PendingValue", "SettingName", "CurrentValue",    "PfaKey",        "SuppressIf",  "GrayIf",
              "GroupID",      "GroupName",   "GroupSuppressIf", "GroupGrayIf",   "Mriname",     "ShortDesc",
              "FullDesc",     "Defvalue",    "Mfg_default",     "Defaultaction", "RecordId",    "Type",
              "Flags",        "Minim",       "Maxim",           "Step",          "Mins",        "Maxs",
              "Pattern",      "Numchoices",  "Choices",         "Mininstances",  "Maxinstances"});

static_assert(kSettingColumns.size() == 30 && kWrittenColumns.table.size() == 30);
static_assert(kComparedColumns.size() == 29, "every column but the id, which addresses the row");

}  // namespace zymdb

#endif
