#include <algorithm>
#include <map>
#include <tuple>

#include "records/pci.h"
#include "records/stored_rows.h"
#include "records/text.h"
#include "records/vpds.h"

namespace zymdb::records {
namespace {

struct Adapter : _ZYMDB_PCI_Adapter {
  std::optional<FunctionKey> first_function;
  std::string SerialNo;
  std::string PartNo;
};

Value place(const Adapter& adapter) {
  return place_text(adapter.Location, adapter.SlotNo);
}

Value address(const Adapter& adapter) {
  return adapter.first_function ? Value(adapter.first_function->text()) : Value();
}

constexpr Field<Adapter> kFields[] = {
    derived<Adapter>("Place", "PLACE", "slot, drive bay or system board (Location and SlotNo)", place)
        .tells(Tells::kPosition)
        .shown()
        .place(),
    derived<Adapter>("Address", "ADDRESS", "bus address of the adapter's first function", address)
        .tells(Tells::kFirstFunction)
        .place(),
    ZYMDB_RECORD_FIELD(Adapter, PCIKey, "KEY", "PCI key, shared by the adapter's functions")
        .hex(8)
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(Adapter, NodeNo, "NODE", "node that the adapter belongs to"),
    ZYMDB_RECORD_FIELD(Adapter, SlotNo, "SLOTNO", "slot number within the location").place(),
    ZYMDB_RECORD_FIELD(Adapter, ConnectorType, "CONNECTORTYPE", "connector or slot type code")
        .hex(4)
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Adapter, ConnectorTypeName, "CONNECTOR", "connector or slot type")
        .shown()
        .unknown_at("Unknown"),
    ZYMDB_RECORD_FIELD(Adapter, SerialNo, "SERIAL", "serial number, from its vital product data")
        .identity()
        .shown(),
    ZYMDB_RECORD_FIELD(Adapter, PartNo, "PART", "part number, from its vital product data").shown().model(),
    ZYMDB_RECORD_FIELD(Adapter, CardName, "NAME", "name").tells(Tells::kName).long_text().shown().model(),
    ZYMDB_RECORD_FIELD(Adapter, AIMSupported, "AIM", "how it is managed: 1 out of band"),
    ZYMDB_RECORD_FIELD(Adapter, Location, "LOCATION", "0 system board, 1 slot, 2 drive bay").place(),
    ZYMDB_RECORD_FIELD(Adapter, HealthStatus, "HEALTH", "health, as its writer codes it").state(),
    ZYMDB_RECORD_FIELD(Adapter, NcsiIdValid, "NCSI", "1: the slot has NC-SI package ids"),
    ZYMDB_RECORD_FIELD(Adapter, PackageID1, "PACKAGE1", "first NC-SI package id").unknown_at(255),
    ZYMDB_RECORD_FIELD(Adapter, PackageID2, "PACKAGE2", "second NC-SI package id").unknown_at(255),
};

// What functions tell of their device.
struct Device {
  FunctionKey first_function;
  Vpd vpd;  // of the lowest function that has any
};

uint32_t number_of(const StoredRow& row, const char* column) {
  const auto* const number = std::get_if<uint64_t>(&row.at(column));
  return number != nullptr ? static_cast<uint32_t>(*number) : 0;
}

// By PCI key; the functions come in their order.
std::map<uint32_t, Device> read_devices(const Reading& reading) {
  const auto vpds = read_function_vpds(reading);
  std::map<uint32_t, Device> devices;
  for (const auto& [function, row] : read_stored_rows(reading, "PCIs", "FunKey", {"DevKey", "HardwareId"})) {
    if (!is_known(row.at("DevKey"))) continue;
    auto& device =
        devices.try_emplace(number_of(row, "DevKey"), Device{FunctionKey(function), {}}).first->second;
    const auto vpd = vpds.find(number_of(row, "HardwareId"));
    if (vpd != vpds.end() && device.vpd.HardwareTypeId == 0) device.vpd = vpd->second;
  }
  return devices;
}

Adapter make_adapter(const _ZYMDB_PCI_Adapter& found, const std::map<uint32_t, Device>& devices) {
  const auto device = devices.find(found.PCIKey);
  if (device == devices.end()) return {found, {}, {}, {}};
  const auto& [function, vpd] = device->second;
  return {found, function, vpd.SerialNo, vpd.PartNo};
}

std::vector<Adapter> list_adapters() {
  const Reading reading("adapters");
  _ZYMDB_PCI_Adapter_List list{};
  const int status = zymdb_get_pci_adapter_list(&list);
  const auto found = take_array(list.adapters, list.count);
  reading.require(status);
  const auto devices = read_devices(reading);
  std::vector<Adapter> adapters;
  for (const auto& each : found) adapters.push_back(make_adapter(each, devices));
  reading.require_whole();
  std::ranges::sort(adapters, {},
                    [](const Adapter& each) { return std::tuple(each.Location, each.SlotNo, each.PCIKey); });
  return adapters;
}

}  // namespace

RecordType adapters() {
  return describe<Adapter>("adapters", "Adapters: cards, drives and on-board devices", kFields,
                           list_adapters);
}

}  // namespace zymdb::records
