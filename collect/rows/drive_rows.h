// Drives in the inventory: table AimDisks.
#ifndef ZYMDB_COLLECT_ROWS_DRIVE_ROWS_H
#define ZYMDB_COLLECT_ROWS_DRIVE_ROWS_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/nvme_record.h"
#include "collect/rows/table_content.h"
#include "collect/sources/sysfs/drive.h"

namespace zymdb::collect {

// Nothing: not told.
struct DriveFindings {
  std::optional<std::vector<Drive>> nvme;
  std::optional<std::vector<Drive>> disks;
};

// What the inventory knows of drives.
struct FormerDrives {
  std::map<FunctionKey, DrivePlace> nvme_places;  // slots and bays of those that are present
  std::map<std::string, uint8_t> temperatures;    // by the text of their location
};

struct DriveRows {
  std::vector<NvmeRecord> nvme;  // the first in each slot or bay
  TableContent rest;             // all other drives
  std::set<FunctionKey> silent;  // of drives that did not answer: their rows stay as they are
  std::vector<std::string> notices;
};

// An NVMe drive is in the slot or bay of its function, where this collection or else the inventory knows one;
// a disk's bay has the number of its port, or the next that is free where another drive, NVMe drives first,
// has that. Drives for which there is no place, or none left, are on the board or beside the drive that has
// the place: rows whose location no operation of the library names, and which are the collector's like those
// of SATA and SAS disks.
//
// Rows of functions that are gone go; of what is not told, all others stay.
DriveRows drive_rows(const Machine& machine, const DriveFindings& findings, const FormerDrives& former);

}  // namespace zymdb::collect

#endif
