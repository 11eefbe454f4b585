#include "collect/steps/pci_steps.h"

#include "collect/rows/adapter_rows.h"
#include "collect/rows/function_rows.h"
#include "collect/rows/gpu_rows.h"
#include "collect/write/stored_rows.h"

namespace zymdb::collect {

RowMaker collect_functions(const Survey& survey) {
  if (!survey.machine().functions) return {};
  return always(function_rows(survey.machine(), survey.names()));
}

RowMaker collect_adapters(const Survey& survey) {
  if (!survey.machine().functions) return {};
  return [&survey](const FormerMachine& former) {
    auto removable = read_functions(former.handle, "PCIAdapter", "Location!=0");
    for (const FunctionKey function : former.replaced) removable.erase(function);
    return adapter_rows(survey.machine(), survey.names(), removable);
  };
}

RowMaker collect_vital_product_data(const Survey& survey) {
  if (!survey.machine().functions) return {};
  return always(vpd_rows(survey.machine()));
}

RowMaker collect_gpus(const Survey& survey) {
  if (!survey.machine().functions) return {};
  return always(gpu_rows(survey.machine(), survey.names()));
}

}  // namespace zymdb::collect
