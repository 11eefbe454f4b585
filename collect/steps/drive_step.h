// Drives.
#ifndef ZYMDB_COLLECT_STEPS_DRIVE_STEP_H
#define ZYMDB_COLLECT_STEPS_DRIVE_STEP_H

#include "collect/steps/step.h"

namespace zymdb::collect {

// NVMe drives and disks are told of by folders of their own; what has none stays as it is. No NVMe drive at
// all is believed only when there is no NVMe function either, no disk only when there is another block
// device.
RowMaker collect_drives(const Survey& survey);

}  // namespace zymdb::collect

#endif
