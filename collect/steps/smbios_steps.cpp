#include "collect/steps/smbios_steps.h"

#include "collect/rows/firmware_rows.h"
#include "collect/rows/memory_rows.h"
#include "collect/rows/processor_rows.h"
#include "collect/rows/system_rows.h"
#include "collect/sources/sysfs/sysfs_processors.h"
#include "collect/write/stored_rows.h"

namespace zymdb::collect {
namespace {

RowMaker as_told(const Survey& survey, TableContent content) {
  content.is_partial = survey.smbios_breaks_off();
  return always(std::move(content));
}

// The system's rows bear names of its own. Once SMBIOS has told of a class, the system knows less of it.
RowMaker unless_smbios_told(TableContent content, const char* column, std::string_view own_name) {
  return [content = std::move(content), column, own_name](const FormerMachine& former) {
    for (const auto& row : read_stored_rows(former.handle, content)) {
      const std::string* const name = content.value_of(row.values, column).as_text();
      if (name == nullptr || !name->starts_with(own_name)) return std::vector<TableContent>{};
    }
    return std::vector{content};
  };
}

// A value of the moment is no reason to write.
TableContent as_of_now(TableContent content, const char* column) {
  content.columns.at(content.position_of(column)).role = Role::kStamp;
  return content;
}

}  // namespace

RowMaker collect_system(const Survey& survey) {
  if (!survey.system() && !survey.is_told(survey.machine().systems, "system in the SMBIOS tables")) return {};
  return always(system_rows(survey.system()));
}

RowMaker collect_processors(const Survey& survey) {
  const auto& told = survey.machine().processors;
  if (!told || told->empty()) {
    const auto found = survey.sysfs().empty() ? std::nullopt : read_sysfs_processors(survey.sysfs());
    if (found) return unless_smbios_told(as_of_now(processor_rows(*found), "CurSpeed"), "Socket", kPackage);
  }
  if (!survey.is_told(told, "processors in the SMBIOS tables")) return {};
  return as_told(survey, processor_rows(*told));
}

RowMaker collect_memory(const Survey& survey) {
  const auto& told = survey.machine().memory;
  if (!told || told->empty()) {
    const auto found = survey.sysfs().empty() ? std::nullopt : read_sysfs_memory(survey.sysfs());
    if (found) return unless_smbios_told(memory_rows(*found), "DevLocator", kNode);
  }
  if (!survey.is_told(told, "memory positions in the SMBIOS tables")) return {};
  return as_told(survey, memory_rows(*told));
}

RowMaker collect_system_firmware(const Survey& survey) {
  const auto& firmware = survey.machine().firmware;
  if (!survey.is_told(firmware, "firmware versions in the SMBIOS tables")) return {};
  return as_told(survey, embedded_firmware_rows(*firmware));
}

}  // namespace zymdb::collect
