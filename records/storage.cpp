#include "records/storage.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "common/pci_address.h"
#include "records/reading.h"

namespace zymdb::records {
namespace {

using Drive = _ZYMDB_AimDisk;

// All backplanes together: what the library tells of them.
struct Backplanes {
  uint8_t MaxDrives = 0;
  uint8_t InstalledDrives = 0;
  uint8_t Marvell0Type = 0;
  uint8_t Marvell1Type = 0;
};

constexpr unsigned kNoSensor = 2;

// The mask says which of a drive's own values are valid; none are where nobody could ask it.
bool reports_itself(const Drive& drive) {
  return drive.InfoMask != 0;
}

Attention health_attention(const Value&) {
  return Attention::kWarning;
}
Attention warning_attention(const Value& warning) {
  return warning == Value(uint64_t{0}) ? Attention::kNone : Attention::kWarning;
}

Value function_address(const Drive& drive) {
  return FunctionKey(drive.PCIFuncKey).text();
}
bool has_function(const Drive& drive) {
  return drive.PCIFuncKey != 0;
}

Value maker_by_model(const Drive& drive) {
  return value_of(std::string(driveModel2Manufacture(drive.Model)));
}

Value trimmed_model(const Drive& drive) {
  std::string model = drive.Model;
  return value_of(std::string(trim_drive_model(model.data())));
}

constexpr Field<Drive> kFields[] = {
    derived<Drive>("Function", "FUNCTION", "address of the drive's controller", function_address)
        .tells(Tells::kFunction)
        .known_if(has_function),
    ZYMDB_RECORD_FIELD(Drive, PCIFuncKey, "KEY", "function key of the drive's controller")
        .hex(8)
        .known_if(has_function),
    ZYMDB_RECORD_FIELD(Drive, SlotNo, "SLOT", "PCI slot of the controller").place(),
    ZYMDB_RECORD_FIELD(Drive, CtrlType, "CONTROLLER", "controller type").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Drive, BayNo, "NUMBER", "number of the slot or bay").place().unknown_at(255),
    ZYMDB_RECORD_FIELD(Drive, LocationId, "PLACEKIND", "0 board, 1 slot, 2 bay, 3 M.2 bay, 4 7 mm bay")
        .place(),
    ZYMDB_RECORD_FIELD(Drive, DriveTypeId, "TYPEID", "drive type code"),
    ZYMDB_RECORD_FIELD(Drive, Presence, "REPORTED", "1: as the management interface reports it"),
    ZYMDB_RECORD_FIELD(Drive, FormFactor, "FORMFACTOR", "form factor class").hex(2).zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Drive, HealthStatusId, "HEALTH", "health from the sensors")
        .judged(health_attention)
        .unknown_at(kNoSensor)
        .state(),
    ZYMDB_RECORD_FIELD(Drive, Location, "LOCATION", "slot or bay").shown().place(),
    ZYMDB_RECORD_FIELD(Drive, DisplayType, "TYPE", "drive type").shown().unknown_at("Unknown").model(),
    ZYMDB_RECORD_FIELD(Drive, MediaType, "MEDIA", "SSD or HDD").shown(),
    ZYMDB_RECORD_FIELD(Drive, MediaValue, "RPM", "rotations per minute").amount().zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Drive, FruNo, "FRU", "number of the field-replaceable unit"),
    ZYMDB_RECORD_FIELD(Drive, PartNo, "PART", "part number").model(),
    ZYMDB_RECORD_FIELD(Drive, SerialNo, "SERIAL", "serial number").shown().identity(),
    ZYMDB_RECORD_FIELD(Drive, Model, "MODEL", "model").tells(Tells::kName).long_text().shown().model(),
    ZYMDB_RECORD_FIELD(Drive, UUID, "UUID", "unique identifier").identity(),
    ZYMDB_RECORD_FIELD(Drive, Manufacture, "MAKER", "the drive's maker").tells(Tells::kMaker).model(),
    ZYMDB_RECORD_FIELD(Drive, FwVersion, "FIRMWARE", "firmware version")
        .tells(Tells::kFirmware)
        .shown()
        .version(),
    ZYMDB_RECORD_FIELD(Drive, Capacity, "CAPACITY", "capacity").shown().model(),
    ZYMDB_RECORD_FIELD(Drive, SFlags, "FLAGS", "health status flags of the drive")
        .known_if(reports_itself)
        .state(),
    ZYMDB_RECORD_FIELD(Drive, Warning, "WARNING", "critical warnings, one bit each")
        .hex(2)
        .shown()
        .judged(warning_attention)
        .known_if(reports_itself)
        .state(),
    ZYMDB_RECORD_FIELD(Drive, Temperature, "TEMP", "temperature")
        .unit("°C")
        .shown()
        .known_if(reports_itself)
        .changing(),
    ZYMDB_RECORD_FIELD(Drive, RemainLife, "LIFE", "remaining life")
        .unit("%")
        .shown()
        .known_if(reports_itself)
        .state(),
    ZYMDB_RECORD_FIELD(Drive, InfoMask, "VALID", "which of the four values before are valid").hex(4).state(),
};

constexpr Field<Backplanes> kBackplaneFields[] = {
    ZYMDB_RECORD_FIELD(Backplanes, MaxDrives, "BAYS", "drives that they can hold").shown(),
    ZYMDB_RECORD_FIELD(Backplanes, InstalledDrives, "DRIVES", "drives that they hold").shown(),
    ZYMDB_RECORD_FIELD(Backplanes, Marvell0Type, "MARVELL0",
                       "type of the on-board Marvell controller 0; 0: none")
        .shown(),
    ZYMDB_RECORD_FIELD(Backplanes, Marvell1Type, "MARVELL1",
                       "type of controller 1, which has the 7 mm drives")
        .shown(),
};

constexpr Field<Drive> kIdentityFields[] = {
    ZYMDB_RECORD_FIELD(Drive, FruNo, "FRU", "number of the field-replaceable unit").shown(),
    ZYMDB_RECORD_FIELD(Drive, PartNo, "PART", "part number").shown(),
    ZYMDB_RECORD_FIELD(Drive, SerialNo, "SERIAL", "serial number").identity().shown(),
    ZYMDB_RECORD_FIELD(Drive, Model, "MODEL", "model").shown(),
    ZYMDB_RECORD_FIELD(Drive, Manufacture, "MAKER", "the drive's maker").shown(),
    ZYMDB_RECORD_FIELD(Drive, Capacity, "CAPACITY", "capacity").shown(),
    derived<Drive>("MakerByModel", "MAKERBYMODEL", "the maker that the model tells", maker_by_model).shown(),
    derived<Drive>("TrimmedModel", "TRIMMEDMODEL", "the model without its maker", trimmed_model).shown(),
};

std::vector<Drive> list_drives(const DriveLister& list_into) {
  const Reading reading("drives");
  _ZYMDB_AimDisk_List list{};
  const int status = list_into(&list);
  auto drives = take_array(list.disks, list.count);
  reading.require(status);
  reading.require_whole();
  std::ranges::stable_sort(drives, {}, [](const Drive& drive) {
    return std::tuple(drive.LocationId, drive.BayNo, drive.PCIFuncKey);
  });
  return drives;
}

std::vector<Backplanes> read_backplanes() {
  const Reading reading("backplanes");
  Backplanes all;
  reading.require(zymdb_get_bp_drive_count(&all.MaxDrives, &all.InstalledDrives));
  reading.require(zymdb_get_mvl_ctrl_type(&all.Marvell0Type, 0));
  reading.require(zymdb_get_mvl_ctrl_type(&all.Marvell1Type, 1));
  reading.require_whole();
  return {all};
}

}  // namespace

RecordType drives(DriveLister list) {
  return describe<Drive>("drives", "Storage drives", kFields,
                         [list = std::move(list)] { return list_drives(list); });
}

RecordType backplanes() {
  return describe<Backplanes>("backplanes", "Drive bays of the backplanes, all together", kBackplaneFields,
                              read_backplanes);
}

RecordType drive_identity(std::function<std::vector<Drive>()> list) {
  return describe<Drive>("vpd", "What a drive's vital product data say", kIdentityFields, std::move(list));
}

}  // namespace zymdb::records
