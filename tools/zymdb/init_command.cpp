#include <sys/stat.h>

#include "commands.h"
#include "inventory.h"
#include "terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "Every command creates the inventory when there is none; this one does nothing else, for example to set\n"
    "owner and mode before services start. The folder must exist.\n"
    "\n"
    "Examples:\n"
    "  zymdb init\n"
    "  zymdb init --inventory /tmp/test.db";

bool exists(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

void init() {
  const auto location = inventory_location();
  const bool existed = exists(location);
  open_inventory();
  write_output(location + (existed ? ": is there already\n" : ": created\n"));
}

}  // namespace

void add_init(CommandTree& tree) {
  auto& command = *tree.app.add_subcommand("init", "Create the inventory and say where it is");
  command.footer(kFooter);
  command.callback(init);
}

}  // namespace zymdb::tool
