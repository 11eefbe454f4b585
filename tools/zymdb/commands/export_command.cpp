#include <memory>

#include "commands/commands.h"
#include "documents/document_json.h"
#include "documents/inventory_types.h"
#include "records/pci.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "The whole inventory as one JSON document: the arrays of all listings of `zymdb show … --json`.\n"
    "\n"
    "Examples:\n"
    "  zymdb export >inventory.json\n"
    "  zymdb export | jq '.drives[].SerialNo'";

void run(const std::string& names) {
  open_inventory(Opening::kReading);
  write_output(documents::to_json(documents::read_document(documents::inventory_types(names))));
}

}  // namespace

void add_export(CommandTree& tree) {
  const auto names = std::make_shared<std::string>(records::kPciIdsFile);
  auto& command = *tree.app.add_subcommand("export", "The whole inventory as one document");
  command.footer(kFooter);
  add_pci_ids_option(command, *names);
  command.callback([names] { run(*names); });
}

}  // namespace zymdb::tool
