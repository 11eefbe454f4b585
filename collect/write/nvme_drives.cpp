#include "collect/write/nvme_drives.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "common/client_objects.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

void require(int status, const char* action) {
  if (status == ZYM_DB_STATUS_OK) return;
  const char* reason = zym_db_get_error_str(status);
  throw DatabaseError(std::string("cannot ") + action + ": " + (reason ? reason : "unknown failure"));
}

std::vector<_ZYMDB_AimDisk> stored_drives(const std::string& filter) {
  _ZYMDB_AimDisk_List list{};
  require(zymdb_get_disk_list_with_filter(&list, filter.c_str()), "read the NVMe drives");
  const std::unique_ptr<_ZYMDB_AimDisk, decltype(&std::free)> owner(list.disks, &std::free);
  return {list.disks, list.disks + list.count};
}

bool is_equal(const std::vector<_ZYMDB_AimDisk>& drives, const std::vector<_ZYMDB_AimDisk>& others) {
  return drives.size() == others.size() &&
         std::memcmp(drives.data(), others.data(), drives.size() * sizeof(_ZYMDB_AimDisk)) == 0;
}

std::string at_place_of(const _ZYMDB_AimDisk& drive) {
  return "DriveTypeId=3 AND LocationId=" + std::to_string(drive.LocationId) +
         " AND BayNo=" + std::to_string(drive.BayNo);
}

void write_drive(const NvmeRecord& record, TableSummary& summary) {
  const _ZYMDB_AimDisk& drive = record.drive;
  const auto before = stored_drives(at_place_of(drive));
  require(zymdb_add_update_nvme_aim_disk(&drive), "write an NVMe drive");
  if (record.has_health) require(zymdb_update_aim_disk_smart_info(&drive), "write an NVMe drive's health");
  require(zymdb_update_aim_disk_presence(drive.LocationId, drive.BayNo, 1), "write an NVMe drive's presence");
  const auto after = stored_drives(at_place_of(drive));
  // The library takes a place that it cannot read for an empty one.
  if (after.size() != std::max<size_t>(before.size(), 1)) throw DatabaseError("cannot read the NVMe drives");
  if (before.empty())
    ++summary.inserted;
  else if (!is_equal(before, after))
    ++summary.updated;
  else
    ++summary.unchanged;
}

using Places = std::set<std::pair<uint8_t, uint16_t>>;

// The collector's own rows, which have no number, are not among them.
constexpr char kPresentDrives[] = "Presence=1 AND DriveTypeId=3 AND BayNo IS NOT NULL";

// Lists keep the low bits of a place's number only; the text of the place has all of it.
uint16_t number_of(const _ZYMDB_AimDisk& drive) {
  const std::string_view text(drive.Location);
  const auto number = leading_number(text.substr(text.find(' ') + 1));
  return number && *number <= UINT16_MAX ? static_cast<uint16_t>(*number) : drive.BayNo;
}

void mark_as_gone(const _ZYMDB_AimDisk& drive, TableSummary& summary) {
  require(zymdb_update_aim_disk_presence(drive.LocationId, number_of(drive), 0),
          "write an NVMe drive's presence");
  ++summary.updated;
}

void mark_the_gone(const Places& present, const std::set<FunctionKey>& silent, TableSummary& summary) {
  for (const auto& drive : stored_drives(kPresentDrives)) {
    if (!silent.contains(FunctionKey(drive.PCIFuncKey)) &&
        !present.contains({drive.LocationId, number_of(drive)}))
      mark_as_gone(drive, summary);
  }
}

}  // namespace

FormerDrives read_former_drives(const FormerMachine& former) {
  FormerDrives drives;
  for (const auto& drive : stored_drives(kPresentDrives)) {
    const FunctionKey function(drive.PCIFuncKey);
    if (!former.replaced.contains(function))
      drives.nvme_places[function] = {static_cast<Location>(drive.LocationId), number_of(drive)};
  }
  for (const auto& drive : stored_drives("BayNo IS NULL AND InfoMask!=0"))
    drives.temperatures[drive.Location] = drive.Temperature;
  return drives;
}

void mark_drives_of_gone_functions(const std::set<FunctionKey>& present, TableSummary& summary) {
  for (const auto& drive : stored_drives(kPresentDrives)) {
    // Who knows no function writes 0.
    if (drive.PCIFuncKey != 0 && !present.contains(FunctionKey(drive.PCIFuncKey)))
      mark_as_gone(drive, summary);
  }
}

void write_nvme_drives(const std::vector<NvmeRecord>& drives, const std::set<FunctionKey>& silent,
                       TableSummary& summary) {
  Places present;
  for (const auto& record : drives) {
    present.emplace(record.drive.LocationId, record.drive.BayNo);
    write_drive(record, summary);
  }
  mark_the_gone(present, silent, summary);
}

}  // namespace zymdb::collect
