#include <cstdio>

#include "db/code_text.h"
#include "storage/drive_location.h"
#include "storage/list_builder.h"
#include "storage/marvell_controllers.h"
#include "storage/sensor_health.h"
#include "zymdb_storage.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_AimDisk;

constexpr Column kNvmeColumns[] = {
    ZYMDB_COLUMN("Location", Record, LocationId, 0),
    ZYMDB_COLUMN("SlotNo", Record, BayNo, 0),
    ZYMDB_COLUMN("CtrlSlot", Record, SlotNo, 0),
    ZYMDB_FIELD(Record, CtrlType),
    ZYMDB_COLUMN("ModelName", Record, Model, 0),
    ZYMDB_COLUMN("Manufacturer", Record, Manufacture, 0),
    ZYMDB_COLUMN("SupplierSN", Record, SerialNo, 0),
    ZYMDB_FIELD(Record, PartNo),
    ZYMDB_FIELD(Record, FruNo),
    ZYMDB_COLUMN("FwVer", Record, FwVersion, 0),
    ZYMDB_FIELD(Record, SFlags),
    ZYMDB_FIELD(Record, Warning),
    ZYMDB_FIELD(Record, Temperature),
    ZYMDB_FIELD(Record, RemainLife),
    ZYMDB_OWN_COLUMN("Capacity"),
    ZYMDB_OWN_COLUMN("FormFactor"),
};
constexpr int kCapacity = 14;
constexpr int kFormFactor = 15;

// Kinds of drives by where they sit; what is not in a bay counts as in a slot.
struct Place {
  uint8_t drive_type;
  char display_type[12];
};
constexpr Place kPlaces[] = {
    {kNvmeDrive, "NVMe"},  // slot
    {kNvmeDrive, "NVMe"},  // bay
    {kM2Nvme, "M.2 NVMe"},
    {k7mmNvme, "7MM NVMe"},
};

struct FormFactorCodes {
  uint8_t first;
  uint8_t last;
  _AimDiskFormFactor form_factor;
};
constexpr FormFactorCodes kFormFactors[] = {
    {0x10, 0x14, ZYMDB_FORM_FACTOR_DRIVE_BAY},
    {0x20, 0x23, ZYMDB_FORM_FACTOR_ADD_IN_CARD},
    {0x30, 0x35, ZYMDB_FORM_FACTOR_M2},
    {0x50, 0x58, ZYMDB_FORM_FACTOR_EDSFF},
};

constexpr uint8_t kWarned = 1;
constexpr uint16_t kAllValid = 0x0F;
constexpr uint64_t kTerabyte = 1'000'000'000'000;

uint16_t sensor_of(const Record& drive) {
  switch (drive.LocationId) {
    case ZYMDB_LOCATION_BAY:
      return bay_sensor(drive.BayNo);
    case ZYMDB_LOCATION_M2_BAY:
      return m2_sensor(drive.BayNo);
    case ZYMDB_LOCATION_7MM_BAY:
      return sensor_of_7mm(drive.BayNo);
    default:
      return kNoSensor;
  }
}

_AimDiskFormFactor form_factor_of(uint8_t code) {
  for (const FormFactorCodes& codes : kFormFactors)
    if (codes.first <= code && code <= codes.last) return codes.form_factor;
  return ZYMDB_FORM_FACTOR_UNKNOWN;
}

void set_place(Record& drive) {
  const bool is_bay = drive.LocationId >= ZYMDB_LOCATION_BAY && drive.LocationId <= ZYMDB_LOCATION_7MM_BAY;
  const Place& place = kPlaces[is_bay ? drive.LocationId - ZYMDB_LOCATION_SLOT : 0];
  drive.DriveTypeId = place.drive_type;
  copy_text(drive.DisplayType, place.display_type);
  copy_text(drive.MediaType, "SSD");
  copy_text(drive.Location, location_text(drive.LocationId, drive.BayNo));
}

void set_health(Record& drive, const SensorHealth& health) {
  drive.HealthStatusId = health.of(sensor_of(drive));
  // Nothing senses a slot: there the drive's own warnings tell.
  if (drive.LocationId == ZYMDB_LOCATION_SLOT && drive.HealthStatusId == kNoHealth && drive.Warning != 0)
    drive.HealthStatusId = kWarned;
}

void set_capacity(Record& drive, uint64_t bytes) {
  if (bytes >= kTerabyte)
    std::snprintf(drive.Capacity, sizeof drive.Capacity, "%.2lfTB", static_cast<double>(bytes) / 1e12);
  else
    std::snprintf(drive.Capacity, sizeof drive.Capacity, "%.0lfGB", static_cast<double>(bytes) / 1e9);
}

}  // namespace

int zymdb_get_nvme_disk_list_from_mi_filter(_ZYMDB_AimDisk_List* list, const char* where) {
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  const SensorHealth health(handle);
  DriveControllers controllers(handle);
  *list = {};
  Query query(handle, "NVMeDrives", kNvmeColumns, where);
  // Callers fall back to the drive table, whatever went wrong.
  if (!query.has_result()) return ZYM_DB_STATUS_NO_DB;
  return build_list(query, list, [&](Record& drive) {
    query.read_columns(kNvmeColumns, &drive);
    set_place(drive);
    if (drive.LocationId == ZYMDB_LOCATION_M2_BAY || drive.LocationId == ZYMDB_LOCATION_7MM_BAY)
      controllers.assign(drive);
    set_health(drive, health);
    drive.InfoMask = kAllValid;
    set_capacity(drive, query.read_or(kCapacity, uint64_t{0}));
    drive.FormFactor = form_factor_of(query.read_or(kFormFactor, uint8_t{0}));
    if (drive.FormFactor == ZYMDB_FORM_FACTOR_EDSFF) copy_text(drive.DisplayType, "EDSFF NVMe");
    drive.Presence = 1;
  });
}
