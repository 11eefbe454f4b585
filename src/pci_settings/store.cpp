#include <cstring>
#include <exception>
#include <string>

#include "controller/ruvo_log.h"
#include "db/null_aware_term.h"
#include "db/values.h"
#include "pci_settings/setting_columns.h"

using namespace zymdb;

namespace {

constexpr size_t kUsualCondition = 1536;  // as long as the condition of most settings

// Signed numbers are compared as the unsigned ones of the same bits.
void append_number_differs(std::string& condition, const Column& column, const char* field) {
  uint32_t number;
  std::memcpy(&number, field, sizeof number);
  condition.append(column.name).append("!=").append(std::to_string(number));
}

// Holds where anything but the id is not what the record says.
std::string change_condition(const ZYMDB_PCI_Config_Setting& setting) {
  std::string condition;
  condition.reserve(kUsualCondition);
  for (const Column& column : kComparedColumns) {
    const char* const field = reinterpret_cast<const char*>(&setting) + column.offset;
    if (!condition.empty()) condition += " OR ";
    if (column.reading == Reading::kText)
      append_null_aware_term(condition, column.name, field);
    else
      append_number_differs(condition, column, field);
  }
  return condition;
}

}  // namespace

int extract_PCISetting_info(const ZYMDB_PCI_Config_Setting* setting) try {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (setting == nullptr) return ZYM_DB_STATUS_OK;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  values.put_columns(kWrittenColumns, setting);
  const std::string address = std::string("SettingID=\"") + setting->SettingID + "\"";
  if (values.insert_or_update("PCISetting", address.c_str(), change_condition(*setting).c_str()) >= 1)
    return ZYM_DB_STATUS_OK;
  ruvo_log::logErr("Failed to insert ZYMDB_PCI_Config_Setting info: ZYMDB_PCI_Setting_ID=%s",
                   setting->SettingID);
  return ZYM_DB_STATUS_ERROR;
} catch (const std::exception&) {
  return ZYM_DB_STATUS_NO_MEMORY;
}
