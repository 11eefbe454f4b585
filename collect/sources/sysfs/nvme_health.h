// What an NVMe drive of the running machine says of itself.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_NVME_HEALTH_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_NVME_HEALTH_H

#include <optional>
#include <string>

#include "collect/sources/sysfs/drive.h"

namespace zymdb::collect {

// Asks the drive `name` ("nvme0") for its health log and capacity. Nothing when it cannot be asked, which
// takes the privilege to, or does not answer.
std::optional<DriveHealth> read_nvme_health(const std::string& name);

}  // namespace zymdb::collect

#endif
