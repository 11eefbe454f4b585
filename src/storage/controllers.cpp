#include <algorithm>

#include "db/known_devices.h"
#include "db/query.h"
#include "storage/marvell_controllers.h"
#include "storage/properties.h"
#include "zymdb_storage.h"

using namespace zymdb;

namespace {

constexpr uint8_t kMarvellType = 3;
constexpr uint8_t kNoSlot = 255;

}  // namespace

int zymdb::collect_marvell_controllers(_zym_db_handle_t* handle,
                                       GrowingList<MarvellController>& controllers) {
  Query query(handle, "PCIs", {"SlotNo", "FunKey"}, board_marvell_controllers());
  if (!query.has_result()) return query.status();
  int status;
  while ((status = query.step()) == ZYM_DB_STATUS_ROW) {
    const uint32_t slot = query.read_or(0, uint32_t{kNoSlot});
    if (slot >= kNoSlot) continue;
    if (!controllers.append({static_cast<uint8_t>(slot), query.read_or(1, uint32_t{0})}))
      return ZYM_DB_STATUS_NO_MEMORY;
  }
  return status == ZYM_DB_STATUS_DONE ? ZYM_DB_STATUS_OK : status;
}

void DriveControllers::assign(_ZYMDB_AimDisk& drive) {
  if (!controllers_) {
    GrowingList<MarvellController>& found = controllers_.emplace();
    if (collect_marvell_controllers(handle_, found) != ZYM_DB_STATUS_OK) controllers_.emplace();
  }
  const auto controllers = controllers_->elements();
  const auto controller = std::ranges::find(controllers, drive.SlotNo, &MarvellController::slot);
  if (controller == controllers.end()) return;
  drive.PCIFuncKey = controller->function;
  drive.CtrlType = kMarvellType;
}

int zymdb_get_mvl_ctrl_type(unsigned char* ctrl_type, int ctrl_index) {
  const PropertyConnection properties;
  if (!properties) return ZYM_DB_STATUS_NO_DB;

  *ctrl_type = 0;
  PropertyQuery query(properties,
                      ctrl_index == 0 ? "propName like \"%mv/0/type\"" : "propName like \"%mv/1/type\"");
  if (query.step() == ZYM_DB_STATUS_ROW) *ctrl_type = query.value();
  return query.status();
}

int zymdb_get_ctrl_slot(int device_id, int subdevice_id, unsigned char* slot_no) {
  if (slot_no == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  Query query(handle, "PCIs", {"SlotNo"},
              Filter<64>("DeviceId=%d AND SubDeviceId=%d", device_id, subdevice_id));
  if (!query.has_result()) return query.status();
  if (const int status = query.step(); status != ZYM_DB_STATUS_ROW) return status;
  *slot_no = query.read_or(0, kNoSlot);
  return ZYM_DB_STATUS_OK;
}

int zymdb_get_marvell_ctrl_slots(unsigned char* slots, unsigned int max, unsigned char* count) {
  if (slots == nullptr || count == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  // A missing database counts as a missing argument here.
  if (handle == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *count = 0;
  GrowingList<MarvellController> found;
  if (const int status = collect_marvell_controllers(handle, found); status != ZYM_DB_STATUS_OK)
    return status;
  const auto controllers = found.elements();
  *count = static_cast<unsigned char>(std::min<size_t>(max, controllers.size()));
  std::ranges::transform(controllers.first(*count), slots, &MarvellController::slot);
  return ZYM_DB_STATUS_OK;
}
