#include "commands/commands.h"
#include "show/inventory.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "Every command creates the inventory when there is none; this one does nothing else and prints where it\n"
    "is. The folder must exist.\n"
    "\n"
    "Examples:\n"
    "  zymdb init\n"
    "  chgrp operators \"$(zymdb init)\"\n"
    "  zymdb init --inventory /tmp/test.db";

void init() {
  open_inventory();
  write_output(inventory_location() + "\n");
}

}  // namespace

void add_init(CommandTree& tree) {
  auto& command = *tree.app.add_subcommand("init", "Create the inventory and say where it is");
  command.footer(kFooter);
  command.callback(init);
}

}  // namespace zymdb::tool
