#include <algorithm>
#include <memory>

#include "commands/commands.h"
#include "documents/difference_json.h"
#include "documents/inventory_types.h"
#include "files/document_file.h"
#include "records/pci.h"
#include "show/changes.h"
#include "show/functions.h"
#include "terminal/failure.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "A and B are inventories, snapshots or exports (JSON); \"-\" is standard input. A part is known by its "
    "serial\n"
    "number or address, wherever it is; one without any by its place and model:\n"
    "  added     a part that was not there\n"
    "  removed   a part that is gone\n"
    "  moved     the same part in another place\n"
    "  replaced  another part in the same place\n"
    "  changed   the same part, but not as it was\n"
    "\n"
    "Exit status: 0 compared, 1 with --exit-code where they differ, 2 trouble.\n"
    "\n"
    "Examples:\n"
    "  zymdb diff yesterday.snapshot /var/lib/zymdb/inventory.db\n"
    "  zymdb diff golden.json inventory.db --by-place --exit-code\n"
    "  ssh server zymdb export | zymdb diff - inventory.db --json";

struct DiffOptions {
  std::string before, after;
  std::string names = records::kPciIdsFile;
  documents::DifferenceOptions difference;
  bool by_place = false;
  bool json = false;
  bool exit_code = false;
  bool no_headings = false;
  std::string color = "auto";
};

bool have_class_in_common(const documents::Document& a, const documents::Document& b) {
  return std::ranges::any_of(a.classes, [&](const auto& of) { return b.find(of.name) != nullptr; });
}

void run(DiffOptions& options) {
  if (options.before == "-" && options.after == "-")
    throw WrongInput("only one of the two can be standard input");
  if (options.by_place) options.difference.by = documents::MatchBy::kPlace;
  const auto types = documents::inventory_types(options.names);
  const auto before = load_document(options.before, types);
  const auto after = load_document(options.after, types);
  if (!have_class_in_common(before, after))
    throw WrongInput(options.before + " and " + options.after + " have nothing in common to compare");
  const auto changes = documents::difference(before, after, options.difference);
  write_output(options.json ? documents::to_json(changes)
                            : render_table(sheet_of(changes), {.headings = !options.no_headings,
                                                               .colors = want_colors(options.color)}));
  if (options.exit_code && !changes.empty()) throw Different();
}

}  // namespace

void add_diff(CommandTree& tree) {
  const auto options = std::make_shared<DiffOptions>();
  auto& command = *tree.app.add_subcommand("diff", "What differs between two inventories, part by part");
  command.footer(kFooter);
  command.add_option("A", options->before, "The inventory before")->required()->type_name("");
  command.add_option("B", options->after, "The inventory after")->required()->type_name("");
  command.add_flag("--volatile", options->difference.with_volatile,
                   "Also what changes while nothing happens: loads, temperatures");
  command.add_flag("--by-place", options->by_place,
                   "Compare two machines: place by place, whatever the serial numbers");
  command.add_flag("--exit-code", options->exit_code, "Exit with 1 where they differ");
  auto* json = command.add_flag("--json", options->json, "Print JSON");
  command.add_flag("--no-headings", options->no_headings, "Print no headings")->excludes(json);
  add_color_option(tree, command, options->color);
  add_pci_ids_option(command, options->names);
  command.callback([options] { run(*options); });
}

}  // namespace zymdb::tool
