#include <utility>

#include "records/pci_settings.h"
#include "records/reading.h"
#include "records/stored_rows.h"

namespace zymdb::records {
namespace {

constexpr size_t kCount = std::size(kSettingFields);

struct Fields {
  Field<SettingRecord> all[kCount + 1];
};

Value function_address(const SettingRecord& setting) {
  return FunctionKey(setting.PfaKey).text();
}

constexpr Fields setting_fields() {
  Fields fields{};
  fields.all[0] = derived<SettingRecord>("Function", "FUNCTION", "address of the adapter's function (PfaKey)",
                                         function_address);
  for (size_t i = 0; i < kCount; ++i) fields.all[i + 1] = kSettingFields[i].field;
  return fields;
}

constexpr Fields kFields = setting_fields();

// The answer of one count and one list; settings may come and go between the two.
int read_once(FunctionKey function, const SettingChoice& choice, std::vector<SettingRecord>& settings) {
  const char* const prefix = choice.prefix.empty() ? nullptr : choice.prefix.c_str();
  unsigned short count = 0;
  settings.clear();
  int status = zymdb_get_pci_configSet_count(function.value, prefix, &count);
  if (status != ZYM_DB_STATUS_OK || count == 0) return status;
  settings.resize(count);
  status =
      zymdb_get_pci_configSet_list(function.value, prefix, count, settings.data(), choice.flagged, &count);
  settings.resize(count);
  return status;
}

void require_settings(const Reading& reading, int status) {
  if (status == ZYMDB_PCI_SETTING_PARSING) require_settled_settings();
  if (status == ZYMDB_PCI_SETTING_PARSING || status == ZYMDB_PCI_SETTING_COUNT_MISMATCH)
    throw DatabaseError("cannot read the settings: they changed meanwhile; try again", status);
  reading.require(status);
}

std::vector<SettingRecord> read_settings(const Reading& reading, FunctionKey function,
                                         const SettingChoice& choice) {
  constexpr int kTries = 5;
  std::vector<SettingRecord> settings;
  int status = ZYMDB_PCI_SETTING_COUNT_MISMATCH;
  for (int tries = 0; tries < kTries && status == ZYMDB_PCI_SETTING_COUNT_MISMATCH; ++tries)
    status = read_once(function, choice, settings);
  require_settings(reading, status);
  return settings;
}

std::vector<SettingRecord> list_settings(const SettingChoice& choice) {
  const Reading reading("settings");
  require_settled_settings();
  std::vector<SettingRecord> all;
  const auto functions =
      choice.function ? std::set<FunctionKey>{*choice.function} : functions_with_settings(reading);
  for (const FunctionKey function : functions) {
    const auto settings = read_settings(reading, function, choice);
    all.insert(all.end(), settings.begin(), settings.end());
  }
  reading.require_whole();
  return all;
}

}  // namespace

std::set<FunctionKey> functions_with_settings(const Reading& reading) {
  std::set<FunctionKey> functions;
  for (const auto& [id, row] : read_stored_rows(reading, "PCISetting", "_id", {"PfaKey"})) {
    const auto* const key = std::get_if<uint64_t>(&row.at("PfaKey"));
    if (key != nullptr) functions.emplace(static_cast<uint32_t>(*key));
  }
  return functions;
}

void require_settled_settings() {
  if (fileexist(kParsingMarker))
    throw DatabaseError(
        std::string("the settings are being parsed right now (") + kParsingMarker + " exists); try again",
        ZYMDB_PCI_SETTING_PARSING);
}

RecordType settings(std::function<SettingChoice()> which) {
  return describe<SettingRecord>("settings", "Settings of the adapters", kFields.all,
                                 [which = std::move(which)] { return list_settings(which()); })
      .as(Nature::kLogical);
}

}  // namespace zymdb::records
