#include "collect/rows/function_rows.h"

#include <cstdint>
#include <string>

#include "collect/rows/function_view.h"
#include "collect/rows/row_columns.h"
#include "collect/sources/pci/pci_vpd.h"
#include "zymdb_db.h"

namespace zymdb::collect {
namespace {

template <class Record>
Value hardware_type(const Record&) {
  return Value::number(ZYMDB_HARDWARE_PCI);
}

bool is_other_hardware(const Value& type) {
  return !type.is_null() && type != Value::number(ZYMDB_HARDWARE_PCI);
}

// ---- Functions

Value slot_designation(const FunctionView& view) {
  return text_or_null(view.slot ? view.slot->designation : view.function.designation);
}

template <auto Field>
Value slot_code(const FunctionView& view) {
  return view.slot ? number_or_null(view.slot->*Field) : Value();
}

template <auto Field>
Value pci_number(const FunctionView& view) {
  return Value::number(view.pci().*Field);
}

template <auto Field>
Value pci_optional(const FunctionView& view) {
  return number_or_null(view.pci().*Field);
}

constexpr Column<FunctionView> kFunctionColumns[] = {
    {{"FunKey", Role::kKey}, function_key},
    {{"DevKey", Role::kPlace}, device_key},
    {{"HardwareId", Role::kValue}, function_key},
    {{"HardwareTypeId", Role::kValue}, hardware_type},
    {{"BridgeId", Role::kValue},
     [](const FunctionView& view) { return number_or_null(view.function.bridge_key); }},
    {{"SegNo", Role::kValue}, segment},
    {{"BusNo", Role::kValue}, bus},
    {{"DeviceNo", Role::kValue}, device},
    {{"FunctionNo", Role::kValue}, function_number},
    {{"VendorId", Role::kValue}, pci_number<&PciFunction::vendor>},
    {{"DeviceId", Role::kValue}, pci_number<&PciFunction::device>},
    {{"RevId", Role::kValue}, pci_number<&PciFunction::revision>},
    {{"ClsCode", Role::kValue}, pci_number<&PciFunction::class_code>},
    {{"SubVendorId", Role::kValue}, pci_optional<&PciFunction::subsystem_vendor>},
    {{"SubDeviceId", Role::kValue}, pci_optional<&PciFunction::subsystem_device>},
    {{"SlotNo", Role::kPlace}, slot_number},
    {{"Location", Role::kPlace}, location},
    {{"SlotDesignation", Role::kPlace, Kind::kText}, slot_designation},
    {{"SlotType", Role::kPlace}, slot_code<&Slot::type>},
    {{"SlotDataBusWidth", Role::kPlace}, slot_code<&Slot::data_bus_width>},
    {{"NodeIndex", Role::kValue}, only_node},
    {{"LanesInUse", Role::kValue}, link_number<&PciLink::width>},
    {{"MaxLanes", Role::kValue}, link_number<&PciLink::max_width>},
    {{"MaxPCIeType", Role::kValue}, link_number<&PciLink::max_generation>},
    {{"PCIeType", Role::kValue}, link_number<&PciLink::generation>},
    {{"Driver", Role::kTold, Kind::kText},
     [](const FunctionView& view) { return text_or_null(view.pci().driver); }},
    {{"IOMMUGroup", Role::kTold}, pci_optional<&PciFunction::iommu_group>},
    {{"NUMANode", Role::kTold}, pci_optional<&PciFunction::numa_node>},
};

// ---- Vital product data

struct VpdRecord {
  FunctionKey key;
  PciVpd vpd;
};

template <auto Field>
Value vpd_text(const VpdRecord& record) {
  return text_or_null(record.vpd.*Field);
}

constexpr Column<VpdRecord> kVpdColumns[] = {
    {{"HardwareId", Role::kKey}, [](const VpdRecord& record) { return Value::number(record.key); }},
    {{"HardwareTypeId", Role::kValue}, hardware_type},
    {{"ProductName", Role::kValue, Kind::kText}, vpd_text<&PciVpd::product_name>},
    {{"Manufacture", Role::kValue, Kind::kText}, vpd_text<&PciVpd::manufacturer>},
    {{"SerialNo", Role::kValue, Kind::kText}, vpd_text<&PciVpd::serial_number>},
    {{"PartNo", Role::kValue, Kind::kText}, vpd_text<&PciVpd::part_number>},
    {{"Model", Role::kValue, Kind::kText}, vpd_text<&PciVpd::model>},
    {{"FRUNo", Role::kValue, Kind::kText}, vpd_text<&PciVpd::fru_number>},
};

}  // namespace

TableContent function_rows(const Machine& machine, const PciIds& names) {
  auto content = make_content("PCIs", kFunctionColumns);
  content.is_foreign = where("HardwareTypeId", is_other_hardware);
  content.function_column = "FunKey";
  for (const auto& function : *machine.functions)
    add_row(content, kFunctionColumns, {machine, function, names}, function.place_known,
            function.pci.is_told_by_system);
  return content;
}

TableContent vpd_rows(const Machine& machine) {
  auto content = make_content("VPDs", kVpdColumns);
  content.is_foreign = where("HardwareTypeId", is_other_hardware);
  content.function_column = "HardwareId";
  for (const auto& function : *machine.functions) {
    // A present function keeps the row it has where its own data cannot be read: others know of it as well.
    content.kept.add(function.key);
    if (!function.pci.vpd) continue;
    const auto vpd = parse_pci_vpd(as_bytes(*function.pci.vpd));
    if (vpd && !vpd->empty()) add_row(content, kVpdColumns, {function.key, *vpd}, true);
  }
  return content;
}

}  // namespace zymdb::collect
