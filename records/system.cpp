#include "records/system.h"

#include "common/text.h"
#include "records/rows.h"

namespace zymdb::records {
namespace {

struct System {
  std::string Manufacturer;
  std::string Model;
  std::string Version;
  std::string SerialNo;
  std::string UUID;
  std::string SKU;
  std::string Family;
  std::string BoardManufacturer;
  std::string BoardModel;
  std::string BoardVersion;
  std::string BoardSerialNo;
  std::string FirmwareVendor;
  std::string FirmwareVersion;
  std::string FirmwareDate;
  std::string HostName;
  uint64_t CollectedAt = 0;
  std::string CollectedBy;
  std::string CollectedFrom;
};

// Which column fills which text.
struct Column {
  const char* name;
  std::string System::*text;
};
constexpr Column kColumns[] = {
    {"Manufacturer", &System::Manufacturer},
    {"Model", &System::Model},
    {"Version", &System::Version},
    {"SerialNo", &System::SerialNo},
    {"UUID", &System::UUID},
    {"SKU", &System::SKU},
    {"Family", &System::Family},
    {"BoardManufacturer", &System::BoardManufacturer},
    {"BoardModel", &System::BoardModel},
    {"BoardVersion", &System::BoardVersion},
    {"BoardSerialNo", &System::BoardSerialNo},
    {"FirmwareVendor", &System::FirmwareVendor},
    {"FirmwareVersion", &System::FirmwareVersion},
    {"FirmwareDate", &System::FirmwareDate},
    {"HostName", &System::HostName},
    {"CollectedBy", &System::CollectedBy},
    {"CollectedFrom", &System::CollectedFrom},
};

Value collected(const System& system) {
  const auto text = system.CollectedAt == 0 ? "" : utc_text(static_cast<int64_t>(system.CollectedAt));
  return text.empty() ? Value() : Value(text + " UTC");
}

constexpr Field<System> kFields[] = {
    ZYMDB_RECORD_FIELD(System, HostName, "HOST", "name of the host").place().shown(),
    ZYMDB_RECORD_FIELD(System, Manufacturer, "MANUFACTURER", "manufacturer")
        .shown()
        .model()
        .tells(Tells::kMaker),
    ZYMDB_RECORD_FIELD(System, Model, "MODEL", "model").shown().model().tells(Tells::kName),
    ZYMDB_RECORD_FIELD(System, Version, "VERSION", "version of the model").model().tells(Tells::kVersion),
    ZYMDB_RECORD_FIELD(System, SerialNo, "SERIAL", "serial number").identity().shown(),
    ZYMDB_RECORD_FIELD(System, UUID, "UUID", "universally unique identifier").identity(),
    ZYMDB_RECORD_FIELD(System, SKU, "SKU", "stock keeping unit").model(),
    ZYMDB_RECORD_FIELD(System, Family, "FAMILY", "family of models"),
    ZYMDB_RECORD_FIELD(System, BoardManufacturer, "BOARDMAKER", "manufacturer of the system board").model(),
    ZYMDB_RECORD_FIELD(System, BoardModel, "BOARD", "model of the system board").shown().model(),
    ZYMDB_RECORD_FIELD(System, BoardVersion, "BOARDVERSION", "version of the system board"),
    ZYMDB_RECORD_FIELD(System, BoardSerialNo, "BOARDSERIAL", "serial number of the system board").identity(),
    ZYMDB_RECORD_FIELD(System, FirmwareVendor, "FIRMWAREVENDOR", "vendor of the system's firmware"),
    ZYMDB_RECORD_FIELD(System, FirmwareVersion, "FIRMWARE", "version of the system's firmware")
        .shown()
        .version(),
    ZYMDB_RECORD_FIELD(System, FirmwareDate, "FIRMWAREDATE", "release date of the system's firmware").shown(),
    ZYMDB_RECORD_FIELD(System, CollectedAt, "COLLECTEDAT",
                       "when a collection last changed anything, since the start of 1970")
        .unit("s")
        .tells(Tells::kCollected)
        .changing()
        .zero_is_unknown(),
    derived<System>("Collected", "COLLECTED", "what CollectedAt says", collected).changing().shown(),
    ZYMDB_RECORD_FIELD(System, CollectedBy, "COLLECTOR", "the version that collected it").changing(),
    ZYMDB_RECORD_FIELD(System, CollectedFrom, "SOURCES", "what it was collected from").long_text().changing(),
};

System read_system(Rows& rows) {
  System system;
  for (const auto& [name, text] : kColumns) system.*text = rows.text(name);
  const Value at = rows.stored("CollectedAt");
  if (const auto* const seconds = std::get_if<uint64_t>(&at)) system.CollectedAt = *seconds;
  return system;
}

std::vector<System> list_systems() {
  const Reading reading("system");
  Rows rows(reading, get_dmdb_handle(), "System");
  std::vector<System> systems;
  while (rows.step()) systems.push_back(read_system(rows));
  reading.require_whole();
  return systems;
}

}  // namespace

RecordType system() {
  return describe<System>("system", "The machine as a whole: model, board and firmware", kFields,
                          list_systems)
      .as(Nature::kMachine);
}

}  // namespace zymdb::records
