#include <algorithm>
#include <set>
#include <string>

#include "commands/commands.h"
#include "common/pci_address.h"
#include "records/pci.h"
#include "records/pci_settings.h"
#include "show/inventory.h"
#include "terminal/failure.h"
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

using Functions = std::set<FunctionKey>;

unsigned management_of(FunctionKey function) {
  unsigned type = ZYMDB_AIM_NONE;
  zymdb_get_pci_function_oob_type(function.value, &type);
  return type;
}

// The functions that are merged at the moment.
Functions merged_functions() {
  const records::Reading reading("functions");
  Functions merged;
  for (const auto& function : records::list_functions(reading)) {
    const auto key = FunctionKey::of(function);
    if (management_of(key) == ZYMDB_AIM_MERGED) merged.insert(key);
  }
  reading.require_whole();
  return merged;
}

size_t count_missing(const Functions& from, const Functions& in) {
  return static_cast<size_t>(
      std::ranges::count_if(from, [&](FunctionKey each) { return !in.contains(each); }));
}

// The merge ends at a function that it cannot find, and answers 0 all the same: what it has left undone
// tells.
void require_all_merged() {
  const records::Reading reading("settings");
  for (const FunctionKey function : records::functions_with_settings(reading)) {
    if (management_of(function) == ZYMDB_AIM_NONE)
      throw Failure(std::string("cannot ") + kAction + ": function " + function.text() +
                    " has settings, but is not on the bus, or its device has no adapter");
  }
}

void merge() {
  records::require_settled_settings();
  open_inventory(Opening::kChanging);
  const auto before = merged_functions();
  require_status(zymdb_merge_aim_ucm_pfa(), kAction);
  require_no_client_error(kAction);
  require_all_merged();
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
