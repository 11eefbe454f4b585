// Settings of adapters, and the values that are to take effect later.
#ifndef ZYMDB_RECORDS_PCI_SETTINGS_H
#define ZYMDB_RECORDS_PCI_SETTINGS_H

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <type_traits>

#include "common/pci_address.h"
#include "records/reading.h"
#include "records/record.h"
#include "zymdb_pci_settings.h"

namespace zymdb::records {

using SettingRecord = ZYMDB_PCI_Config_Setting;

enum class SettingType : uint8_t { kText, kUnsigned, kSigned };

// A field of a setting, also as what is read from a settings file.
struct SettingField {
  Field<SettingRecord> field;
  SettingType type;
  size_t offset;  // in the record
  size_t size;    // in bytes; of a text with its NUL

  constexpr SettingField shown() const { return {field.shown(), type, offset, size}; }
  constexpr SettingField long_text() const { return {field.long_text(), type, offset, size}; }
  constexpr SettingField place() const { return {field.place(), type, offset, size}; }
  constexpr SettingField hex(unsigned digits) const { return {field.hex(digits), type, offset, size}; }
};

template <class Member>
constexpr SettingType setting_type() {
  if (std::is_array_v<Member>) return SettingType::kText;
  return std::is_signed_v<Member> ? SettingType::kSigned : SettingType::kUnsigned;
}

#define ZYMDB_SETTING_FIELD(MEMBER, HEADING, MEANING)                                     \
  SettingField {                                                                          \
    ZYMDB_RECORD_FIELD(SettingRecord, MEMBER, HEADING, MEANING),                          \
        setting_type<decltype(SettingRecord::MEMBER)>(), offsetof(SettingRecord, MEMBER), \
        sizeof(SettingRecord::MEMBER)                                                     \
  }

// In the order of the record.
inline constexpr SettingField kSettingFields[] = {
    ZYMDB_SETTING_FIELD(SettingID, "SETTING", "unique id").shown().place(),
    ZYMDB_SETTING_FIELD(SettingName, "NAME", "attribute name").shown(),
    ZYMDB_SETTING_FIELD(PfaKey, "KEY", "function key of the adapter").hex(8).place(),
    ZYMDB_SETTING_FIELD(CurrentValue, "CURRENT", "value in force").shown(),
    ZYMDB_SETTING_FIELD(PendingValue, "PENDING", "value to take effect later").shown(),
    ZYMDB_SETTING_FIELD(SuppressIf, "SUPPRESSIF", "expression: when to hide it"),
    ZYMDB_SETTING_FIELD(GrayIf, "GRAYIF", "expression: when it cannot be changed"),
    ZYMDB_SETTING_FIELD(GroupID, "GROUP", "identifier of its group"),
    ZYMDB_SETTING_FIELD(GroupName, "GROUPNAME", "name of its group"),
    ZYMDB_SETTING_FIELD(GroupSuppressIf, "GROUPSUPPRESSIF", "expression: when to hide the group"),
    ZYMDB_SETTING_FIELD(GroupGrayIf, "GROUPGRAYIF", "expression: when the group cannot be changed"),
    ZYMDB_SETTING_FIELD(Mriname, "MRINAME", "name in machine-readable information"),
    ZYMDB_SETTING_FIELD(ShortDesc, "TITLE", "short description").long_text().shown(),
    ZYMDB_SETTING_FIELD(FullDesc, "DESCRIPTION", "long description").long_text(),
    ZYMDB_SETTING_FIELD(Type, "TYPE", "type code"),
    ZYMDB_SETTING_FIELD(Flags, "FLAGS", "flag bits; --flagged asks for bit 1 (value 2)"),
    ZYMDB_SETTING_FIELD(Mininstances, "MININSTANCES", "fewest instances"),
    ZYMDB_SETTING_FIELD(Maxinstances, "MAXINSTANCES", "most instances"),
    ZYMDB_SETTING_FIELD(Defvalue, "DEFAULT", "default value"),
    ZYMDB_SETTING_FIELD(Mfg_default, "MFGDEFAULT", "manufacturing's default value"),
    ZYMDB_SETTING_FIELD(Defaultaction, "DEFAULTACTION", "default action"),
    ZYMDB_SETTING_FIELD(RecordId, "RECORD", "record identifier"),
    ZYMDB_SETTING_FIELD(Minim, "MIN", "a number's lower bound"),
    ZYMDB_SETTING_FIELD(Maxim, "MAX", "a number's upper bound"),
    ZYMDB_SETTING_FIELD(Step, "STEP", "a number's step"),
    ZYMDB_SETTING_FIELD(Mins, "MINTEXT", "a text's lower bound"),
    ZYMDB_SETTING_FIELD(Maxs, "MAXTEXT", "a text's upper bound"),
    ZYMDB_SETTING_FIELD(Pattern, "PATTERN", "pattern that a value has to match"),
    ZYMDB_SETTING_FIELD(Numchoices, "NUMCHOICES", "number of choices"),
    ZYMDB_SETTING_FIELD(Choices, "CHOICES", "the choices"),
};
#undef ZYMDB_SETTING_FIELD

// The file that keeps readers away from the settings while they are being rewritten.
inline constexpr char kParsingMarker[] = "/tmp/dp.ucmparsing";

// Throws DatabaseError while the settings are being parsed.
void require_settled_settings();

// The functions that have settings, by key.
std::set<FunctionKey> functions_with_settings(const Reading& reading);

// Which settings are wanted: of all functions when nothing is set.
struct SettingChoice {
  std::optional<FunctionKey> function;
  std::string prefix;  // of the id; "%" and "_" stand for any
  bool flagged = false;
};

// Asked when the settings are listed.
RecordType settings(std::function<SettingChoice()> which = [] { return SettingChoice(); });

// Values that differ from the ones in force, and those that the BIOS configuration manager holds.
RecordType pending_settings();

}  // namespace zymdb::records

#endif
