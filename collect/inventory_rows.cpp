#include "inventory_rows.h"

#include <array>
#include <span>
#include <utility>

#include "pci_vpd.h"
#include "row_columns.h"
#include "text.h"

namespace zymdb::collect {
namespace {

constexpr std::uint32_t kPciHardwareType = 3;
constexpr std::uint32_t kOnlyNode = 0;
constexpr std::uint32_t kNotAimManaged = 0;
constexpr std::uint32_t kHealthNotAssessed = 0;

// Codes of the connector type and package type tables.
constexpr std::uint32_t kConnectorPci = 16;
constexpr std::uint32_t kConnectorPciX = 17;
constexpr std::uint32_t kConnectorExpress = 18;
constexpr std::uint32_t kConnectorOnboard = 0x8004;
constexpr std::uint32_t kConnectorOcp = 0x8006;
constexpr std::uint32_t kPackageModule = 9;
constexpr std::uint32_t kPackageStorage = 15;
constexpr std::uint32_t kPackageOnboard = 0x8000;

// ---- Processors

using Processor = SmbiosProcessor;

template <auto Field>
Value processor_number(const Processor& processor) {
  return number_or_null(processor.*Field);
}

template <auto Field>
Value processor_text(const Processor& processor) {
  return text_or_null(processor.*Field);
}

template <std::size_t Level, auto Field>
Value cache_number(const Processor& processor) {
  return number_or_null(processor.caches[Level - 1].*Field);
}

// No put of the client takes 64 bits: the column makes a number of the text. The database's numbers are
// signed.
Value processor_id(const Processor& processor) {
  if (!processor.id) return {};
  return Value::text(std::to_string(static_cast<std::int64_t>(*processor.id)));
}

template <auto Field>
constexpr Column<Processor> number_column(const char* name) {
  return {{name, Role::kValue}, processor_number<Field>};
}

template <auto Field>
constexpr Column<Processor> text_column(const char* name, Role role = Role::kValue) {
  return {{name, role}, processor_text<Field>};
}

template <std::size_t Level, auto Field>
constexpr Column<Processor> cache_column(const char* name) {
  return {{name, Role::kValue}, cache_number<Level, Field>};
}

constexpr Column<Processor> kProcessorColumns[] = {
    text_column<&Processor::socket>("Socket", Role::kKey),
    {{"ProcId", Role::kValue}, processor_id},
    number_column<&Processor::type>("ProcType"),
    number_column<&Processor::family>("Family"),
    text_column<&Processor::manufacturer>("Manufacturer"),
    text_column<&Processor::version>("Version"),
    number_column<&Processor::voltage>("Voltage"),
    number_column<&Processor::external_clock>("ExtClock"),
    number_column<&Processor::max_speed>("MaxSpeed"),
    number_column<&Processor::current_speed>("CurSpeed"),
    number_column<&Processor::status>("Status"),
    number_column<&Processor::upgrade>("Upgrade"),
    text_column<&Processor::serial_number>("SerialNo"),
    text_column<&Processor::asset_tag>("AssetTag"),
    text_column<&Processor::part_number>("PartNo"),
    number_column<&Processor::core_count>("CoreCount"),
    number_column<&Processor::cores_enabled>("CoreEnabled"),
    number_column<&Processor::thread_count>("ThreadCount"),
    number_column<&Processor::characteristics>("Characteristics"),
    cache_column<1, &SmbiosCache::max_size>("L1CacheMaxSize"),
    cache_column<1, &SmbiosCache::installed>("L1CacheInstalled"),
    cache_column<1, &SmbiosCache::type>("L1CacheType"),
    cache_column<1, &SmbiosCache::configuration>("L1CacheConfig"),
    cache_column<2, &SmbiosCache::max_size>("L2CacheMaxSize"),
    cache_column<2, &SmbiosCache::installed>("L2CacheInstalled"),
    cache_column<2, &SmbiosCache::type>("L2CacheType"),
    cache_column<2, &SmbiosCache::configuration>("L2CacheConfig"),
    cache_column<3, &SmbiosCache::max_size>("L3CacheMaxSize"),
    cache_column<3, &SmbiosCache::installed>("L3CacheInstalled"),
    cache_column<3, &SmbiosCache::type>("L3CacheType"),
    cache_column<3, &SmbiosCache::configuration>("L3CacheConfig"),
    {{"NodeIndex", Role::kValue}, [](const Processor&) { return Value::number(kOnlyNode); }},
};

TableContent processor_rows(const std::vector<Processor>& processors) {
  auto content = make_content("Processor", kProcessorColumns);
  for (const auto& processor : processors) add_row(content, kProcessorColumns, processor, true);
  return content;
}

// ---- PCI functions

// A function with what its rows are made from.
struct View {
  const MachineFunction& function;
  const Slot* slot;  // null on the board
  Location location;
  const PciIds& names;

  const PciFunction& pci() const { return function.pci; }
};

Value key(const View& view) {
  return Value::number(view.function.key);
}
Value device_key(const View& view) {
  return Value::number(view.function.device_key);
}
Value segment(const View& view) {
  return Value::number(view.function.segment);
}
Value bus(const View& view) {
  return Value::number(view.pci().address.bus);
}
Value device(const View& view) {
  return Value::number(view.pci().address.device);
}
Value function_number(const View& view) {
  return Value::number(view.pci().address.function);
}
Value location(const View& view) {
  return Value::number(static_cast<std::uint32_t>(view.location));
}
Value hardware_type(const View&) {
  return Value::number(kPciHardwareType);
}
Value node(const View&) {
  return Value::number(kOnlyNode);
}

// A device on the board has slot number 0.
Value slot_number(const View& view) {
  return Value::number(view.slot ? view.slot->number.value_or(0) : 0);
}

Value slot_designation(const View& view) {
  return text_or_null(view.slot ? view.slot->designation : view.function.designation);
}

template <auto Field>
Value slot_code(const View& view) {
  return view.slot ? number_or_null(view.slot->*Field) : Value();
}

template <auto Field>
Value pci_number(const View& view) {
  return Value::number(view.pci().*Field);
}

template <auto Field>
Value pci_optional(const View& view) {
  return number_or_null(view.pci().*Field);
}

template <auto Field>
Value link_number(const View& view) {
  return number_or_null(view.pci().link.*Field);
}

constexpr Column<View> kFunctionColumns[] = {
    {{"FunKey", Role::kKey}, key},
    {{"DevKey", Role::kPlace}, device_key},
    {{"HardwareId", Role::kValue}, key},
    {{"HardwareTypeId", Role::kValue}, hardware_type},
    {{"BridgeId", Role::kValue}, [](const View& view) { return number_or_null(view.function.bridge_key); }},
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
    {{"SlotDesignation", Role::kPlace}, slot_designation},
    {{"SlotType", Role::kPlace}, slot_code<&Slot::type>},
    {{"SlotDataBusWidth", Role::kPlace}, slot_code<&Slot::data_bus_width>},
    {{"NodeIndex", Role::kValue}, node},
    {{"LanesInUse", Role::kValue}, link_number<&PciLink::width>},
    {{"MaxLanes", Role::kValue}, link_number<&PciLink::max_width>},
    {{"MaxPCIeType", Role::kValue}, link_number<&PciLink::max_generation>},
    {{"PCIeType", Role::kValue}, link_number<&PciLink::generation>},
};

// ---- Adapters

// What people call an adapter when it is on the board: base class, and subclasses where not all count.
struct OnboardAdapter {
  std::uint8_t base;
  std::optional<std::uint8_t> subclass;
};
constexpr OnboardAdapter kOnboardAdapters[] = {
    {kClassStorage, {}},     {kClassNetwork, {}},    {kClassDisplay, {}},     {kClassAccelerator, {}},
    {kClassCoprocessor, {}}, {kClassEncryption, {}}, {kClassSerialBus, 0x04},  // Fibre Channel
    {kClassSerialBus, 0x06},                                                   // InfiniBand
};

bool is_adapter(const View& view) {
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

Value name(const View& view) {
  return Value::text(card_name(view.names, view.pci().vendor, view.pci().device,
                               view.pci().subsystem_vendor.value_or(0),
                               view.pci().subsystem_device.value_or(0)));
}

// In a slot it is the slot's type, on the board the code for that.
Value connector_type(const View& view) {
  if (!view.slot) return Value::text(hex_text(kConnectorOnboard));
  return view.slot->type ? Value::text(hex_text(*view.slot->type)) : Value();
}

constexpr Column<View> kAdapterColumns[] = {
    {{"PCIFuncKey", Role::kKey}, key},
    {{"PCIKey", Role::kPlace}, device_key},
    {{"NodeNo", Role::kValue}, node},
    {{"SegNo", Role::kValue}, segment},
    {{"BusNo", Role::kValue}, bus},
    {{"DeviceNo", Role::kValue}, device},
    {{"FunctionNo", Role::kValue}, function_number},
    {{"Location", Role::kPlace}, location},
    {{"SlotNo", Role::kPlace}, slot_number},
    {{"CardName", Role::kValue}, name},
    {{"ConnectorType", Role::kPlace}, connector_type},
    {{"AIMSupported", Role::kInitial}, [](const View&) { return Value::number(kNotAimManaged); }},
    {{"HealthStatus", Role::kInitial}, [](const View&) { return Value::number(kHealthNotAssessed); }},
};

// ---- Connector and package

// SMBIOS's codes of a slot's data path: lanes of PCI Express, else bits.
struct DataWidth {
  std::uint8_t code;
  std::uint32_t width;
  std::uint32_t connector;  // of a PCI Express slot of that width; 0: none
};
constexpr DataWidth kDataWidths[] = {
    {0x03, 8, 0},  {0x04, 16, 0}, {0x05, 32, 0}, {0x06, 64, 0},  {0x07, 128, 0}, {0x08, 1, 19},
    {0x09, 2, 20}, {0x0A, 4, 21}, {0x0B, 8, 22}, {0x0C, 12, 18}, {0x0D, 16, 23}, {0x0E, 32, 24},
};

const DataWidth* data_width(const View& view) {
  for (const auto& width : kDataWidths) {
    if (view.slot && view.slot->data_bus_width == width.code) return &width;
  }
  return nullptr;
}

struct TypeRange {
  std::uint8_t first;
  std::uint8_t last;
  std::uint32_t connector;
};
constexpr TypeRange kConnectors[] = {
    {0x06, 0x06, kConnectorPci},     {0x0E, 0x0E, kConnectorPci}, {0x12, 0x12, kConnectorPciX},
    {0xA5, 0xB6, kConnectorExpress}, {0x26, 0x28, kConnectorOcp}, {0xB8, 0xC4, kConnectorExpress},
};

Value max_data_width(const View& view) {
  if (!view.slot) return link_number<&PciLink::max_width>(view);
  const DataWidth* width = data_width(view);
  return width ? Value::number(width->width) : Value();
}

Value connector_layout(const View& view) {
  if (!view.slot) return Value::text(std::to_string(kConnectorOnboard));
  for (const auto& [first, last, connector] : kConnectors) {
    if (view.slot->type.value_or(0) < first || view.slot->type.value_or(0) > last) continue;
    const DataWidth* width = data_width(view);
    const bool sized = connector == kConnectorExpress && width && width->connector != 0;
    return Value::text(std::to_string(sized ? width->connector : connector));
  }
  return {};
}

Value package_type(const View& view) {
  const bool drive = view.location == Location::kBay && view.pci().base_class() == kClassStorage;
  const std::uint32_t code = !view.slot ? kPackageOnboard : drive ? kPackageStorage : kPackageModule;
  return Value::text(std::to_string(code));
}

constexpr Column<View> kMiscColumns[] = {
    {{"PCIFuncKey", Role::kKey}, key},
    {{"MaxDataWidth", Role::kPlace}, max_data_width},
    {{"ConnectorLayout", Role::kPlace}, connector_layout},
    {{"PackageType", Role::kPlace}, package_type},
};

// ---- Vital product data

struct VpdRecord {
  std::uint32_t key;
  PciVpd vpd;
};

template <auto Field>
Value vpd_text(const VpdRecord& record) {
  return text_or_null(record.vpd.*Field);
}

constexpr Column<VpdRecord> kVpdColumns[] = {
    {{"HardwareId", Role::kKey}, [](const VpdRecord& record) { return Value::number(record.key); }},
    {{"HardwareTypeId", Role::kValue}, [](const VpdRecord&) { return Value::number(kPciHardwareType); }},
    {{"ProductName", Role::kValue}, vpd_text<&PciVpd::product_name>},
    {{"Manufacture", Role::kValue}, vpd_text<&PciVpd::manufacturer>},
    {{"SerialNo", Role::kValue}, vpd_text<&PciVpd::serial_number>},
    {{"PartNo", Role::kValue}, vpd_text<&PciVpd::part_number>},
    {{"Model", Role::kValue}, vpd_text<&PciVpd::model>},
    {{"FRUNo", Role::kValue}, vpd_text<&PciVpd::fru_number>},
};

// ---- Rows of other writers

bool is_other_hardware(const std::string* type) {
  return type != nullptr && *type != std::to_string(kPciHardwareType);
}

bool is_managed_out_of_band(const std::string* supported) {
  return supported != nullptr && *supported != std::to_string(kNotAimManaged);
}

bool is_set(const std::string* text) {
  return text != nullptr;
}

// ---- The tables

struct PciTables {
  TableContent functions = make_content("PCIs", kFunctionColumns);
  TableContent adapters = make_content("PCIAdapter", kAdapterColumns);
  TableContent misc = make_content("PCIMisc", kMiscColumns);
  TableContent vpds = make_content("VPDs", kVpdColumns);

  PciTables() {
    set_owner(functions, "HardwareTypeId", is_other_hardware);
    set_owner(adapters, "AIMSupported", is_managed_out_of_band);
    set_owner(misc, "AIMSpecVersion", is_set);
    set_owner(vpds, "HardwareTypeId", is_other_hardware);
  }

  static void set_owner(TableContent& content, const char* column, bool (*is_foreign)(const std::string*)) {
    content.owner_column = column;
    content.is_foreign = is_foreign;
  }

  void add(const View& view) {
    const bool place_known = view.function.place_known;
    add_row(functions, kFunctionColumns, view, place_known);
    if (is_adapter(view)) {
      add_row(adapters, kAdapterColumns, view, place_known);
      add_row(misc, kMiscColumns, view, place_known);
    } else if (!place_known) {
      // It may sit in a slot that this run cannot see.
      adapters.kept_keys.insert(std::to_string(view.function.key));
      misc.kept_keys.insert(std::to_string(view.function.key));
    }
    add_vpd(view);
  }

  // A present function keeps the row it has where its own data cannot be read: others know of it as well.
  void add_vpd(const View& view) {
    vpds.kept_keys.insert(std::to_string(view.function.key));
    if (!view.pci().vpd) return;
    const auto vpd = parse_pci_vpd(as_bytes(*view.pci().vpd));
    if (vpd && !vpd->empty()) add_row(vpds, kVpdColumns, {view.function.key, *vpd}, true);
  }
};

}  // namespace

std::vector<TableContent> inventory_rows(const Machine& machine, const PciIds& names) {
  std::vector<TableContent> tables;
  if (machine.processors) tables.push_back(processor_rows(*machine.processors));
  if (!machine.functions) return tables;
  PciTables pci;
  for (const auto& function : *machine.functions) {
    pci.add({function, machine.slot_of(function), machine.location_of(function), names});
  }
  for (auto* content : {&pci.functions, &pci.adapters, &pci.misc, &pci.vpds})
    tables.push_back(std::move(*content));
  return tables;
}

}  // namespace zymdb::collect
