#include <algorithm>
#include <bitset>
#include <cstring>
#include <span>

#include "db/filter.h"
#include "db/rows.h"
#include "db/system_log.h"
#include "storage/drive_bays.h"
#include "storage/drive_location.h"
#include "zymdb_storage.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_AimDisk;
using List = _ZYMDB_AimDisk_List;

constexpr int kNoRaidController = 0;
// The column Location of PCIs has drives in bays, those on cards in slots too.
constexpr int kPlaceOfControllers = ZYMDB_LOCATION_BAY;

void log_failure(const char* source, int status) {
  log_to_system(kLogInformation, "%s: %s() failed, ret = %d\n\n", "zymdb_get_u2_aic_nvme_disk_list", source,
                status);
}

// Bay indices, "1,2,5". The text has room for all 64.
struct Joined {
  char text[64 * 3 + 1] = {};

  explicit Joined(std::span<const uint8_t> numbers) {
    char* end = text;
    for (const uint8_t number : numbers) end += std::snprintf(end, 4, end == text ? "%d" : ",%d", number);
  }
};

Filter<384> filter_of_table(const DriveBays& bays) {
  if (bays.indices().empty())
    return Filter<384>("CtrlType=%d AND DriveTypeId=%d AND ((LocationId=%d) OR (LocationId=%d))",
                       kNoRaidController, kNvmeDrive, ZYMDB_LOCATION_SLOT, ZYMDB_LOCATION_BAY);
  return Filter<384>(
      "CtrlType=%d AND DriveTypeId=%d AND ((LocationId=%d) OR (LocationId=%d AND BayNo IN (%s)))",
      kNoRaidController, kNvmeDrive, ZYMDB_LOCATION_SLOT, ZYMDB_LOCATION_BAY, Joined(bays.indices()).text);
}

List list_from_table() {
  DriveBays bays;
  if (const int status = get_u2_nvme_drive_bays(BayKind::kNvme, bays); status != ZYM_DB_STATUS_OK)
    log_failure("get_u2_nvme_drive_bays", status);
  List list{};
  if (const int status = zymdb_get_disk_list_with_filter(&list, filter_of_table(bays));
      status != ZYM_DB_STATUS_OK)
    log_failure("zymdb_get_disk_list_with_filter", status);
  return list;
}

List list_from_management_interface() {
  List list{};
  const Filter<64> filter("CtrlType=%d AND (Location=%d OR Location=%d)", kNoRaidController,
                          ZYMDB_LOCATION_SLOT, ZYMDB_LOCATION_BAY);
  if (const int status = zymdb_get_nvme_disk_list_from_mi_filter(&list, filter); status != ZYM_DB_STATUS_OK)
    log_failure("zymdb_get_nvme_disk_list_from_mi_filter", status);
  return list;
}

// Slots with an add-in card, by the low eight bits of their number.
class CardSlots {
 public:
  explicit CardSlots(std::span<const Record> drives) {
    for (const Record& drive : drives)
      if (drive.LocationId == ZYMDB_LOCATION_SLOT) slots_.set(drive.BayNo & 0xFF);
  }
  bool hold(const Record& drive) const {
    return drive.LocationId == ZYMDB_LOCATION_SLOT && slots_[drive.BayNo & 0xFF];
  }

 private:
  std::bitset<256> slots_;
};

}  // namespace

int zymdb_get_u2_aic_nvme_disk_list(_ZYMDB_AimDisk_List* list) {
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *list = {};
  const List table = list_from_table();
  const CallerArray<Record> table_owner(table.disks);
  const List reported = list_from_management_interface();
  const CallerArray<Record> reported_owner(reported.disks);
  const std::span<const Record> from_table(table.disks, table.count);
  const std::span<const Record> from_interface(reported.disks, reported.count);
  if (from_table.empty() && from_interface.empty()) return ZYM_DB_STATUS_OK;

  CallerArray<Record> drives = allocate_zeroed_array<Record>(from_table.size() + from_interface.size());
  if (drives == nullptr) return ZYM_DB_STATUS_NO_MEMORY;
  // What a drive itself reports is the fresher account of a card that both sources know.
  const CardSlots reported_cards(from_interface);
  Record* end = std::ranges::copy(from_interface, drives.get()).out;
  end = std::ranges::remove_copy_if(from_table, end, [&](const Record& drive) {
          return reported_cards.hold(drive);
        }).out;
  for (Record& drive : std::span(drives.get(), end))
    zymdb_get_nvme_drv_funkey(kPlaceOfControllers, drive.BayNo, &drive.PCIFuncKey);
  *list = {static_cast<uint32_t>(end - drives.get()), drives.release()};
  return ZYM_DB_STATUS_OK;
}
