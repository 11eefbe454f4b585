// Firmware that PCI functions carry.
#ifndef ZYMDB_COLLECT_STEPS_FIRMWARE_STEP_H
#define ZYMDB_COLLECT_STEPS_FIRMWARE_STEP_H

#include "collect/steps/step.h"

namespace zymdb::collect {

// Where nothing tells of any firmware, the functions that are there keep their rows.
RowMaker collect_firmware(const Survey& survey);

}  // namespace zymdb::collect

#endif
