// Volumes of RAID controllers, which look like disks.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_RAID_VOLUME_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_RAID_VOLUME_H

#include <filesystem>
#include <string_view>

namespace zymdb::collect {

// Whether a SCSI device, whose own folder and model these are, is made of disks by its controller: as the
// driver says, or where the driver keeps volumes, or by its model.
bool is_raid_volume(const std::filesystem::path& device, std::string_view model);

}  // namespace zymdb::collect

#endif
