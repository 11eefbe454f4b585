#include <memory>

#include "commands/commands.h"
#include "show/inventory.h"
#include "show/pci_text.h"
#include "show/ports.h"
#include "zymdb_storage.h"

namespace zymdb::tool {
namespace {

using Record = _ZYMDB_AimDisk;
using List = _ZYMDB_AimDisk_List;

constexpr char kExamples[] =
    "  zymdb show drives\n"
    "  zymdb show drives --merged --columns LOCATION,MODEL,FIRMWARE,TEMP\n"
    "  zymdb show drives --function 3b:00.0 --json | jq '.drives[].SerialNo'";

constexpr int kM2And7mmBays = 5;
constexpr unsigned kNoSensor = 2;

// Which of the library's lists is wanted; the present drives when nothing is set.
struct DriveSelection {
  bool m2 = false;
  bool in_7mm_bays = false;
  bool sata = false;
  bool merged = false;
  int controller = -1;
  std::string function;
};

Tone health_tone(const Record& drive) {
  return drive.HealthStatusId == kNoSensor ? Tone::kPlain : Tone::kWarning;
}
Tone warning_tone(const Record& drive) {
  return drive.Warning == 0 ? Tone::kPlain : Tone::kWarning;
}

constexpr Column<Record> kColumns[] = {
    field<Record, &Record::PCIFuncKey, 8>("PCIFuncKey", "KEY", "function key of the drive's controller"),
    field<Record, &Record::SlotNo>("SlotNo", "SLOT", "PCI slot of the controller"),
    field<Record, &Record::CtrlType>("CtrlType", "CONTROLLER", "controller type; 0: not known"),
    field<Record, &Record::BayNo>("BayNo", "NUMBER", "number of the slot or bay"),
    field<Record, &Record::LocationId>("LocationId", "PLACEKIND", "1 slot, 2 bay, 3 M.2 bay, 4 7 mm bay"),
    field<Record, &Record::DriveTypeId>("DriveTypeId", "TYPEID", "drive type code"),
    field<Record, &Record::Presence>("Presence", "REPORTED", "1: as the management interface reports it"),
    field<Record, &Record::FormFactor, 2>("FormFactor", "FORMFACTOR", "form factor class"),
    field<Record, &Record::HealthStatusId>("HealthStatusId", "HEALTH",
                                           "health from the sensors; 2: none tells", Shown::kNo, health_tone),
    field<Record, &Record::Location>("Location", "LOCATION", "slot or bay", Shown::kByDefault),
    field<Record, &Record::DisplayType>("DisplayType", "TYPE", "drive type", Shown::kByDefault),
    field<Record, &Record::MediaType>("MediaType", "MEDIA", "SSD or HDD", Shown::kByDefault),
    field<Record, &Record::MediaValue>("MediaValue", "RPM", "rotations per minute; 0: none, or not known"),
    field<Record, &Record::FruNo>("FruNo", "FRU", "number of the field-replaceable unit"),
    field<Record, &Record::PartNo>("PartNo", "PART", "part number"),
    field<Record, &Record::SerialNo>("SerialNo", "SERIAL", "serial number", Shown::kByDefault),
    long_text(field<Record, &Record::Model>("Model", "MODEL", "model", Shown::kByDefault)),
    field<Record, &Record::UUID>("UUID", "UUID", "unique identifier"),
    field<Record, &Record::Manufacture>("Manufacture", "MAKER", "the drive's maker"),
    field<Record, &Record::FwVersion>("FwVersion", "FIRMWARE", "firmware version", Shown::kByDefault),
    field<Record, &Record::Capacity>("Capacity", "CAPACITY", "capacity", Shown::kByDefault),
    field<Record, &Record::SFlags>("SFlags", "FLAGS", "health status flags of the drive"),
    field<Record, &Record::Warning, 2>("Warning", "WARNING", "critical warnings, one bit each",
                                       Shown::kByDefault, warning_tone),
    field<Record, &Record::Temperature>("Temperature", "TEMP", "temperature, degrees Celsius",
                                        Shown::kByDefault),
    field<Record, &Record::RemainLife>("RemainLife", "LIFE", "remaining life, percent", Shown::kByDefault),
    field<Record, &Record::InfoMask, 4>("InfoMask", "VALID", "which of the four values before are valid"),
};

int list_drives(const DriveSelection& selection, List& list) {
  if (selection.m2) return zymdb_get_m2_disk_list(&list);
  if (selection.in_7mm_bays) return zymdb_get_7mm_disk_list(&list);
  if (selection.sata) return zymdb_get_onboard_sata_disk_list(&list);
  if (selection.controller >= 0)
    return zymdb_get_ctrl_aim_disk_list(selection.controller, &list, kM2And7mmBays);
  if (selection.merged) {
    zymdb_get_merged_disk_list(&list);
    return ZYM_DB_STATUS_OK;
  }
  if (selection.function.empty()) return zymdb_get_disk_list(&list);
  const int status = zymdb_get_disk_list_funkey(parse_function(selection.function), &list);
  return status == ZYM_DB_STATUS_NOT_FOUND ? ZYM_DB_STATUS_OK : status;
}

std::vector<Record> read_drives(const DriveSelection& selection) {
  List list{};
  const int status = list_drives(selection, list);
  auto drives = take_array(list.disks, list.count);
  require_status(status, "read the drives");
  return drives;
}

void add_selection(CLI::App& command, DriveSelection& selection) {
  auto& group = *command.add_option_group("which drives");
  group.add_flag("--m2", selection.m2, "Only M.2 drives");
  group.add_flag("--7mm", selection.in_7mm_bays, "Only 7 mm drives");
  group.add_flag("--sata", selection.sata, "Only SATA drives on the board");
  group.add_flag("--merged", selection.merged, "M.2, 7 mm, NVMe and SATA drives, one list after the other");
  group
      .add_option("--controller", selection.controller,
                  "Only M.2 and 7 mm drives of the controller in a slot")
      ->type_name("SLOT")
      ->check(CLI::Range(0, 65535).description({}));
  group.add_option("--function", selection.function, "Only drives behind a PCI function: address or key")
      ->type_name("FUNCTION");
  group.require_option(0, 1);
}

}  // namespace

void add_show_drives(CommandTree& tree, CLI::App& show) {
  const auto selection = std::make_shared<DriveSelection>();
  auto& command = add_listing(tree, show,
                              make_listing<Record>("drives", "Storage drives", kColumns,
                                                   [selection] { return read_drives(*selection); }),
                              kExamples);
  add_selection(command, *selection);
}

}  // namespace zymdb::tool
