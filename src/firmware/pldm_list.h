// The reader behind every list of PLDM components.
#ifndef ZYMDB_SRC_FIRMWARE_PLDM_LIST_H
#define ZYMDB_SRC_FIRMWARE_PLDM_LIST_H

#include "zymdb_firmware.h"

namespace zymdb {

// Lists the components that match `filter`, or all; checks as zymdb_get_pldm_firmware_list documents them.
int list_pldm_firmware(_ZYMDB_PLDM_Firmware_List* out, const char* filter);

}  // namespace zymdb

#endif
