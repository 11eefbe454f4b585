// The fields of a setting, described once: the columns of listings and the keys of settings files.
#ifndef ZYMDB_TOOL_SHOW_SETTING_FIELDS_H
#define ZYMDB_TOOL_SHOW_SETTING_FIELDS_H

#include <array>
#include <cstddef>
#include <iterator>
#include <type_traits>

#include "show/listing.h"
#include "zymdb_pci_settings.h"

namespace zymdb::tool {

using SettingRecord = ZYMDB_PCI_Config_Setting;

enum class SettingType : uint8_t { kText, kUnsigned, kSigned };

struct SettingField {
  Column<SettingRecord> column;
  SettingType type;
  size_t offset;  // in the record
  size_t size;    // in bytes; of a text with its NUL
};

template <class Field>
constexpr SettingType setting_type() {
  if (std::is_array_v<Field>) return SettingType::kText;
  return std::is_signed_v<Field> ? SettingType::kSigned : SettingType::kUnsigned;
}

// The same field as one that gives way on a narrow terminal.
constexpr SettingField long_text(SettingField field) {
  field.column = long_text(field.column);
  return field;
}

// The record is packed: its numbers are passed by value, since references to them would not be aligned.
template <size_t N>
Value setting_value(const char (&text)[N]) {
  return std::string(text, strnlen(text, N));
}
inline Value setting_value(uint32_t number) {
  return uint64_t{number};
}
inline Value setting_value(int32_t number) {
  return int64_t{number};
}

#define ZYMDB_SETTING_FIELD(NAME, HEADING, HELP, SHOWN)                                 \
  SettingField {                                                                        \
    {{#NAME, HEADING, HELP, SHOWN,                                                      \
      std::is_array_v<decltype(SettingRecord::NAME)> ? Kind::kText : Kind::kNumber, 0}, \
     [](const SettingRecord& setting) { return setting_value(setting.NAME); }},         \
        setting_type<decltype(SettingRecord::NAME)>(), offsetof(SettingRecord, NAME),   \
        sizeof(SettingRecord::NAME)                                                     \
  }

// In the order of the record.
inline constexpr SettingField kSettingFields[] = {
    ZYMDB_SETTING_FIELD(SettingID, "SETTING", "unique id", Shown::kByDefault),
    ZYMDB_SETTING_FIELD(SettingName, "NAME", "attribute name", Shown::kByDefault),
    ZYMDB_SETTING_FIELD(PfaKey, "KEY", "function key of the adapter", Shown::kNo),
    ZYMDB_SETTING_FIELD(CurrentValue, "CURRENT", "value in force", Shown::kByDefault),
    ZYMDB_SETTING_FIELD(PendingValue, "PENDING", "value to take effect later", Shown::kByDefault),
    ZYMDB_SETTING_FIELD(SuppressIf, "SUPPRESSIF", "expression: when to hide it", Shown::kNo),
    ZYMDB_SETTING_FIELD(GrayIf, "GRAYIF", "expression: when it cannot be changed", Shown::kNo),
    ZYMDB_SETTING_FIELD(GroupID, "GROUP", "identifier of its group", Shown::kNo),
    ZYMDB_SETTING_FIELD(GroupName, "GROUPNAME", "name of its group", Shown::kNo),
    ZYMDB_SETTING_FIELD(GroupSuppressIf, "GROUPSUPPRESSIF", "expression: when to hide the group", Shown::kNo),
    ZYMDB_SETTING_FIELD(GroupGrayIf, "GROUPGRAYIF", "expression: when the group cannot be changed",
                        Shown::kNo),
    ZYMDB_SETTING_FIELD(Mriname, "MRINAME", "name in machine-readable information", Shown::kNo),
    long_text(ZYMDB_SETTING_FIELD(ShortDesc, "TITLE", "short description", Shown::kByDefault)),
    long_text(ZYMDB_SETTING_FIELD(FullDesc, "DESCRIPTION", "long description", Shown::kNo)),
    ZYMDB_SETTING_FIELD(Type, "TYPE", "type code", Shown::kNo),
    ZYMDB_SETTING_FIELD(Flags, "FLAGS", "flag bits; --flagged asks for bit 1 (value 2)", Shown::kNo),
    ZYMDB_SETTING_FIELD(Mininstances, "MININSTANCES", "fewest instances", Shown::kNo),
    ZYMDB_SETTING_FIELD(Maxinstances, "MAXINSTANCES", "most instances", Shown::kNo),
    ZYMDB_SETTING_FIELD(Defvalue, "DEFAULT", "default value", Shown::kNo),
    ZYMDB_SETTING_FIELD(Mfg_default, "MFGDEFAULT", "manufacturing's default value", Shown::kNo),
    ZYMDB_SETTING_FIELD(Defaultaction, "DEFAULTACTION", "default action", Shown::kNo),
    ZYMDB_SETTING_FIELD(RecordId, "RECORD", "record identifier", Shown::kNo),
    ZYMDB_SETTING_FIELD(Minim, "MIN", "a number's lower bound", Shown::kNo),
    ZYMDB_SETTING_FIELD(Maxim, "MAX", "a number's upper bound", Shown::kNo),
    ZYMDB_SETTING_FIELD(Step, "STEP", "a number's step", Shown::kNo),
    ZYMDB_SETTING_FIELD(Mins, "MINTEXT", "a text's lower bound", Shown::kNo),
    ZYMDB_SETTING_FIELD(Maxs, "MAXTEXT", "a text's upper bound", Shown::kNo),
    ZYMDB_SETTING_FIELD(Pattern, "PATTERN", "pattern that a value has to match", Shown::kNo),
    ZYMDB_SETTING_FIELD(Numchoices, "NUMCHOICES", "number of choices", Shown::kNo),
    ZYMDB_SETTING_FIELD(Choices, "CHOICES", "the choices", Shown::kNo),
};
#undef ZYMDB_SETTING_FIELD

}  // namespace zymdb::tool

#endif
