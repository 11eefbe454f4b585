#include "collect/rows/adapter_rows.h"

#include <cstdint>
#include <optional>
#include <string>

#include "collect/rows/function_view.h"
#include "collect/rows/row_columns.h"
#include "common/text.h"
#include "zymdb_pci.h"

namespace zymdb::collect {
namespace {

// An adapter, and whether it can be taken out of the machine.
struct AdapterView : FunctionView {
  bool is_removable;
};

constexpr uint32_t kHealthNotAssessed = 0;

// Codes of the connector type and package type tables.
constexpr uint32_t kConnectorPci = 16;
constexpr uint32_t kConnectorPciX = 17;
constexpr uint32_t kConnectorExpress = 18;
constexpr uint32_t kConnectorOnboard = 0x8004;
constexpr uint32_t kConnectorOcp = 0x8006;
constexpr uint32_t kPackageModule = 9;
constexpr uint32_t kPackageStorage = 15;
constexpr uint32_t kPackageOnboard = 0x8000;

// What people call an adapter when it is on the board: base class, and subclasses where not all count.
struct OnboardAdapter {
  uint8_t base;
  std::optional<uint8_t> subclass;
};
constexpr OnboardAdapter kOnboardAdapters[] = {
    {kClassStorage, {}},     {kClassNetwork, {}},    {kClassDisplay, {}},     {kClassAccelerator, {}},
    {kClassCoprocessor, {}}, {kClassEncryption, {}}, {kClassSerialBus, 0x04},  // Fibre Channel
    {kClassSerialBus, 0x06},                                                   // InfiniBand
};

bool is_adapter(const FunctionView& view) {
  if (view.pci().is_bridge()) return false;
  if (view.slot) return true;
  for (const auto& [base, subclass] : kOnboardAdapters) {
    if (view.pci().base_class() == base &&
        subclass.value_or(view.pci().subclass()) == view.pci().subclass()) {
      return true;
    }
  }
  return false;
}

// On the board the subsystem is the board itself: only a card or drive is called what its subsystem is.
Value name(const AdapterView& view) {
  const PciFunction& pci = view.pci();
  if (!view.is_removable) return Value::text(device_name(view.names, pci.vendor, pci.device));
  return Value::text(card_name(view.names, pci.vendor, pci.device, pci.subsystem_vendor.value_or(0),
                               pci.subsystem_device.value_or(0)));
}

// In a slot it is the slot's type, on the board the code for that.
Value connector_type(const AdapterView& view) {
  if (!view.slot) return Value::text(hex_text(kConnectorOnboard));
  return view.slot->type ? Value::text(hex_text(*view.slot->type)) : Value();
}

template <auto Read>
Value of_function(const AdapterView& view) {
  return Read(view);
}

constexpr Column<AdapterView> kAdapterColumns[] = {
    {{"PCIFuncKey", Role::kKey}, of_function<function_key>},
    {{"PCIKey", Role::kPlace}, of_function<device_key>},
    {{"NodeNo", Role::kValue}, only_node},
    {{"SegNo", Role::kValue}, of_function<segment>},
    {{"BusNo", Role::kValue}, of_function<bus>},
    {{"DeviceNo", Role::kValue}, of_function<device>},
    {{"FunctionNo", Role::kValue}, of_function<function_number>},
    {{"Location", Role::kPlace}, of_function<location>},
    {{"SlotNo", Role::kPlace}, of_function<slot_number>},
    {{"CardName", Role::kValue, Kind::kText}, name},
    {{"ConnectorType", Role::kPlace, Kind::kText}, connector_type},
    {{"AIMSupported", Role::kInitial}, [](const AdapterView&) { return Value::number(ZYMDB_AIM_NONE); }},
    {{"HealthStatus", Role::kInitial}, [](const AdapterView&) { return Value::number(kHealthNotAssessed); }},
};

// ---- Connector and package

// SMBIOS's codes of a slot's data path: lanes of PCI Express, else bits.
struct DataWidth {
  uint8_t code;
  uint32_t width;
  uint32_t connector;  // of a PCI Express slot of that width; 0: none
};
constexpr DataWidth kDataWidths[] = {
    {0x03, 8, 0},  {0x04, 16, 0}, {0x05, 32, 0}, {0x06, 64, 0},  {0x07, 128, 0}, {0x08, 1, 19},
    {0x09, 2, 20}, {0x0A, 4, 21}, {0x0B, 8, 22}, {0x0C, 12, 18}, {0x0D, 16, 23}, {0x0E, 32, 24},
};

const DataWidth* data_width(const FunctionView& view) {
  for (const auto& width : kDataWidths) {
    if (view.slot && view.slot->data_bus_width == width.code) return &width;
  }
  return nullptr;
}

struct TypeRange {
  uint8_t first;
  uint8_t last;
  uint32_t connector;
};
constexpr TypeRange kConnectors[] = {
    {0x06, 0x06, kConnectorPci},     {0x0E, 0x0E, kConnectorPci}, {0x12, 0x12, kConnectorPciX},
    {0xA5, 0xB6, kConnectorExpress}, {0x26, 0x28, kConnectorOcp}, {0xB8, 0xC4, kConnectorExpress},
};

Value max_data_width(const FunctionView& view) {
  if (!view.slot) return view.pci().link.max_width == 0 ? Value() : link_number<&PciLink::max_width>(view);
  const DataWidth* width = data_width(view);
  return width ? Value::number(width->width) : Value();
}

Value connector_layout(const FunctionView& view) {
  if (!view.slot) return Value::text(std::to_string(kConnectorOnboard));
  for (const auto& [first, last, connector] : kConnectors) {
    if (view.slot->type.value_or(0) < first || view.slot->type.value_or(0) > last) continue;
    const DataWidth* width = data_width(view);
    const bool sized = connector == kConnectorExpress && width && width->connector != 0;
    return Value::text(std::to_string(sized ? width->connector : connector));
  }
  return {};
}

Value package_type(const FunctionView& view) {
  const bool drive = view.location == ZYMDB_LOCATION_BAY && view.pci().base_class() == kClassStorage;
  const uint32_t code = !view.slot ? kPackageOnboard : drive ? kPackageStorage : kPackageModule;
  return Value::text(std::to_string(code));
}

constexpr Column<FunctionView> kMiscColumns[] = {
    {{"PCIFuncKey", Role::kKey}, function_key},
    {{"MaxDataWidth", Role::kPlace}, max_data_width},
    {{"ConnectorLayout", Role::kPlace, Kind::kText}, connector_layout},
    {{"PackageType", Role::kPlace, Kind::kText}, package_type},
    others_column<FunctionView>("AIMSpecVersion", Kind::kText),
};

// ---- Rows of other writers

bool is_managed_out_of_band(const Value& supported) {
  return !supported.is_null() && supported != Value::number(ZYMDB_AIM_NONE);
}

bool is_set(const Value& value) {
  return !value.is_null();
}

}  // namespace

std::vector<TableContent> adapter_rows(const Machine& machine, const PciIds& names,
                                       const std::set<FunctionKey>& known_removable) {
  auto adapters = make_content("PCIAdapter", kAdapterColumns);
  auto misc = make_content("PCIMisc", kMiscColumns);
  adapters.is_foreign = where("AIMSupported", is_managed_out_of_band);
  misc.is_foreign = where("AIMSpecVersion", is_set);
  adapters.function_column = misc.function_column = "PCIFuncKey";
  for (const auto& function : *machine.functions) {
    const FunctionView view(machine, function, names);
    if (is_adapter(view)) {
      const bool stays_removable = !function.place_known && known_removable.contains(function.key);
      add_row(adapters, kAdapterColumns, {view, view.slot || stays_removable}, function.place_known);
      add_row(misc, kMiscColumns, view, function.place_known);
    } else if (!function.place_known) {
      // It may sit in a slot that this run cannot see.
      adapters.kept.add(function.key);
      misc.kept.add(function.key);
    }
  }
  return {std::move(adapters), std::move(misc)};
}

}  // namespace zymdb::collect
