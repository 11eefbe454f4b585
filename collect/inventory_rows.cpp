#include "inventory_rows.h"

#include <utility>

#include "adapter_rows.h"
#include "firmware_rows.h"
#include "function_rows.h"
#include "gpu_rows.h"
#include "memory_rows.h"
#include "processor_rows.h"

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
