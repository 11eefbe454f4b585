// What the PCI functions themselves tell.
#ifndef ZYMDB_COLLECT_STEPS_PCI_STEPS_H
#define ZYMDB_COLLECT_STEPS_PCI_STEPS_H

#include "collect/steps/step.h"

namespace zymdb::collect {

RowMaker collect_functions(const Survey& survey);
RowMaker collect_adapters(const Survey& survey);
RowMaker collect_vital_product_data(const Survey& survey);
RowMaker collect_gpus(const Survey& survey);

}  // namespace zymdb::collect

#endif
