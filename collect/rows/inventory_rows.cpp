#include "collect/rows/inventory_rows.h"

#include <utility>

#include "collect/rows/adapter_rows.h"
#include "collect/rows/firmware_rows.h"
#include "collect/rows/function_rows.h"
#include "collect/rows/gpu_rows.h"
#include "collect/rows/memory_rows.h"
#include "collect/rows/processor_rows.h"

namespace zymdb::collect {

std::vector<TableContent> inventory_rows(const Machine& machine, const PciIds& names) {
  std::vector<TableContent> tables;
  if (machine.processors) tables.push_back(processor_rows(*machine.processors));
  if (machine.memory) tables.push_back(memory_rows(*machine.memory));
  if (machine.firmware) tables.push_back(embedded_firmware_rows(*machine.firmware));
  if (!machine.functions) return tables;
  tables.push_back(function_rows(machine, names));
  for (auto& content : adapter_rows(machine, names)) tables.push_back(std::move(content));
  tables.push_back(vpd_rows(machine));
  for (auto& content : gpu_rows(machine, names)) tables.push_back(std::move(content));
  return tables;
}

}  // namespace zymdb::collect
