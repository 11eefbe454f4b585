#include "records/firmware.h"

#include <map>
#include <tuple>
#include <utility>
#include <vector>

#include "common/text.h"
#include "records/pci.h"
#include "records/rows.h"
#include "records/stored_rows.h"
#include "records/text.h"

namespace zymdb::records {
namespace {

struct Component : _ZYMDB_PCI_Firmware {
  uint32_t PCIFuncKey = 0;
};
using Device = Stored<_ZYMDB_PLDM_Firmware>;
struct Embedded : Stored<_ZYMDB_Embedded_Firmware> {
  std::string version_text;  // as it was reported
};
using Event = _ZYMDB_DPU_Event;

Value function_address(const Component& component) {
  return FunctionKey(component.PCIFuncKey).text();
}

// The record's number has no room for "3.0c". Who reports no words reports a number.
Value version(const Embedded& device) {
  if (!device.version_text.empty()) return device.version_text;
  return device.Version == 0 ? Value() : std::to_string(device.Version);
}

Value device_place(const Device& device) {
  const Value* const location = device.stored("Location");
  if (location != nullptr && !is_known(*location)) return {};
  return place_text(device.Location, device.SlotNo);
}

constexpr char kFailed[] = "failed";

bool has_failed(const Device& device) {
  return device.Updated != 0 && device.UpdateErrCode != 0;
}

Value update_state(const Device& device) {
  std::string text = device.Updated == 0 ? "" : has_failed(device) ? kFailed : "succeeded";
  if (device.Status == ZYMDB_PLDM_UPDATE_PENDING) text += text.empty() ? "pending" : ", pending";
  return value_of(text);
}

Attention update_attention(const Value& update) {
  const auto* const text = std::get_if<std::string>(&update);
  return text != nullptr && text->starts_with(kFailed) ? Attention::kWarning : Attention::kNone;
}

Value time_text(const Event& event) {
  return value_of(utc_text(event.Timestamp));
}

constexpr Field<Component> kComponentFields[] = {
    derived<Component>("Function", "FUNCTION", "address of the PCI function", function_address)
        .tells(Tells::kFunction)
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(Component, PCIFuncKey, "KEY", "function key").hex(8).place(),
    ZYMDB_RECORD_FIELD(Component, FirmwareName, "NAME", "name of the component")
        .tells(Tells::kName)
        .long_text()
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(Component, VersionString, "VERSION", "installed version")
        .tells(Tells::kVersion)
        .shown()
        .version(),
    ZYMDB_RECORD_FIELD(Component, Description, "DESCRIPTION", "description"),
    ZYMDB_RECORD_FIELD(Component, ReleaseDate, "DATE", "release date").shown(),
    ZYMDB_RECORD_FIELD(Component, Classification, "CLASSCODE", "classification code")
        .hex(4)
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Component, ClassificationString, "CLASS", "classification")
        .shown()
        .unknown_at("Unknown"),
    ZYMDB_RECORD_FIELD(Component, Manufacture, "MAKER", "maker").tells(Tells::kMaker).shown(),
    ZYMDB_RECORD_FIELD(Component, SoftwareID, "SOFTWARE", "software id").shown().place(),
};

constexpr Field<Device> kDeviceFields[] = {
    derived<Device>("Place", "PLACE", "slot, drive bay or system board (Location and SlotNo)", device_place)
        .tells(Tells::kPosition)
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(Device, DeviceName, "DEVICE", "name").tells(Tells::kName).long_text().shown().model(),
    ZYMDB_RECORD_FIELD(Device, DeviceType, "TYPE", "device type code").unknown_at(23),
    ZYMDB_RECORD_FIELD(Device, PCIKey, "KEY", "PCI key").hex(8).place(),
    ZYMDB_RECORD_FIELD(Device, PCIFuncKey, "FUNCTIONKEY", "function key").hex(8).place(),
    ZYMDB_RECORD_FIELD(Device, Location, "LOCATION", "0 system board, 1 slot, 2 drive bay").place(),
    ZYMDB_RECORD_FIELD(Device, SlotNo, "SLOT", "slot number within the location").place(),
    ZYMDB_RECORD_FIELD(Device, Manufacture, "MAKER", "maker").tells(Tells::kMaker),
    ZYMDB_RECORD_FIELD(Device, SoftwareID, "SOFTWARE", "software id").shown(),
    ZYMDB_RECORD_FIELD(Device, VersionString, "VERSION", "installed version")
        .tells(Tells::kVersion)
        .shown()
        .version(),
    ZYMDB_RECORD_FIELD(Device, PendingVersionString, "NEXT", "version staged for the next activation")
        .shown(),
    ZYMDB_RECORD_FIELD(Device, PkgVersionString, "PACKAGE", "version of the package"),
    ZYMDB_RECORD_FIELD(Device, ReleaseDate, "DATE", "release date"),
    ZYMDB_RECORD_FIELD(Device, PendingReleaseDate, "NEXTDATE", "release date of the staged version"),
    ZYMDB_RECORD_FIELD(Device, UpdateSupport, "UPDATABLE", "0: cannot be updated"),
    derived<Device>("Update", "UPDATE", "what became of the last update", update_state)
        .shown()
        .judged(update_attention)
        .state(),
    ZYMDB_RECORD_FIELD(Device, Updated, "UPDATED", "not 0: an update was applied").state(),
    ZYMDB_RECORD_FIELD(Device, UpdateMethod, "METHOD", "update method code").hex(4),
    ZYMDB_RECORD_FIELD(Device, UpdateAuxInfo, "AUXINFO", "auxiliary information"),
    ZYMDB_RECORD_FIELD(Device, UpdateErrCode, "ERRORCODE", "0: the update succeeded").state(),
    ZYMDB_RECORD_FIELD(Device, UpdateErrString, "ERROR", "why the update failed").state(),
    ZYMDB_RECORD_FIELD(Device, Status, "STATUS", "2: an update is pending").state(),
};

constexpr Field<Embedded> kEmbeddedFields[] = {
    ZYMDB_RECORD_FIELD(Embedded, DeviceName, "DEVICE", "name")
        .tells(Tells::kName)
        .long_text()
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(Embedded, DeviceIndex, "INDEX", "tells devices of a software id apart")
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(Embedded, StructRev, "REVISION", "revision of its description"),
    derived<Embedded>("VersionString", "VERSION", "version as it was reported, or else its number", version)
        .tells(Tells::kVersion)
        .shown()
        .version(),
    ZYMDB_RECORD_FIELD(Embedded, Version, "VERSIONNO", "number of the version, or of its first part"),
    ZYMDB_RECORD_FIELD(Embedded, SoftwareID, "SOFTWARE", "software id").shown().place(),
    ZYMDB_RECORD_FIELD(Embedded, Class, "CLASS", "class code").hex(4),
    ZYMDB_RECORD_FIELD(Embedded, Category, "CATEGORY", "category code"),
    ZYMDB_RECORD_FIELD(Embedded, SubCategory, "SUBCATEGORY", "subcategory code"),
    ZYMDB_RECORD_FIELD(Embedded, Checksum, "CHECKSUM", "checksum").hex(2),
};

constexpr Field<Event> kEventFields[] = {
    ZYMDB_RECORD_FIELD(Event, Id, "ID", "number of the event").shown(),
    derived<Event>("Time", "TIME", "when it happened, UTC", time_text).shown(),
    ZYMDB_RECORD_FIELD(Event, Timestamp, "TIMESTAMP", "the same in seconds since 1970"),
    ZYMDB_RECORD_FIELD(Event, GenID, "GENERATOR", "who reported it").shown(),
    ZYMDB_RECORD_FIELD(Event, Message, "MESSAGE", "what happened").long_text().shown(),
};

std::vector<Component> list_components() {
  const Reading reading("firmware");
  std::vector<Component> components;
  for (const auto& function : list_functions(reading)) {
    const uint32_t key = FunctionKey::of(function).value;
    _ZYMDB_PCI_Firmware_List list{};
    const int status = zymdb_get_pci_firmware_list(key, &list);
    const auto of_function = take_array(list.Firmwares, list.Count);
    reading.require(status);
    for (const auto& component : of_function) components.push_back({component, key});
  }
  reading.require_whole();
  return components;
}

// What an operation of the library lists.
template <class List>
auto list_whole(const char* what, int (*read)(List*)) {
  const Reading reading(what);
  List list{};
  const int status = read(&list);
  auto devices = take_array(list.Firmwares, list.Count);
  reading.require(status);
  reading.require_whole();
  return devices;
}

std::vector<Event> list_events(int slot) {
  const Reading reading("events");
  _ZYMDB_DPU_Event_List list{};
  const int status = dpu_get_log_by_slot(slot, &list);
  auto events = take_array(list.Events, list.Count);
  reading.require(status);
  reading.require_whole();
  return events;
}

// Neither list tells the ids of its rows: what names a device there finds its row as well.
using EmbeddedName = std::pair<std::string, uint32_t>;                     // software id and index
using DeviceName = std::tuple<std::string, uint32_t, uint32_t, uint32_t>;  // software id, function and place

// A software id as far as the record has room for it.
template <class Record>
std::string software_id(Rows& rows) {
  return rows.text("SoftwareID").substr(0, sizeof(Record::SoftwareID) - 1);
}

// Of two rows with one name neither is kept: whose is whose cannot be told.
template <class Name, class Row>
void keep_if_alone(std::map<Name, Row>& rows, Name name, Row row) {
  const auto [at, is_new] = rows.emplace(std::move(name), std::move(row));
  if (!is_new) at->second = {};
}

std::map<DeviceName, StoredRow> device_rows(const Reading& reading) {
  const auto columns = number_columns(kDeviceFields);
  std::map<DeviceName, StoredRow> found;
  Rows rows(reading, get_dmdb_handle(), "PldmDeviceFirmware");
  while (rows.step())
    keep_if_alone(found,
                  DeviceName(software_id<Device>(rows), rows.number("PCIFuncKey"), rows.number("Location"),
                             rows.number("SlotNo")),
                  stored_row(rows, columns));
  reading.require_whole();
  return found;
}

std::vector<Device> list_devices(PldmReader read) {
  const auto found = list_whole("PLDM devices", read);
  const auto rows = device_rows(Reading("PLDM devices"));
  std::vector<Device> devices;
  for (const auto& device : found) {
    const auto row = rows.find({device.SoftwareID, device.PCIFuncKey, device.Location, device.SlotNo});
    devices.push_back({device, row != rows.end() ? row->second : StoredRow()});
  }
  return devices;
}

struct EmbeddedRow {
  StoredRow numbers;
  std::string version;
};

std::map<EmbeddedName, EmbeddedRow> embedded_rows(const Reading& reading) {
  const auto columns = number_columns(kEmbeddedFields);
  std::map<EmbeddedName, EmbeddedRow> found;
  Rows rows(reading, get_dmdb_handle(), "EmbeddedDeviceFirmware");
  while (rows.step())
    keep_if_alone(found, EmbeddedName(software_id<Embedded>(rows), rows.number("DeviceIndex")),
                  EmbeddedRow{stored_row(rows, columns), rows.text("VersionString")});
  reading.require_whole();
  return found;
}

std::vector<Embedded> list_embedded() {
  const auto found = list_whole("embedded devices", zymdb_get_embedded_firmware_list);
  const auto rows = embedded_rows(Reading("embedded devices"));
  std::vector<Embedded> devices;
  for (const auto& device : found) {
    const auto row = rows.find({device.SoftwareID, device.DeviceIndex});
    const EmbeddedRow stored = row != rows.end() ? row->second : EmbeddedRow();
    devices.push_back({{device, stored.numbers}, stored.version});
  }
  return devices;
}

}  // namespace

RecordType firmware_components() {
  return describe<Component>("firmware", "Firmware and software components of PCI functions",
                             kComponentFields, list_components)
      .as(Nature::kFirmware);
}

RecordType pldm_devices(std::function<PldmReader()> which) {
  return describe<Device>("pldm", "Firmware of devices that are updated over PLDM", kDeviceFields,
                          [which = std::move(which)] { return list_devices(which()); })
      .as(Nature::kFirmware);
}

RecordType embedded_devices() {
  return describe<Embedded>("embedded", "Firmware of devices on the system board", kEmbeddedFields,
                            list_embedded)
      .as(Nature::kFirmware);
}

RecordType dpu_events(std::function<int()> slot) {
  return describe<Event>("events", "Print the events of the DPU in a slot", kEventFields,
                         [slot = std::move(slot)] { return list_events(slot()); });
}

}  // namespace zymdb::records
