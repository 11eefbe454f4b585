#include <memory>

#include "commands/commands.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "documents/snapshot.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "FILE is new: one compressed file with all of the inventory, of one moment while others write, and what "
    "it is\n"
    "of. Commands that read take it for an inventory; its first line is JSON and tells system, time and "
    "generation.\n"
    "\n"
    "Examples:\n"
    "  zymdb snapshot today.snapshot\n"
    "  zymdb show adapters --inventory today.snapshot\n"
    "  zymdb diff today.snapshot /var/lib/zymdb/inventory.db";

void run(const std::string& path) {
  open_inventory(Opening::kReading);
  const auto snapshot = documents::take_snapshot();
  try {
    write_new_file(path, documents::pack(snapshot));
  } catch (const SourceError& error) {
    throw Failure(std::string("cannot write ") + error.what());
  }
  write_output(path + ": generation " + std::to_string(snapshot.header.generation) +
               (snapshot.header.system.empty() ? "" : " of " + snapshot.header.system) + "\n");
}

}  // namespace

void add_snapshot(CommandTree& tree) {
  const auto path = std::make_shared<std::string>();
  auto& command = *tree.app.add_subcommand("snapshot", "Save the inventory as it is now in one file");
  command.footer(kFooter);
  command.add_option("FILE", *path, "The file to make")->required()->type_name("");
  command.callback([path] { run(*path); });
}

}  // namespace zymdb::tool
