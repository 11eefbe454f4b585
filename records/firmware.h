// Firmware: components of PCI functions, PLDM devices, embedded devices, and the events of data processing
// units.
#ifndef ZYMDB_RECORDS_FIRMWARE_H
#define ZYMDB_RECORDS_FIRMWARE_H

#include <functional>

#include "records/record.h"
#include "zymdb_firmware.h"

namespace zymdb::records {

RecordType firmware_components();

using PldmReader = int (*)(_ZYMDB_PLDM_Firmware_List*);
RecordType pldm_devices(std::function<PldmReader()> which = [] { return &zymdb_get_pldm_firmware_list; });

RecordType embedded_devices();

// Of the unit in a slot, asked for when the events are listed.
RecordType dpu_events(std::function<int()> slot);

}  // namespace zymdb::records

#endif
