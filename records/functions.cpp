#include <algorithm>
#include <utility>

#include "records/links.h"
#include "records/pci.h"
#include "records/pci_names.h"
#include "records/stored_rows.h"
#include "records/text.h"

namespace zymdb::records {
namespace {

constexpr char kIommuGroup[] = "IOMMUGroup";
constexpr char kNumaNode[] = "NUMANode";
constexpr char kReduced[] = "reduced";

struct Function : Stored<_ZYMDB_PCI_Generic> {
  PciNames* names = nullptr;
  LinkState link_state = LinkState::kUnknown;
  std::string driver = {};
  std::optional<size_t> parent = {};  // in the list, for a tree of them

  FunctionKey key() const { return FunctionKey::of(*this); }

  std::optional<unsigned> number(const char* column) const {
    const Value* const value = stored(column);
    const auto* const number = value != nullptr ? std::get_if<uint64_t>(value) : nullptr;
    return number != nullptr ? std::optional(static_cast<unsigned>(*number)) : std::nullopt;
  }
  std::optional<FunctionKey> bridge() const {
    const auto key = number("BridgeId");
    return key ? std::optional(FunctionKey(*key)) : std::nullopt;
  }
};

Value address(const Function& function) {
  return function.key().text();
}

Value bridge(const Function& function) {
  const auto above = function.bridge();
  return above ? Value(above->text()) : Value();
}

Value id(const Function& function) {
  return id_text(function.VendorId, function.DeviceId);
}

bool has_subsystem(const Function& function) {
  return function.SubVendorId != 0 || function.SubDeviceId != 0;
}

Value subsystem_id(const Function& function) {
  return id_text(function.SubVendorId, function.SubDeviceId);
}

// "x16", or "x8/16" where it could be more.
std::string part(const char* name, std::optional<unsigned> used, std::optional<unsigned> largest) {
  if (!used) return {};
  const bool is_less = largest && *used < *largest;
  return name + std::to_string(*used) + (is_less ? "/" + std::to_string(*largest) : "");
}

// "x8/16 gen3/4". Nothing for a port into which nothing is plugged.
Value link(const Function& function) {
  if (function.link_state == LinkState::kUnknown || function.link_state == LinkState::kDown) return {};
  const auto width = part("x", function.number("LanesInUse"), function.number("MaxLanes"));
  const auto speed = part("gen", function.number("PCIeType"), function.number("MaxPCIeType"));
  return width + (speed.empty() ? "" : " ") + speed;
}

Value link_state(const Function& function) {
  constexpr const char* kStates[] = {"", "down", "full", kReduced};
  return value_of(std::string(kStates[static_cast<size_t>(function.link_state)]));
}

Attention link_attention(const Function& function) {
  return function.link_state == LinkState::kReduced ? Attention::kWarning : Attention::kNone;
}

Attention link_state_attention(const Value& state) {
  return state == Value(kReduced) ? Attention::kWarning : Attention::kNone;
}

std::string name_of_class(const Function& function) {
  const auto& ids = function.names->get();
  const auto base = static_cast<uint8_t>(function.ClsCode >> 16);
  const auto name = ids.subclass(base, static_cast<uint8_t>(function.ClsCode >> 8));
  return std::string(name.empty() ? ids.base_class(base) : name);
}

Value class_name(const Function& function) {
  return value_of(name_of_class(function));
}

Value vendor_name(const Function& function) {
  return value_of(std::string(function.names->get().vendor(function.VendorId)));
}

Value device_name(const Function& function) {
  return value_of(std::string(function.names->get().device(function.VendorId, function.DeviceId)));
}

Value driver(const Function& function) {
  return value_of(function.driver);
}

template <const char* Column>
Value column(const Function& function) {
  const auto number = function.number(Column);
  return number ? Value(uint64_t{*number}) : Value();
}

// A device without a name is told by its class.
Value name(const Function& function) {
  const auto& ids = function.names->get();
  const std::string vendor(ids.vendor(function.VendorId));
  const auto device = ids.device(function.VendorId, function.DeviceId);
  const auto what = device.empty() ? name_of_class(function) : std::string(device);
  return value_of(vendor + (vendor.empty() || what.empty() ? "" : " ") + what);
}

Value place(const Function& function) {
  return place_text(function.Location, function.SlotNo);
}

constexpr Field<Function> kFields[] = {
    derived<Function>("Address", "ADDRESS", "bus address", address)
        .tells(Tells::kOwnFunction)
        .shown()
        .place(),
    derived<Function>("Bridge", "BRIDGE", "bus address of the bridge above", bridge).place(),
    derived<Function>("Id", "ID", "vendor and device id", id).shown().model(),
    derived<Function>("SubsystemId", "SUBID", "subsystem's vendor and device id", subsystem_id)
        .known_if(has_subsystem)
        .model(),
    derived<Function>("Place", "PLACE", "slot, drive bay or system board", place)
        .tells(Tells::kPosition)
        .shown()
        .place(),
    derived<Function>("Link", "LINK", "PCI Express link: lanes and generation, in use/largest", link)
        .shown()
        .noted(link_attention)
        .state(),
    derived<Function>("LinkState", "LINKSTATE", "full, reduced (less than both ends can do) or down",
                      link_state)
        .state()
        .judged(link_state_attention),
    derived<Function>("Driver", "DRIVER", "the kernel's driver", driver).shown().state(),
    derived<Function>(kIommuGroup, "IOMMUGROUP", "IOMMU group", column<kIommuGroup>).number().state(),
    derived<Function>(kNumaNode, "NUMA", "NUMA node that the function is nearest to", column<kNumaNode>)
        .number(),
    derived<Function>("ClassName", "CLASS", "class, by name", class_name).model(),
    derived<Function>("Name", "NAME", "vendor and device, by name", name)
        .tells(Tells::kName)
        .long_text()
        .shown()
        .model(),
    derived<Function>("VendorName", "VENDORNAME", "vendor, by name", vendor_name)
        .tells(Tells::kMaker)
        .model(),
    derived<Function>("DeviceName", "DEVICENAME", "device, by name", device_name).model(),
    ZYMDB_RECORD_FIELD(Function, _id, "ROWID", "row of the inventory").row(),
    ZYMDB_RECORD_FIELD(Function, BridgeId, "BRIDGEID", "function key of the bridge above").hex(8).place(),
    ZYMDB_RECORD_FIELD(Function, SegNo, "SEGMENT", "segment (domain) number").place(),
    ZYMDB_RECORD_FIELD(Function, BusNo, "BUS", "bus number").place(),
    ZYMDB_RECORD_FIELD(Function, DeviceNo, "DEVICENO", "device number").place(),
    ZYMDB_RECORD_FIELD(Function, FunctionNo, "FUNCTIONNO", "function number").place(),
    ZYMDB_RECORD_FIELD(Function, VendorId, "VENDOR", "vendor id").hex(4).model(),
    ZYMDB_RECORD_FIELD(Function, DeviceId, "DEVICE", "device id").hex(4).model(),
    ZYMDB_RECORD_FIELD(Function, ClsCode, "CLASSCODE", "class code").hex(6).model(),
    ZYMDB_RECORD_FIELD(Function, RevId, "REV", "revision").hex(2).model(),
    ZYMDB_RECORD_FIELD(Function, SubVendorId, "SUBVENDOR", "subsystem vendor id")
        .hex(4)
        .known_if(has_subsystem)
        .model(),
    ZYMDB_RECORD_FIELD(Function, SubDeviceId, "SUBDEVICE", "subsystem id")
        .hex(4)
        .known_if(has_subsystem)
        .model(),
    ZYMDB_RECORD_FIELD(Function, SlotNo, "SLOTNO", "slot number within the location").place(),
    ZYMDB_RECORD_FIELD(Function, Location, "LOCATION", "0 system board, 1 slot, 2 drive bay").place(),
    ZYMDB_RECORD_FIELD(Function, SlotDesignation, "SLOT", "the slot's label").place(),
    ZYMDB_RECORD_FIELD(Function, SlotType, "SLOTTYPE", "slot type code").hex(2),
    ZYMDB_RECORD_FIELD(Function, SlotDataBusWidth, "SLOTWIDTH", "slot data bus width code"),
    ZYMDB_RECORD_FIELD(Function, Hotplug, "HOTPLUG", "1: the slot is hot-pluggable"),
    ZYMDB_RECORD_FIELD(Function, PCIType, "PCITYPE", "PCI type code"),
    ZYMDB_RECORD_FIELD(Function, BladeSlotPort, "BLADEPORT", "port of a blade slot"),
    ZYMDB_RECORD_FIELD(Function, NodeIndex, "NODE", "node that the function belongs to"),
    ZYMDB_RECORD_FIELD(Function, FunType, "FUNTYPE", "function type code"),
    ZYMDB_RECORD_FIELD(Function, LanesInUse, "LANES", "lanes in use").amount().state(),
    ZYMDB_RECORD_FIELD(Function, MaxLanes, "MAXLANES", "most lanes").amount(),
    ZYMDB_RECORD_FIELD(Function, MaxPCIeType, "MAXGEN", "highest PCI Express generation").amount(),
    ZYMDB_RECORD_FIELD(Function, PCIeType, "GEN", "PCI Express generation in use").amount().state(),
};

Link link_of(const Function& function) {
  constexpr uint32_t kBridgeClass = 0x06;
  return {.bridge = function.bridge(),
          .is_bridge = function.ClsCode >> 16 == kBridgeClass,
          .lanes = function.number("LanesInUse"),
          .max_lanes = function.number("MaxLanes"),
          .generation = function.number("PCIeType"),
          .max_generation = function.number("MaxPCIeType")};
}

void judge_links(std::vector<Function>& functions) {
  Links links;
  for (const auto& function : functions) links.emplace(function.key(), link_of(function));
  for (auto& function : functions) function.link_state = state_of(links, function.key());
}

// The bridge above, unless the inventory has it below: a function's key is always greater than its bridge's.
std::optional<size_t> parent_of(const std::vector<Function>& functions, size_t index) {
  const auto bridge = functions[index].bridge();
  const auto above =
      bridge ? std::ranges::lower_bound(functions, *bridge, {}, &Function::key) : functions.end();
  if (above == functions.end() || above->key() != *bridge || *bridge >= functions[index].key()) return {};
  return static_cast<size_t>(above - functions.begin());
}

void find_parents(std::vector<Function>& functions) {
  constexpr unsigned kDeepest = 64;
  std::vector<unsigned> depths(functions.size());
  for (size_t i = 0; i < functions.size(); ++i) {
    const auto parent = parent_of(functions, i);
    if (!parent || depths[*parent] == kDeepest) continue;
    functions[i].parent = parent;
    depths[i] = depths[*parent] + 1;
  }
}

std::vector<Function> list_named_functions(PciNames& names) {
  const Reading reading("functions");
  auto columns = number_columns(kFields);
  columns.insert(columns.end(), {kIommuGroup, kNumaNode});
  const auto rows = read_stored_rows(reading, "PCIs", "_id", columns);
  const auto drivers = read_stored_texts(reading, "PCIs", "_id", "Driver");
  std::vector<Function> functions;
  for (const auto& each : list_functions(reading)) {
    auto& function = functions.emplace_back(Function{{each, {}}, &names});
    if (const auto row = rows.find(each._id); row != rows.end()) function.row = row->second;
    if (const auto driver = drivers.find(each._id); driver != drivers.end()) function.driver = driver->second;
  }
  judge_links(functions);
  find_parents(functions);
  return functions;
}

}  // namespace

std::vector<_ZYMDB_PCI_Generic> list_functions(const Reading& reading) {
  _ZYMDB_PCI_Generic_List list{};
  const int status = zymdb_get_pci_generic_info_list(&list, nullptr);
  auto functions = take_array(list.items, list.count);
  reading.require(status);
  reading.require_whole();
  std::ranges::sort(functions, {}, FunctionKey::of<_ZYMDB_PCI_Generic>);
  return functions;
}

RecordType functions(std::shared_ptr<const std::string> names_file) {
  const auto names = std::make_shared<PciNames>(std::move(names_file));
  return describe<Function>("functions", "PCI functions, bridges too", kFields,
                            [names] { return list_named_functions(*names); });
}

}  // namespace zymdb::records
