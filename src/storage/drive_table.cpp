#include <cstdlib>
#include <optional>

#include "db/code_text.h"
#include "db/system_log.h"
#include "storage/drive_bays.h"
#include "storage/drive_location.h"
#include "storage/list_builder.h"
#include "storage/marvell_controllers.h"
#include "storage/sensor_health.h"
#include "zymdb_storage.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_AimDisk;

constexpr Column kDriveColumns[] = {
    ZYMDB_FIELD(Record, PCIFuncKey),  ZYMDB_FIELD(Record, SlotNo),
    ZYMDB_FIELD(Record, CtrlType),    ZYMDB_COLUMN("BayNo", Record, BayNo, 255),
    ZYMDB_FIELD(Record, LocationId),  ZYMDB_FIELD(Record, Location),
    ZYMDB_OWN_COLUMN("DriveTypeId"),  ZYMDB_OWN_COLUMN("MediaTypeId"),
    ZYMDB_FIELD(Record, FruNo),       ZYMDB_FIELD(Record, PartNo),
    ZYMDB_FIELD(Record, SerialNo),    ZYMDB_FIELD(Record, Model),
    ZYMDB_FIELD(Record, UUID),        ZYMDB_FIELD(Record, Manufacture),
    ZYMDB_FIELD(Record, FwVersion),   ZYMDB_FIELD(Record, Capacity),
    ZYMDB_FIELD(Record, SFlags),      ZYMDB_FIELD(Record, Warning),
    ZYMDB_FIELD(Record, Temperature), ZYMDB_FIELD(Record, RemainLife),
    ZYMDB_FIELD(Record, InfoMask),
};
constexpr int kDriveTypeId = 6;
constexpr int kMediaTypeId = 7;

constexpr CodeText kDisplayTypes[] = {
    {1, "SATA"},
    {2, "SAS"},
    {kNvmeDrive, "NVMe"},
    {kM2Sata, "M.2 SATA"},
    {kM2Nvme, "M.2 NVMe"},
    {k7mmSata, "7MM SATA"},
    {k7mmNvme, "7MM NVMe"},
};

constexpr long kSolidState = 1;
constexpr long kLargestMediaValue = 65534;

// A type code, stored as text.
long read_type(Query& query, int column) {
  char text[16] = {};
  return query.read_text(column, text, sizeof text) == ZYM_DB_STATUS_OK ? std::strtol(text, nullptr, 10) : 0;
}

// The EDSFF bays, read when the first drive in a bay asks; none when they cannot be read.
class EdsffBays {
 public:
  bool hold(const Record& drive) {
    if (drive.LocationId != ZYMDB_LOCATION_BAY || drive.DriveTypeId != kNvmeDrive) return false;
    if (!bays_) get_u2_nvme_drive_bays(BayKind::kEdsff, bays_.emplace());
    return bays_->contains(drive.BayNo);
  }

 private:
  std::optional<DriveBays> bays_;
};

// What a drive's place says about it.
struct Place {
  uint16_t sensor = kNoSensor;
  uint32_t form_factor = ZYMDB_FORM_FACTOR_UNKNOWN;
};

uint32_t form_factor_in_slot(uint8_t drive_type) {
  switch (drive_type) {
    case kM2Nvme:
      return ZYMDB_FORM_FACTOR_M2;
    case k7mmNvme:
      return ZYMDB_FORM_FACTOR_DRIVE_BAY;
    default:
      return ZYMDB_FORM_FACTOR_ADD_IN_CARD;
  }
}

Place place_of(const Record& drive, bool is_edsff) {
  switch (drive.LocationId) {
    case ZYMDB_LOCATION_SLOT:
      return {kNoSensor, form_factor_in_slot(drive.DriveTypeId)};
    case ZYMDB_LOCATION_BAY:
      return {bay_sensor(drive.BayNo), is_edsff ? ZYMDB_FORM_FACTOR_EDSFF : bay_form_factor(drive.BayNo)};
    case ZYMDB_LOCATION_M2_BAY:
      return {m2_sensor(drive.BayNo), ZYMDB_FORM_FACTOR_M2};
    case ZYMDB_LOCATION_7MM_BAY:
      return {sensor_of_7mm(drive.BayNo), ZYMDB_FORM_FACTOR_DRIVE_BAY};
    default:
      return {};
  }
}

void set_media(Record& drive, long media_type) {
  copy_text(drive.MediaType, media_type == kSolidState ? "SSD" : "HDD");
  const bool has_value = media_type > kSolidState && media_type <= kLargestMediaValue;
  drive.MediaValue = has_value ? static_cast<uint16_t>(media_type) : uint16_t{0};
}

void log_drive(unsigned row, const Record& drive) {
  log_to_system(
      kLogInformation,
      "%s aimDiskInfo[%d].ctrlType = %d, aimDiskInfo[row].locationId = %d, aimDiskInfo[row].location = "
      "%s, driveTypeId = %d\n",
      "zymdb_get_disk_list_with_filter", static_cast<int>(row), drive.CtrlType, drive.LocationId,
      drive.Location, drive.DriveTypeId);
}

}  // namespace

int zymdb_get_disk_list_with_filter(_ZYMDB_AimDisk_List* list, const char* where) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  const SensorHealth health(handle);
  DriveControllers controllers(handle);
  EdsffBays edsff_bays;
  *list = {};
  Query query(handle, "AimDisks", kDriveColumns, where);
  unsigned row = 0;
  return build_list(query, list, [&](Record& drive) {
    query.read_columns(kDriveColumns, &drive);
    drive.BayNo &= 0xFF;
    drive.DriveTypeId = static_cast<uint8_t>(read_type(query, kDriveTypeId));
    log_drive(row++, drive);
    const bool is_edsff = edsff_bays.hold(drive);
    if (drive.DriveTypeId >= kM2Sata && drive.DriveTypeId <= k7mmNvme) controllers.assign(drive);
    const Place place = place_of(drive, is_edsff);
    drive.FormFactor = place.form_factor;
    drive.HealthStatusId = health.of(place.sensor);
    copy_text(drive.DisplayType, is_edsff ? "EDSFF NVMe" : text_of(kDisplayTypes, drive.DriveTypeId));
    set_media(drive, read_type(query, kMediaTypeId));
  });
}
