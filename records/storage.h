// Storage drives and the backplanes that hold them.
#ifndef ZYMDB_RECORDS_STORAGE_H
#define ZYMDB_RECORDS_STORAGE_H

#include <functional>
#include <vector>

#include "records/record.h"
#include "zymdb_storage.h"

namespace zymdb::records {

// Fills a list, and answers the library's status.
using DriveLister = std::function<int(_ZYMDB_AimDisk_List*)>;
RecordType drives(DriveLister list = zymdb_get_disk_list);

RecordType backplanes();

// What a drive's vital product data say.
RecordType drive_identity(std::function<std::vector<_ZYMDB_AimDisk>()> list);

}  // namespace zymdb::records

#endif
