#include <strings.h>

#include <algorithm>
#include <memory>

#include "commands/commands.h"
#include "documents/difference_json.h"
#include "documents/history.h"
#include "documents/inventory_types.h"
#include "records/pci.h"
#include "show/changes.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "terminal/moment.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using documents::Change;
using documents::Event;

constexpr char kFooter[] =
    "What became of the parts of this machine, change by change: each transaction that changed the inventory "
    "is in\n"
    "its journal, whichever program made it. The first collection is one line, the baseline.\n"
    "\n"
    "Times are UTC: \"2026-01-31\", \"2026-01-31 12:00\", or so long ago: 90s, 15m, 36h, 7d.\n"
    "\n"
    "Examples:\n"
    "  zymdb history --since 7d\n"
    "  zymdb history --of \"bay 3\"\n"
    "  zymdb history --json | jq 'select(.change == \"replaced\")'\n"
    "  zymdb show drives --at \"2026-01-31 12:00\"";

struct HistoryOptions {
  std::string since, of;
  std::string names = records::kPciIdsFile;
  std::string color = "auto";
  bool json = false;
  bool no_headings = false;
};

bool same(const std::string& a, const std::string& b) {
  return strcasecmp(a.c_str(), b.c_str()) == 0;
}

// Whether a value of a part is the text: a serial number, an address, a place.
bool has_value(const documents::Part& part, const std::string& text) {
  return std::ranges::any_of(part, [&](const auto& value) {
    const auto* const own = std::get_if<std::string>(&value);
    return own != nullptr && same(*own, text);
  });
}

bool is_of(const Change& change, const std::string& text) {
  return same(change.place, text) || same(change.former_place, text) || has_value(change.before, text) ||
         has_value(change.after, text);
}

void keep_changes_of(const std::string& text, std::vector<Event>& events) {
  if (text.empty()) return;
  for (Event& event : events) {
    std::erase_if(event.changes, [&](const Change& change) { return !is_of(change, text); });
    event.is_baseline = false;
  }
  std::erase_if(events, [](const Event& event) { return event.changes.empty(); });
}

uint64_t first_generation(const std::string& since) {
  const auto time = parse_time(since);
  const auto generation =
      time ? documents::generation_at(documents::read_entries(), *time - 1) : std::nullopt;
  return generation ? *generation + 1 : 0;
}

std::string json_lines(const std::vector<Event>& events) {
  std::string lines;
  for (const Event& event : events) lines += documents::to_json_lines(event);
  return lines;
}

void tell_what_was_dropped() {
  const auto entries = documents::read_entries();
  if (!entries.empty() && entries.front().follows_others)
    complain("earlier changes were dropped: the journal begins with generation " +
             std::to_string(entries.front().generation) + ", " + documents::time_text(entries.front().time));
}

void run(const HistoryOptions& options) {
  open_inventory(Opening::kReading);
  const uint64_t since = options.since.empty() ? 0 : first_generation(options.since);
  if (since == 0) tell_what_was_dropped();
  open_copy();
  auto events = documents::read_history(documents::inventory_types(options.names), since);
  keep_changes_of(options.of, events);
  write_output(options.json ? json_lines(events)
                            : render_table(sheet_of(events), {.headings = !options.no_headings,
                                                              .colors = want_colors(options.color)}));
}

}  // namespace

void add_history(CommandTree& tree) {
  const auto options = std::make_shared<HistoryOptions>();
  auto& command = *tree.app.add_subcommand("history", "What became of the machine's parts, and when");
  command.footer(kFooter);
  command.add_option("--since", options->since, "Only changes since this time")
      ->check(CLI::Validator(objection_to_time, ""))
      ->type_name("TIME");
  command
      .add_option("--of", options->of, "Only changes of the part with this place, serial number or address")
      ->type_name("PLACE|SERIAL");
  auto* json = command.add_flag("--json", options->json, "Print JSON, one object a line");
  command.add_flag("--no-headings", options->no_headings, "Print no headings")->excludes(json);
  add_color_option(tree, command, options->color);
  add_pci_ids_option(command, options->names);
  command.callback([options] { run(*options); });
}

}  // namespace zymdb::tool
