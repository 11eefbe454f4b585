#include "commands/commands.h"
#include "show/inventory.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "Makes an empty inventory when there is none, and prints where it is. `collect` and the commands that\n"
    "write do so, too; those that only read do not. The folder must exist.\n"
    "\n"
    "Examples:\n"
    "  zymdb init\n"
    "  chgrp operators \"$(zymdb init)\"\n"
    "  zymdb init --inventory /tmp/test.db";

void init() {
  open_inventory(Opening::kCreating);
  write_output(inventory_location() + "\n");
}

}  // namespace

void add_init(CommandTree& tree) {
  auto& command = *tree.app.add_subcommand("init", "Create the inventory and say where it is");
  command.footer(kFooter);
  command.callback(init);
}

}  // namespace zymdb::tool
