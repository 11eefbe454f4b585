#include <map>
#include <utility>

#include "records/pci_settings.h"
#include "records/rows.h"

namespace zymdb::records {
namespace {

struct Pending {
  std::string SettingID;
  uint32_t PfaKey = 0;
  std::string CurrentValue;
  std::string PendingValue;
  std::string AcceptedValue;
};

bool has_function(const Pending& pending) {
  return pending.PfaKey != 0;
}

Value function_address(const Pending& pending) {
  return FunctionKey(pending.PfaKey).text();
}

constexpr Field<Pending> kFields[] = {
    ZYMDB_RECORD_FIELD(Pending, SettingID, "SETTING", "the setting").shown().place(),
    derived<Pending>("Function", "FUNCTION", "address of the adapter's function (PfaKey)", function_address)
        .known_if(has_function)
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(Pending, PfaKey, "KEY", "function key of the adapter")
        .hex(8)
        .known_if(has_function)
        .place(),
    ZYMDB_RECORD_FIELD(Pending, CurrentValue, "CURRENT", "value in force").shown(),
    ZYMDB_RECORD_FIELD(Pending, PendingValue, "PENDING", "value that a user has set").shown(),
    ZYMDB_RECORD_FIELD(Pending, AcceptedValue, "ACCEPTED",
                       "value that the BIOS configuration manager holds for the firmware")
        .shown(),
};

using PendingById = std::map<std::string, Pending>;

void add_settings_that_differ(const Reading& reading, PendingById& pending) {
  Rows rows(reading, get_dmdb_handle(), "PCISetting",
            {"SettingID", "PfaKey", "CurrentValue", "PendingValue"});
  while (rows.step()) {
    Pending setting{rows.text("SettingID"),
                    rows.number("PfaKey"),
                    rows.text("CurrentValue"),
                    rows.text("PendingValue"),
                    {}};
    const auto accepted = pending.find(setting.SettingID);
    const bool differs = !setting.PendingValue.empty() && setting.PendingValue != setting.CurrentValue;
    if (accepted != pending.end()) setting.AcceptedValue = accepted->second.AcceptedValue;
    if (accepted != pending.end() || differs) pending[setting.SettingID] = std::move(setting);
  }
}

void add_accepted_values(const Reading& reading, PendingById& pending) {
  const HandlePtr manager = open_properties();
  Rows rows(reading, manager.get(), "biosPendingValue", {"name", "value"});
  while (rows.step()) {
    const auto id = rows.text("name");
    pending[id] = {id, 0, {}, {}, rows.text("value")};
  }
}

std::vector<Pending> list_pending() {
  const Reading reading("pending values");
  require_settled_settings();
  PendingById by_id;
  add_accepted_values(reading, by_id);
  add_settings_that_differ(reading, by_id);
  reading.require_whole();
  std::vector<Pending> all;
  for (auto& [id, pending] : by_id) all.push_back(std::move(pending));
  return all;
}

}  // namespace

RecordType pending_settings() {
  return describe<Pending>("pending", "Values that are to take effect later", kFields, list_pending);
}

}  // namespace zymdb::records
