#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>

#include "collect/collector.h"
#include "commands/commands.h"
#include "records/record.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "terminal/progress.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "Without --lspci, --smbios and --sysfs it is this machine that is looked at; as soon as one of them is\n"
    "given, only what is given is. What no source tells of stays in the inventory as it is, also where a "
    "source\n"
    "is there but empty. All changes are made at once: others see the inventory as it was or as it is\n"
    "afterwards, and after a failure as it was. An inventory is of one machine: another one, with another "
    "UUID\n"
    "or serial number, needs --replace, which empties it first, whoever wrote what it holds.\n"
    "\n"
    "Classes for --only: system, processors, memory, firmware, pci, gpus, ports, drives.\n"
    "\n"
    "Examples:\n"
    "  zymdb collect                                        this machine (as root: SMBIOS, VPD)\n"
    "  zymdb collect --lspci server.lspci --smbios server.smbios --inventory server.db\n"
    "  zymdb collect --only ports,drives                    what changes, and nothing else\n"
    "\n"
    "Recording a machine:\n"
    "  lspci -xxxx >server.lspci && dmidecode --dump-bin server.smbios";

using collect::TableSummary;

using records::Field;

template <size_t TableSummary::*Count>
constexpr Field<TableSummary> count(const char* key, const char* heading) {
  return {.info = {.key = key, .heading = heading, .meaning = "", .kind = records::Kind::kNumber},
          .read = [](const TableSummary& summary) { return records::value_of(uint64_t{summary.*Count}); }};
}

constexpr Field<TableSummary> kSummary[] = {
    records::derived<TableSummary>(
        "Table", "TABLE", "",
        [](const TableSummary& each) -> records::Value { return std::string(each.table); }),
    count<&TableSummary::inserted>("Inserted", "INSERTED"),
    count<&TableSummary::updated>("Updated", "UPDATED"),
    count<&TableSummary::removed>("Removed", "REMOVED"),
    count<&TableSummary::unchanged>("Unchanged", "UNCHANGED"),
};

void write_to_stderr(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
}

collect::Observer observe(std::optional<Progress>& progress) {
  if (stderr_is_terminal()) progress.emplace(write_to_stderr, stderr_width());
  return {.notice =
              [&progress](std::string_view line) {
                if (progress) progress->clear();
                complain(line);
              },
          .progress =
              [&progress](size_t done, size_t total) {
                if (progress) progress->update(done, total);
              }};
}

collect::Summary collect_observed(const collect::Sources& sources) {
  std::optional<Progress> progress;
  return collect::collect_inventory(sources, observe(progress));
}

std::vector<std::string> parse_classes(const std::string& names) {
  const auto known = collect::class_names();
  auto classes = CLI::detail::split(names, ',');
  for (auto& name : classes) {
    CLI::detail::trim(name);
    if (std::ranges::find(known, name) == known.end())
      throw CLI::ValidationError("--only", unknown_word("class", name, known));
  }
  return classes;
}

// A folder that lacks a source costs a notice; a folder that is not there is a slip of the user's.
void require_folder(const std::string& path) {
  std::error_code ignored;
  if (path.empty() || std::filesystem::is_directory(path, ignored)) return;
  throw Failure(path + ": there is no such folder");
}

void run(const collect::Sources& sources, bool quiet) {
  require_folder(sources.sysfs);
  open_inventory(Opening::kCreating);
  const auto summary = quiet ? collect::collect_inventory(sources) : collect_observed(sources);
  if (!summary.ok()) throw Failure(summary.error);
  if (!quiet) write_output(render_table(records::make_sheet<TableSummary>(kSummary, summary.tables), {}));
}

}  // namespace

void add_collect(CommandTree& tree) {
  auto& command = *tree.app.add_subcommand("collect", "Fill the inventory with the hardware of a machine");
  command.footer(kFooter);
  const auto sources = std::make_shared<collect::Sources>();
  const auto quiet = std::make_shared<bool>(false);
  command
      .add_option("--lspci", sources->lspci, "A recorded machine: PCI functions as `lspci -xxxx` prints them")
      ->type_name(kFileType);
  command
      .add_option("--smbios", sources->smbios,
                  "A recorded machine: tables as `dmidecode --dump-bin` writes them")
      ->type_name(kFileType);
  command.add_option("--sysfs", sources->sysfs, "A recorded machine: the root of a copy of /sys")
      ->type_name(kFolderType);
  add_pci_ids_option(command, sources->pci_ids);
  command.add_flag("--allow-empty", sources->allow_empty,
                   "Believe a source with nothing in it, and remove what it should tell of");
  auto* const only = command.add_option_function<std::string>(
      "--only", [sources](const std::string& names) { sources->only = parse_classes(names); },
      "Collect only these classes of hardware, separated by commas");
  only->type_name(kListType);
  tree.words[only] = collect::class_names();
  command
      .add_option("--timeout", sources->timeout,
                  "Seconds that a device may take to answer, from 1 to 3600 (default: 5)")
      ->check(whole_number(1, 3600))
      ->type_name("SECONDS");
  command.add_flag("--replace", sources->replace,
                   "Put this machine in the place of another one that the inventory is of");
  command.add_flag("--quiet", *quiet, "Print neither notices nor a summary");
  command.callback([sources, quiet] { run(*sources, *quiet); });
}

}  // namespace zymdb::tool
