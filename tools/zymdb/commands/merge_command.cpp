#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "commands/commands.h"
#include "commands/settings.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "terminal/terminal.h"
#include "zymdb_pci.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "Every PCI function that has settings becomes an adapter, named and connected like the adapter of its\n"
    "device. Adapters that were merged before and whose settings are gone are no longer merged; they vanish\n"
    "when their function is gone as well. Adapters that are managed otherwise stay as they are.\n"
    "\n"
    "A function that cannot be merged ends the command; what was merged before it stays.\n"
    "\n"
    "Examples:\n"
    "  zymdb settings import adapters.json && zymdb merge";

constexpr char kAction[] = "merge the settings into the adapters";
constexpr unsigned kMerged = 3;

// The functions that are merged at the moment, by key.
std::vector<uint32_t> merged_functions() {
  std::vector<uint32_t> merged;
  for (const auto& function : all_functions(kAction)) {
    unsigned type = 0;
    const int status = zymdb_get_pci_function_oob_type(key_of(function), &type);
    if (status == ZYM_DB_STATUS_OK && type == kMerged) merged.push_back(key_of(function));
  }
  return merged;
}

size_t count_missing(const std::vector<uint32_t>& from, const std::vector<uint32_t>& in) {
  std::vector<uint32_t> missing;
  std::ranges::set_difference(from, in, std::back_inserter(missing));
  return missing.size();
}

void merge() {
  require_settled_settings();
  open_inventory();
  const auto before = merged_functions();
  const int status = zymdb_merge_aim_ucm_pfa();
  require_status(status, kAction);
  // A function that is not found ends the merge with status 0.
  require_no_logged_error(kAction);
  const auto after = merged_functions();
  write_output(std::to_string(after.size()) + " functions merged, " +
               std::to_string(count_missing(after, before)) + " of them new; " +
               std::to_string(count_missing(before, after)) + " no longer\n");
}

}  // namespace

void add_merge(CommandTree& tree) {
  auto& command = *tree.app.add_subcommand("merge", "Make adapters of the functions that have settings");
  command.footer(kFooter);
  command.callback(merge);
}

}  // namespace zymdb::tool
