#include "commands/commands.h"
#include "show/inventory.h"

namespace zymdb::tool {
namespace {

constexpr char kDescription[] =
    "zymdb: the inventory of this server's hardware.\n"
    "\n"
    "`zymdb collect` looks at the machine and stores what it finds; `zymdb show` prints what is stored.";

constexpr char kFooter[] =
    "Examples:\n"
    "  zymdb collect                         fill the inventory from this machine\n"
    "  zymdb show adapters                   a table of its cards and on-board devices\n"
    "  zymdb show functions --json           the PCI functions for another program\n"
    "  zymdb show processors --columns SOCKET,VERSION,CORES\n"
    "\n"
    "Environment:\n"
    "  ZYMDB_INVENTORY  the inventory, where --inventory is not given\n"
    "  ZYMDB_LOG        stderr: print what the database client logs\n"
    "  NO_COLOR         when set, --color auto does not colour\n"
    "\n"
    "Exit status: 0 done, 1 failed, 2 wrong usage. `zymdb COMMAND --help` says more.";

constexpr char kShowFooter[] =
    "Examples:\n"
    "  zymdb show adapters\n"
    "  zymdb show functions --columns ADDRESS,CLASS,NAME | grep -i ethernet\n"
    "  zymdb show processors --json | jq '.processors[].Version'\n"
    "\n"
    "`zymdb show LISTING --help` lists its columns.";

}  // namespace

void build_command_tree(CommandTree& tree) {
  auto& app = tree.app;
  app.description(kDescription);
  app.name("zymdb");
  app.footer(kFooter);
  app.fallthrough();
  app.set_version_flag("--version", "zymdb " ZYMDB_VERSION);
  app.require_subcommand(1);
  app.add_option_function<std::string>("--inventory", choose_inventory,
                                       "The inventory's file (default: " + inventory_location() + ")")
      ->type_name(kFileType);
  add_init(tree);
  add_collect(tree);
  add_record(tree);
  auto& show = *app.add_subcommand("show", "Print what the inventory holds");
  show.footer(kShowFooter);
  show.require_subcommand(1);
  add_show_whole(tree, show);
  add_show_functions(tree, show);
  add_show_ports(tree, show);
  add_show_drives(tree, show);
  add_show_pldm(tree, show);
  add_show_cards(tree, show);
  add_link(tree);
  add_watch(tree);
  add_diff(tree);
  add_check(tree);
  add_history(tree);
  add_snapshot(tree);
  add_export(tree);
#ifdef ZYMDB_WITH_SERVICE
  add_serve(tree);
#endif
  add_settings(tree);
  add_dpu(tree);
  add_retimer(tree);
  add_merge(tree);
  add_properties(tree);
  add_vpd(tree);
  add_drive_date(tree);
  add_completion(tree);
}

}  // namespace zymdb::tool
