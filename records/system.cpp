#include "records/system.h"

#include "records/reading.h"

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
};

// The column of a field, which bears its name.
struct Column {
  const char* name;
  std::string System::*field;
};
#define ZYMDB_SYSTEM_COLUMN(NAME) \
  { #NAME, &System::NAME }
constexpr Column kColumns[] = {
    ZYMDB_SYSTEM_COLUMN(Manufacturer),
    ZYMDB_SYSTEM_COLUMN(Model),
    ZYMDB_SYSTEM_COLUMN(Version),
    ZYMDB_SYSTEM_COLUMN(SerialNo),
    ZYMDB_SYSTEM_COLUMN(UUID),
    ZYMDB_SYSTEM_COLUMN(SKU),
    ZYMDB_SYSTEM_COLUMN(Family),
    ZYMDB_SYSTEM_COLUMN(BoardManufacturer),
    ZYMDB_SYSTEM_COLUMN(BoardModel),
    ZYMDB_SYSTEM_COLUMN(BoardVersion),
    ZYMDB_SYSTEM_COLUMN(BoardSerialNo),
    ZYMDB_SYSTEM_COLUMN(FirmwareVendor),
    ZYMDB_SYSTEM_COLUMN(FirmwareVersion),
    ZYMDB_SYSTEM_COLUMN(FirmwareDate),
};
#undef ZYMDB_SYSTEM_COLUMN

constexpr Field<System> kFields[] = {
    ZYMDB_RECORD_FIELD(System, Manufacturer, "MANUFACTURER", "manufacturer").shown(),
    ZYMDB_RECORD_FIELD(System, Model, "MODEL", "model").shown(),
    ZYMDB_RECORD_FIELD(System, Version, "VERSION", "version of the model"),
    ZYMDB_RECORD_FIELD(System, SerialNo, "SERIAL", "serial number").identity().shown(),
    ZYMDB_RECORD_FIELD(System, UUID, "UUID", "universally unique identifier").identity(),
    ZYMDB_RECORD_FIELD(System, SKU, "SKU", "stock keeping unit"),
    ZYMDB_RECORD_FIELD(System, Family, "FAMILY", "family of models"),
    ZYMDB_RECORD_FIELD(System, BoardManufacturer, "BOARDMAKER", "manufacturer of the system board"),
    ZYMDB_RECORD_FIELD(System, BoardModel, "BOARD", "model of the system board").shown(),
    ZYMDB_RECORD_FIELD(System, BoardVersion, "BOARDVERSION", "version of the system board"),
    ZYMDB_RECORD_FIELD(System, BoardSerialNo, "BOARDSERIAL", "serial number of the system board").identity(),
    ZYMDB_RECORD_FIELD(System, FirmwareVendor, "FIRMWAREVENDOR", "vendor of the system's firmware"),
    ZYMDB_RECORD_FIELD(System, FirmwareVersion, "FIRMWARE", "version of the system's firmware").shown(),
    ZYMDB_RECORD_FIELD(System, FirmwareDate, "FIRMWAREDATE", "release date of the system's firmware").shown(),
};
static_assert(std::size(kFields) == std::size(kColumns));

System read_system(zym_db_result_t* row) {
  System system;
  int column = 0;
  for (const auto& [name, field] : kColumns) {
    char text[257] = "";
    zym_db_result_column_text(row, column++, text, sizeof text);
    system.*field = text;
  }
  return system;
}

std::vector<System> list_systems() {
  const Reading reading("system");
  std::vector<const char*> names;
  for (const auto& column : kColumns) names.push_back(column.name);
  zym_db_result_t* raw = nullptr;
  const int status = zym_db_query(get_dmdb_handle(), "System", names.data(), static_cast<int>(names.size()),
                                  nullptr, nullptr, 0, 0, &raw);
  const ResultPtr result(raw);
  reading.require(status);
  std::vector<System> systems;
  while (result != nullptr && zym_db_result_step(result.get()) == ZYM_DB_STATUS_ROW)
    systems.push_back(read_system(result.get()));
  reading.require_whole();
  return systems;
}

}  // namespace

RecordType system() {
  return describe<System>("system", "The machine as a whole: model, board and firmware", kFields,
                          list_systems);
}

}  // namespace zymdb::records
