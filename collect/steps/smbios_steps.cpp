#include "collect/steps/smbios_steps.h"

#include "collect/rows/firmware_rows.h"
#include "collect/rows/memory_rows.h"
#include "collect/rows/processor_rows.h"

namespace zymdb::collect {

RowMaker collect_processors(const Survey& survey) {
  const auto& processors = survey.machine().processors;
  if (!survey.is_told(processors, "processors in the SMBIOS tables")) return {};
  return always(processor_rows(*processors));
}

RowMaker collect_memory(const Survey& survey) {
  const auto& memory = survey.machine().memory;
  if (!survey.is_told(memory, "memory positions in the SMBIOS tables")) return {};
  return always(memory_rows(*memory));
}

RowMaker collect_system_firmware(const Survey& survey) {
  const auto& firmware = survey.machine().firmware;
  if (!survey.is_told(firmware, "firmware versions in the SMBIOS tables")) return {};
  return always(embedded_firmware_rows(*firmware));
}

}  // namespace zymdb::collect
