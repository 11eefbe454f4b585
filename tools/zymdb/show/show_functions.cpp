#include <memory>
#include <optional>

#include "collect/collector.h"
#include "collect/sources/pci/pci_ids.h"
#include "commands/commands.h"
#include "common/source_file.h"
#include "show/functions.h"
#include "show/pci_text.h"

namespace zymdb::tool {
namespace {

constexpr char kExamples[] =
    "  zymdb show functions\n"
    "  zymdb show functions --columns ADDRESS,CLASS,NAME | grep -i ethernet\n"
    "  zymdb show functions --json | jq '.functions[] | select(.VendorId == 0x8086)'";

// The names, read when a column first asks for one. The system's list may be missing; one that the user names
// may not.
class Names {
 public:
  const collect::PciIds& get() {
    if (!ids_) ids_ = load();
    return *ids_;
  }

  std::string path = system_list();

 private:
  static std::string system_list() { return collect::Sources().pci_ids; }

  collect::PciIds load() const {
    try {
      return collect::PciIds::load(path);
    } catch (const SourceError&) {
      if (path != system_list()) throw;
      return {};
    }
  }

  std::optional<collect::PciIds> ids_;
};

struct Record : _ZYMDB_PCI_Generic {
  Names* names = nullptr;
};

Value address(const Record& function) {
  return address_text(key_of(function));
}

Value bridge(const Record& function) {
  return function.BridgeId == 0 ? std::string() : address_text(function.BridgeId);
}

Value id(const Record& function) {
  return id_text(function.VendorId, function.DeviceId);
}

Value subsystem_id(const Record& function) {
  const bool known = function.SubVendorId != 0 || function.SubDeviceId != 0;
  return known ? id_text(function.SubVendorId, function.SubDeviceId) : std::string();
}

// What the library gives when the inventory has no link data. A link that happens to look like that cannot be
// told from it and is left out, too: better than a link that nobody has seen.
bool link_is_unknown(const Record& function) {
  return function.LanesInUse == 4 && function.MaxLanes == 16 && function.PCIeType == 3 &&
         function.MaxPCIeType == 4;
}

// "x16 gen4", or "x8/16 gen3/4" where the link is narrower or slower than it could be.
Value link(const Record& function) {
  if (link_is_unknown(function) || function.LanesInUse == 0) return std::string();
  const auto part = [](const char* name, unsigned used, unsigned largest) {
    return name + std::to_string(used) + (used < largest ? "/" + std::to_string(largest) : "");
  };
  return part("x", function.LanesInUse, function.MaxLanes) + " " +
         part("gen", function.PCIeType, function.MaxPCIeType);
}

Tone link_tone(const Record& function) {
  const bool reduced = function.LanesInUse < function.MaxLanes || function.PCIeType < function.MaxPCIeType;
  return reduced && !link_is_unknown(function) ? Tone::kWarning : Tone::kPlain;
}

Value class_name(const Record& function) {
  const auto& ids = function.names->get();
  const auto base = static_cast<uint8_t>(function.ClsCode >> 16);
  const auto name = ids.subclass(base, static_cast<uint8_t>(function.ClsCode >> 8));
  return std::string(name.empty() ? ids.base_class(base) : name);
}

// A device without a name is told by its class.
Value name(const Record& function) {
  const auto& ids = function.names->get();
  const std::string vendor(ids.vendor(function.VendorId));
  const auto device = ids.device(function.VendorId, function.DeviceId);
  const auto what = device.empty() ? std::get<std::string>(class_name(function)) : std::string(device);
  return vendor + (vendor.empty() || what.empty() ? "" : " ") + what;
}

Value place(const Record& function) {
  return place_text(function.Location, function.SlotNo);
}

constexpr auto kShown = Shown::kByDefault;
constexpr auto kHidden = Shown::kNo;

constexpr Column<Record> kColumns[] = {
    derived<Record>("ADDRESS", "bus address", kShown, address),
    derived<Record>("BRIDGE", "bus address of the bridge above", kHidden, bridge),
    derived<Record>("ID", "vendor and device id", kShown, id),
    derived<Record>("SUBID", "subsystem's vendor and device id", kHidden, subsystem_id),
    derived<Record>("PLACE", "slot, drive bay or system board", kShown, place),
    derived<Record>("LINK", "PCI Express link: lanes and generation, in use/largest", kShown, link,
                    link_tone),
    derived<Record>("CLASS", "class, by name", kHidden, class_name),
    long_text(derived<Record>("NAME", "vendor and device, by name", kShown, name)),
    field<Record, &Record::_id>("_id", "ROWID", "row of the inventory"),
    field<Record, &Record::BridgeId, 8>("BridgeId", "BRIDGEID", "function key of the bridge above; 0: none"),
    field<Record, &Record::SegNo>("SegNo", "SEGMENT", "segment (domain) number"),
    field<Record, &Record::BusNo>("BusNo", "BUS", "bus number"),
    field<Record, &Record::DeviceNo>("DeviceNo", "DEVICENO", "device number"),
    field<Record, &Record::FunctionNo>("FunctionNo", "FUNCTIONNO", "function number"),
    field<Record, &Record::VendorId, 4>("VendorId", "VENDOR", "vendor id"),
    field<Record, &Record::DeviceId, 4>("DeviceId", "DEVICE", "device id"),
    field<Record, &Record::ClsCode, 6>("ClsCode", "CLASSCODE", "class code"),
    field<Record, &Record::RevId, 2>("RevId", "REV", "revision"),
    field<Record, &Record::SubVendorId, 4>("SubVendorId", "SUBVENDOR", "subsystem vendor id"),
    field<Record, &Record::SubDeviceId, 4>("SubDeviceId", "SUBDEVICE", "subsystem id"),
    field<Record, &Record::SlotNo>("SlotNo", "SLOTNO", "slot number within the location"),
    field<Record, &Record::Location>("Location", "LOCATION", "0 system board, 1 slot, 2 drive bay"),
    field<Record, &Record::SlotDesignation>("SlotDesignation", "SLOT", "the slot's label"),
    field<Record, &Record::SlotType, 2>("SlotType", "SLOTTYPE", "slot type code"),
    field<Record, &Record::SlotDataBusWidth>("SlotDataBusWidth", "SLOTWIDTH", "slot data bus width code"),
    field<Record, &Record::Hotplug>("Hotplug", "HOTPLUG", "1: the slot is hot-pluggable"),
    field<Record, &Record::PCIType>("PCIType", "PCITYPE", "PCI type code"),
    field<Record, &Record::BladeSlotPort>("BladeSlotPort", "BLADEPORT", "port of a blade slot"),
    field<Record, &Record::NodeIndex>("NodeIndex", "NODE", "node that the function belongs to"),
    field<Record, &Record::FunType>("FunType", "FUNTYPE", "function type code"),
    field<Record, &Record::LanesInUse>("LanesInUse", "LANES", "lanes in use; 4 also when not known"),
    field<Record, &Record::MaxLanes>("MaxLanes", "MAXLANES", "most lanes; 16 also when not known"),
    field<Record, &Record::MaxPCIeType>("MaxPCIeType", "MAXGEN",
                                        "highest PCI Express generation; 4 also when not known"),
    field<Record, &Record::PCIeType>("PCIeType", "GEN",
                                     "PCI Express generation in use; 3 also when not known"),
};

std::vector<Record> read_functions(Names& names) {
  std::vector<Record> functions;
  for (const auto& function : all_functions("read the functions")) functions.push_back({function, &names});
  return functions;
}

}  // namespace

void add_show_functions(CommandTree& tree, CLI::App& show) {
  const auto names = std::make_shared<Names>();
  auto& command = add_listing(tree, show,
                              make_listing<Record>("functions", "PCI functions, bridges too", kColumns,
                                                   [names] { return read_functions(*names); }),
                              kExamples);
  add_pci_ids_option(command, names->path);
}

}  // namespace zymdb::tool
