#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>

#include "db/filter.h"
#include "db/rows.h"
#include "db/system_log.h"
#include "storage/drive_location.h"
#include "zymdb_storage.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_AimDisk;
using List = _ZYMDB_AimDisk_List;

constexpr int kPresent = 1;
constexpr int kOnboardSata = 1;

// Types of Marvell controller 1 that 7 mm drives hang on.
constexpr int kSata7mmController = 2;
constexpr int kNvme7mmController = 4;

constexpr size_t kMostOfOneFunction = 64;

// Whether the first source has a drive. When it has none, its list makes room for the next one's: rows that
// were counted and never came leave an array.
bool lists_a_drive(int status, List* list) {
  if (status != ZYM_DB_STATUS_OK) return false;
  if (list->count > 0) return true;
  std::free(list->disks);
  *list = {};
  return false;
}

std::span<const Record> drives_of(const List& list) {
  return {list.disks, list.count};
}

// The lists that the merged list is made of, in its order.
struct Source {
  int (*list)(List*);
  const char* name;
};
constexpr Source kSources[] = {
    {zymdb_get_m2_disk_list, "zymdb_get_m2_disk_list"},
    {zymdb_get_7mm_disk_list, "zymdb_get_7mm_disk_list"},
    {zymdb_get_u2_aic_nvme_disk_list, "zymdb_get_u2_aic_nvme_disk_list"},
    {zymdb_get_onboard_sata_disk_list, "zymdb_get_onboard_sata_disk_list"},
};

}  // namespace

int zymdb_get_disk_list(_ZYMDB_AimDisk_List* list) {
  return zymdb_get_disk_list_with_filter(list, Filter<24>("Presence=%d", kPresent));
}

int zymdb_get_onboard_sata_disk_list(_ZYMDB_AimDisk_List* list) {
  return zymdb_get_disk_list_with_filter(
      list, Filter<48>("Presence=%d AND DriveTypeId=%d", kPresent, kOnboardSata));
}

int zymdb_get_m2_disk_list(_ZYMDB_AimDisk_List* list) {
  const int status =
      zymdb_get_nvme_disk_list_from_mi_filter(list, Filter<48>("Location=%d", ZYMDB_LOCATION_M2_BAY));
  if (lists_a_drive(status, list)) return ZYM_DB_STATUS_OK;
  return zymdb_get_disk_list_with_filter(list,
                                         Filter<48>("DriveTypeId=%d OR DriveTypeId=%d", kM2Nvme, kM2Sata));
}

int zymdb_get_7mm_disk_list(_ZYMDB_AimDisk_List* list) {
  unsigned char controller = 0;
  if (const int status = zymdb_get_mvl_ctrl_type(&controller, 1); status != ZYM_DB_STATUS_OK) return status;

  if (controller == kNvme7mmController) {
    const int status =
        zymdb_get_nvme_disk_list_from_mi_filter(list, Filter<72>("Location=%d", ZYMDB_LOCATION_7MM_BAY));
    if (lists_a_drive(status, list)) return ZYM_DB_STATUS_OK;
    if (status != ZYM_DB_STATUS_OK)
      log_to_system(kLogInformation, "%s: zymdb_get_nvme_disk_list_from_mi_filter() failed, ret = %d\n\n",
                    "zymdb_get_7mm_disk_list", status);
  } else if (controller != kSata7mmController) {
    return zymdb_get_disk_list_with_filter(list, Filter<72>("LocationId=%d", ZYMDB_LOCATION_7MM_BAY));
  }
  return zymdb_get_disk_list_with_filter(
      list, Filter<72>("DriveTypeId=%d AND Presence=%d",
                       controller == kNvme7mmController ? k7mmNvme : k7mmSata, kPresent));
}

int zymdb_get_ctrl_aim_disk_list(int ctrl_slot, _ZYMDB_AimDisk_List* list, int kind) {
  const int status = zymdb_get_nvme_disk_list_from_mi_filter(list, Filter<64>("CtrlSlot=%d", ctrl_slot));
  if (lists_a_drive(status, list)) return ZYM_DB_STATUS_OK;
  return zymdb_get_disk_list_with_filter(
      list, kind > ZYMDB_LOCATION_7MM_BAY
                ? Filter<64>("SlotNo=%d and ( LocationId=%d or LocationId=%d )", ctrl_slot,
                             ZYMDB_LOCATION_M2_BAY, ZYMDB_LOCATION_7MM_BAY)
                : Filter<64>("SlotNo=%d and ( LocationId=%d )", ctrl_slot, kind));
}

void zymdb_get_merged_disk_list(_ZYMDB_AimDisk_List* list) {
  if (list == nullptr) return;
  CallerArray<Record> owners[std::size(kSources)];
  std::array<List, std::size(kSources)> parts{};
  size_t total = 0;
  for (size_t i = 0; i < parts.size(); ++i) {
    const int status = kSources[i].list(&parts[i]);
    if (status != ZYM_DB_STATUS_OK)
      log_to_system(kLogInformation, "%s: %s failed, rc = %d\n\n", "zymdb_get_merged_disk_list",
                    kSources[i].name, status);
    owners[i].reset(parts[i].disks);
    total += parts[i].count;
  }

  *list = {};
  if (total == 0) return;
  CallerArray<Record> merged = allocate_array<Record>(total);
  if (merged == nullptr) return;
  Record* end = merged.get();
  for (const List& part : parts) end = std::ranges::copy(drives_of(part), end).out;
  *list = {static_cast<uint32_t>(total), merged.release()};
}

int zymdb_get_disk_list_funkey(unsigned int funkey, _ZYMDB_AimDisk_List* list) {
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *list = {};
  List all{};
  zymdb_get_merged_disk_list(&all);
  const CallerArray<Record> owner(all.disks);
  const auto is_behind = [&](const Record& drive) { return drive.PCIFuncKey == funkey; };
  const size_t found = static_cast<size_t>(std::ranges::count_if(drives_of(all), is_behind));
  const size_t kept = std::min(found, kMostOfOneFunction);
  if (kept == 0) return ZYM_DB_STATUS_NOT_FOUND;
  CallerArray<Record> drives = allocate_array<Record>(kept);
  if (drives == nullptr) return ZYM_DB_STATUS_NO_MEMORY;

  size_t count = 0;
  for (const Record& drive : drives_of(all))
    if (count < kept && is_behind(drive)) drives[count++] = drive;
  *list = {static_cast<uint32_t>(count), drives.release()};
  return ZYM_DB_STATUS_OK;
}

int zymdb_get_nvme_aim_disk(int location_id, int bay_no, _ZYMDB_AimDisk* disk) {
  if (disk == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  if (location_id != ZYMDB_LOCATION_SLOT && location_id != ZYMDB_LOCATION_BAY)
    return ZYM_DB_STATUS_INVALID_PARAM;

  List list{};
  zymdb_get_disk_list_with_filter(&list, Filter<72>("Location=\"%s\" AND DriveTypeId=%d",
                                                    location_text(location_id, bay_no).data(), kNvmeDrive));
  const CallerArray<Record> drives(list.disks);
  // Callers tell an empty bay from a doubled one by these codes; a failed query counts as empty.
  if (list.count == 0) return ZYM_DB_STATUS_INVALID_PARAM;
  if (list.count > 1) {
    log_to_system(kLogInformation, "%s, Find %d NVMe drives at location %d Slot %d\n\n",
                  "zymdb_get_nvme_aim_disk", static_cast<int>(list.count), location_id, bay_no);
    return ZYM_DB_STATUS_NO_DB;
  }
  *disk = drives[0];
  return ZYM_DB_STATUS_OK;
}
