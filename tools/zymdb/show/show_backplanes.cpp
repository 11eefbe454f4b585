#include "commands/commands.h"
#include "show/inventory.h"
#include "zymdb_storage.h"

namespace zymdb::tool {
namespace {

constexpr char kExamples[] =
    "  zymdb show backplanes\n"
    "  zymdb show backplanes --json | jq '.backplanes[].MaxDrives'";

// All backplanes together: what the library tells of them.
struct Backplanes {
  unsigned char MaxDrives = 0;
  unsigned char InstalledDrives = 0;
  unsigned char Marvell0Type = 0;
  unsigned char Marvell1Type = 0;
};

constexpr Column<Backplanes> kColumns[] = {
    field<Backplanes, &Backplanes::MaxDrives>("MaxDrives", "BAYS", "drives that they can hold",
                                              Shown::kByDefault),
    field<Backplanes, &Backplanes::InstalledDrives>("InstalledDrives", "DRIVES", "drives that they hold",
                                                    Shown::kByDefault),
    field<Backplanes, &Backplanes::Marvell0Type>(
        "Marvell0Type", "MARVELL0", "type of the on-board Marvell controller 0; 0: none", Shown::kByDefault),
    field<Backplanes, &Backplanes::Marvell1Type>(
        "Marvell1Type", "MARVELL1", "type of controller 1, which has the 7 mm drives", Shown::kByDefault),
};

std::vector<Backplanes> read_backplanes() {
  Backplanes all;
  constexpr char kAction[] = "read the backplanes";
  require_status(zymdb_get_bp_drive_count(&all.MaxDrives, &all.InstalledDrives), kAction);
  require_status(zymdb_get_mvl_ctrl_type(&all.Marvell0Type, 0), kAction);
  require_status(zymdb_get_mvl_ctrl_type(&all.Marvell1Type, 1), kAction);
  return {all};
}

}  // namespace

void add_show_backplanes(CommandTree& tree, CLI::App& show) {
  add_listing(tree, show,
              make_listing<Backplanes>("backplanes", "Drive bays of the backplanes, all together", kColumns,
                                       read_backplanes),
              kExamples);
}

}  // namespace zymdb::tool
