// The rows of the inventory's tables that describe firmware.
#ifndef ZYMDB_COLLECT_ROWS_FIRMWARE_ROWS_H
#define ZYMDB_COLLECT_ROWS_FIRMWARE_ROWS_H

#include <cstdint>
#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/table_content.h"
#include "collect/sources/pci/pci_ids.h"
#include "collect/sources/smbios/smbios_decode.h"
#include "collect/sources/sysfs/sysfs_firmware.h"

namespace zymdb::collect {

// Who could be asked for components.
enum class ToldBy : uint8_t {
  kNobody,   // functions that are there keep the rows that they have
  kSysfs,    // but no driver: the functions that only drivers tell of keep theirs
  kDrivers,  // and sysfs
};

// Firmwares: the components of `machine`'s functions. The collector's rows have software ids of their own,
// "OS:NVME" and the like; all others belong to whoever reported them.
TableContent firmware_rows(const Machine& machine, const std::vector<FirmwareComponent>& components,
                           const PciIds& names, ToldBy told_by);

// EmbeddedDeviceFirmware: the system's firmware, and that of its embedded controller where it tells one.
TableContent embedded_firmware_rows(const std::vector<SmbiosFirmware>& firmware);

}  // namespace zymdb::collect

#endif
