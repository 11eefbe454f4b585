#include "collect/steps/smbios_steps.h"

#include "collect/rows/firmware_rows.h"
#include "collect/rows/memory_rows.h"
#include "collect/rows/processor_rows.h"
#include "collect/rows/system_rows.h"

namespace zymdb::collect {
namespace {

RowMaker as_told(const Survey& survey, TableContent content) {
  content.is_partial = survey.smbios_breaks_off();
  return always(std::move(content));
}

}  // namespace

RowMaker collect_system(const Survey& survey) {
  if (!survey.system() && !survey.is_told(survey.machine().systems, "system in the SMBIOS tables")) return {};
  return always(system_rows(survey.system()));
}

RowMaker collect_processors(const Survey& survey) {
  const auto& processors = survey.machine().processors;
  if (!survey.is_told(processors, "processors in the SMBIOS tables")) return {};
  return as_told(survey, processor_rows(*processors));
}

RowMaker collect_memory(const Survey& survey) {
  const auto& memory = survey.machine().memory;
  if (!survey.is_told(memory, "memory positions in the SMBIOS tables")) return {};
  return as_told(survey, memory_rows(*memory));
}

RowMaker collect_system_firmware(const Survey& survey) {
  const auto& firmware = survey.machine().firmware;
  if (!survey.is_told(firmware, "firmware versions in the SMBIOS tables")) return {};
  return as_told(survey, embedded_firmware_rows(*firmware));
}

}  // namespace zymdb::collect
