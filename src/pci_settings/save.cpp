#include <span>

#include "controller/bios_configuration.h"
#include "controller/ruvo_log.h"
#include "db/filter.h"
#include "db/rows.h"
#include "db/values.h"
#include "zymdb_pci_settings.h"

using namespace zymdb;

namespace {

using Entry = ZYMDB_PCI_Config_Set;

constexpr uint32_t kAdapterAttribute = 2;  // the kind of an attribute, to the manager

bool all_exist(_zym_db_handle_t* handle, std::span<const Entry> entries) {
  for (const Entry& entry : entries) {
    const Filter<96> filter(" SettingID='%s'", entry.SettingID);
    if (find_db_record(handle, "PCISetting", filter) > 0) continue;
    log_if_cut(filter);
    return false;
  }
  return true;
}

int write_pending_value(Values& values, const Entry& entry) {
  values.clear();
  values.put("PendingValue", entry.PendingValue);
  // A row that has the value already is not written; neither is one whose pending value is NULL.
  const Filter<192> filter(" SettingID='%s' AND  PendingValue!='%s'", entry.SettingID, entry.PendingValue);
  const int status = values.update("PCISetting", filter);
  if (status == ZYM_DB_STATUS_OK) return status;
  ruvo_log::logErr("zymdb_update failed, filter: %s, value: %s(0x%p), rc: %d", filter.text(), "PendingValue",
                   static_cast<const void*>(entry.PendingValue), status);
  log_if_cut(filter);
  return status;
}

int write_pending_values(_zym_db_handle_t* handle, std::span<const Entry> entries) {
  Values values(handle);
  if (!values) {
    ruvo_log::logErr("zymdb_save_pci_configSet_list, ZYM_DB_STATUS_NO_MEMORY");
    return ZYM_DB_STATUS_NO_MEMORY;
  }
  for (const Entry& entry : entries)
    if (const int status = write_pending_value(values, entry); status != ZYM_DB_STATUS_OK) return status;
  return ZYM_DB_STATUS_OK;
}

int hand_to_manager(std::span<Entry> entries) {
  const auto requests = allocate_zeroed_array<cmr_attribute_request_t>(entries.size());
  if (requests == nullptr) return ZYM_DB_STATUS_NO_MEMORY;
  for (size_t i = 0; i < entries.size(); ++i) {
    requests[i].kind = kAdapterAttribute;
    requests[i].name = entries[i].SettingID;
    requests[i].value = entries[i].PendingValue;
  }

  cmr_api_initialize();
  const int status = cmr_set_bios_attribute_value(requests.get(), static_cast<unsigned>(entries.size()));
  for (size_t i = 0; i < entries.size(); ++i) entries[i].Result = requests[i].status;
  cmr_api_uninitialize();
  if (status == 0) return ZYM_DB_STATUS_OK;
  ruvo_log::logErr("cmr_set_bios_attribute_value failed, rc: %d", status);
  return ZYMDB_PCI_SETTING_BIOS_SET_FAIL;
}

}  // namespace

int zymdb_save_pci_configSet_list(ZYMDB_PCI_Config_Set* list, unsigned int count) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  const std::span entries(list, count);
  if (!all_exist(handle, entries)) {
    ruvo_log::logErr("zymdb_save_pci_configSet_list failed, ZYMDB_PCI_SETTING_ID_NOEXIT");
    return ZYMDB_PCI_SETTING_ID_NOEXIT;
  }
  if (const int status = write_pending_values(handle, entries); status != ZYM_DB_STATUS_OK) return status;
  return hand_to_manager(entries);
}
