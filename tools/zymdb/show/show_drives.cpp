#include <memory>

#include "records/storage.h"
#include "show/functions.h"
#include "show/listing.h"
#include "show/listings.h"

namespace zymdb::tool {
namespace {

using List = _ZYMDB_AimDisk_List;

constexpr char kExamples[] =
    "  zymdb show drives\n"
    "  zymdb show drives --merged --columns LOCATION,MODEL,FIRMWARE,TEMP\n"
    "  zymdb show drives --function 3b:00.0 --json | jq '.drives[].SerialNo'";

constexpr int kM2And7mmBays = 5;

// Which of the library's lists is wanted; the present drives when nothing is set.
struct DriveSelection {
  bool m2 = false;
  bool in_7mm_bays = false;
  bool sata = false;
  bool merged = false;
  int controller = -1;
  std::string function;
};

int list_drives(const DriveSelection& selection, List* list) {
  if (selection.m2) return zymdb_get_m2_disk_list(list);
  if (selection.in_7mm_bays) return zymdb_get_7mm_disk_list(list);
  if (selection.sata) return zymdb_get_onboard_sata_disk_list(list);
  if (selection.controller >= 0)
    return zymdb_get_ctrl_aim_disk_list(selection.controller, list, kM2And7mmBays);
  if (selection.merged) {
    zymdb_get_merged_disk_list(list);
    return ZYM_DB_STATUS_OK;
  }
  if (selection.function.empty()) return zymdb_get_disk_list(list);
  const int status = zymdb_get_disk_list_funkey(find_function(selection.function).value, list);
  return status == ZYM_DB_STATUS_NOT_FOUND ? ZYM_DB_STATUS_OK : status;
}

void add_selection(CLI::App& command, DriveSelection& selection) {
  auto& group = *command.add_option_group("which drives");
  group.add_flag("--m2", selection.m2, "Only M.2 drives");
  group.add_flag("--7mm", selection.in_7mm_bays, "Only 7 mm drives");
  group.add_flag("--sata", selection.sata, "Only SATA drives on the board");
  group.add_flag("--merged", selection.merged, "M.2, 7 mm, NVMe and SATA drives, as all sources list them");
  group
      .add_option("--controller", selection.controller,
                  "Only M.2 and 7 mm drives of the controller in a slot")
      ->type_name("SLOT")
      ->check(whole_number(0, 65535));
  add_function_option(group, selection.function, "Only drives behind a PCI function");
  group.require_option(0, 1);
}

}  // namespace

void add_show_drives(CommandTree& tree, CLI::App& show) {
  const auto selection = std::make_shared<DriveSelection>();
  auto& command = add_listing(
      tree, show,
      {records::drives([selection](List* list) { return list_drives(*selection, list); }), kExamples});
  add_selection(command, *selection);
}

}  // namespace zymdb::tool
