// PCI devices that more than one area looks for.
#ifndef ZYMDB_SRC_DB_KNOWN_DEVICES_H
#define ZYMDB_SRC_DB_KNOWN_DEVICES_H

#include "db/filter.h"
#include "zymdb_pci.h"

namespace zymdb {

// The data processing unit.
constexpr unsigned kDpuDevice = 0xA2D6;

// The storage controllers of the server maker's own boards.
constexpr int kMarvellDevices[] = {0x9230, 0x2241};

inline Filter<128> board_marvell_controllers() {
  return Filter<128>("VendorId=%d AND SubVendorId=%d AND (DeviceId=%d OR DeviceId=%d)", ZYMDB_VENDOR_MARVELL,
                     BOARD_SUBSYSTEM_VENDOR_ID, kMarvellDevices[0], kMarvellDevices[1]);
}

}  // namespace zymdb

#endif
