#include <syslog.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>

#include "commands/commands.h"
#include "common/one_line.h"
#include "documents/difference_json.h"
#include "documents/inventory_types.h"
#include "documents/watcher.h"
#include "records/pci.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "show/ports.h"
#include "show/view.h"
#include "show/watch_screen.h"
#include "terminal/failure.h"
#include "terminal/system_journal.h"
#include "terminal/terminal.h"
#include "terminal/waiting.h"

namespace zymdb::tool {
namespace {

using documents::Change;
using documents::ChangeKind;
using records::RecordType;

constexpr char kFooter[] =
    "Prints one line for each part that is added, removed, moved, replaced or changed, as it happens, until "
    "it is\n"
    "interrupted (Ctrl-C). Wakes when the inventory's file changes and not before; where the system does not "
    "tell\n"
    "of that, it looks every --interval seconds.\n"
    "\n"
    "Examples:\n"
    "  zymdb watch\n"
    "  zymdb watch drives memory --json | jq .description\n"
    "  zymdb watch ports --screen --adapter \"slot 3\"\n"
    "  zymdb watch --log";

// What tells entries of the system's journal apart, by kind of change; the last one is a baseline's.
constexpr const char* kMessageIds[] = {
    "3f1b6c0d5a6e4e0f8f5b7f6a1d2c9e01", "3f1b6c0d5a6e4e0f8f5b7f6a1d2c9e02",
    "3f1b6c0d5a6e4e0f8f5b7f6a1d2c9e03", "3f1b6c0d5a6e4e0f8f5b7f6a1d2c9e04",
    "3f1b6c0d5a6e4e0f8f5b7f6a1d2c9e05", "3f1b6c0d5a6e4e0f8f5b7f6a1d2c9e06",
};

struct WatchOptions {
  std::vector<std::string> listings;
  std::shared_ptr<PortSelection> ports = std::make_shared<PortSelection>();
  std::string names = records::kPciIdsFile;
  ViewOptions view;
  unsigned interval = 1;  // seconds
  bool with_volatile = false;
  bool json = false;
  bool log = false;
  bool screen = false;
};

// Less of the machine deserves more of a look than more of it.
int priority_of(const Change& change) {
  const bool is_state = std::ranges::any_of(
      change.fields, [](const auto& field) { return field.field.role == records::Role::kState; });
  if (change.kind == ChangeKind::kRemoved) return LOG_WARNING;
  return change.kind != ChangeKind::kChanged || is_state ? LOG_NOTICE : LOG_INFO;
}

void log(const Change& change, uint64_t generation) {
  send_to_journal({"MESSAGE=" + text_of(change), "PRIORITY=" + std::to_string(priority_of(change)),
                   std::string("MESSAGE_ID=") + kMessageIds[static_cast<size_t>(change.kind)],
                   "SYSLOG_IDENTIFIER=zymdb", std::string("ZYMDB_CHANGE=") + name_of(change.kind),
                   "ZYMDB_CLASS=" + change.part_class, "ZYMDB_PLACE=" + change.place,
                   "ZYMDB_PART=" + change.description, "ZYMDB_GENERATION=" + std::to_string(generation),
                   "ZYMDB_JSON=" + documents::to_json_line(change)});
}

std::string line_of(const Change& change) {
  std::string line = text_of(change);
  keep_on_one_line(line.data());
  return line;
}

void log_baseline(const documents::Event& event, const std::string& line) {
  send_to_journal({"MESSAGE=" + line, "PRIORITY=" + std::to_string(LOG_INFO),
                   std::string("MESSAGE_ID=") + *std::rbegin(kMessageIds), "SYSLOG_IDENTIFIER=zymdb",
                   "ZYMDB_CHANGE=baseline", "ZYMDB_GENERATION=" + std::to_string(event.generation),
                   "ZYMDB_JSON=" + documents::to_json_lines(event)});
}

void tell(const documents::Event& event, const WatchOptions& options) {
  if (event.changes.empty()) return;
  if (options.json) return write_output(documents::to_json_lines(event));
  if (event.is_baseline) {
    const std::string line = "baseline  " + std::to_string(event.changes.size()) + " parts";
    if (options.log) return log_baseline(event, line);
    return write_output(documents::time_text(event.time) + "  " + line + "\n");
  }
  for (const Change& change : event.changes) {
    if (options.log)
      log(change, event.generation);
    else
      write_output(documents::time_text(event.time) + "  " + line_of(change) + "\n");
  }
}

std::vector<RecordType> chosen(const WatchOptions& options) {
  auto types = documents::inventory_types(options.names);
  if (options.listings.empty()) return types;
  std::erase_if(types, [&](const RecordType& type) {
    return std::ranges::find(options.listings, type.name) == options.listings.end();
  });
  return types;
}

std::optional<std::string> why_not_open() {
  try {
    open_inventory(Opening::kReading);
    return {};
  } catch (const Failure& failure) {
    return failure.what();
  }
}

// A service may start before the first collection; whoever types a name wants to hear of the slip in it.
// Whether it is there; else an end was asked for.
bool open_when_there(const WatchOptions& options, const Signals& signals, const FileChanges& changes) {
  const auto reason = why_not_open();
  if (!reason) return true;
  if (!options.log) throw Failure(*reason);
  complain(*reason);
  const auto is_there = [] { return !why_not_open(); };
  while (!is_there()) {
    if (is_end(wait_for_change(signals, changes, options.interval, is_there))) return false;
  }
  return true;
}

void watch_lines(const WatchOptions& options) {
  const Signals signals;
  const FileChanges changes(inventory_location());
  if (!open_when_there(options, signals, changes)) return;
  documents::Watcher watcher(chosen(options), {.with_volatile = options.with_volatile});
  const auto has_happened = [&] { return watcher.has_news(); };
  while (!is_end(wait_for_change(signals, changes, options.interval, has_happened))) {
    tell(watcher.look(), options);
  }
}

RecordType on_screen(const WatchOptions& options) {
  if (options.listings.size() != 1) throw WrongInput("--screen shows one listing: name it");
  if (options.listings.front() == "ports") return records::physical_ports(port_choice(options.ports));
  return chosen(options).front();
}

void require_that_ports_are_shown(const WatchOptions& options) {
  const bool names_ports = !options.ports->function.empty() || !options.ports->adapter.empty();
  const bool shows_ports = options.screen && options.listings == std::vector<std::string>{"ports"};
  if (names_ports && !shows_ports)
    throw WrongInput("--function and --adapter are for `zymdb watch ports --screen`");
}

void run(const WatchOptions& options) {
  require_that_ports_are_shown(options);
  if (!options.screen) {
    if (options.view.is_given()) throw WrongInput("--columns, --sort and --where are for --screen");
    return watch_lines(options);
  }
  const auto type = on_screen(options);
  const View view = parse_view(type, options.view, records::default_fields(type));
  open_inventory(Opening::kReading);
  watch_on_screen(type, view, options.interval);
}

std::vector<std::string> names_of(const std::vector<RecordType>& types) {
  std::vector<std::string> names;
  for (const auto& type : types) names.push_back(type.name);
  return names;
}

// Of which listing is not known yet where words are offered.
std::vector<std::string> all_headings() {
  std::set<std::string> headings;
  for (const auto& type : documents::inventory_types(records::kPciIdsFile)) {
    for (const auto& heading : headings_of(type)) headings.insert(heading);
  }
  return {headings.begin(), headings.end()};
}

}  // namespace

void add_watch(CommandTree& tree) {
  auto& watch = *tree.app.add_subcommand("watch", "Tell what changes in the inventory, as it changes");
  watch.footer(kFooter);
  const auto options = std::make_shared<WatchOptions>();
  const auto names = names_of(documents::inventory_types(options->names));
  tree.words[watch.add_option("LISTING", options->listings, "What to watch (default: everything)")
                 ->check(one_of(names))
                 ->type_name("")] = names;
  auto* screen =
      watch.add_flag("--screen", options->screen, "Show one listing as a table, drawn anew where it changes");
  auto* json = watch.add_flag("--json", options->json, "Print JSON, one object a line")->excludes(screen);
  watch.add_flag("--log", options->log, "Write to the system's journal instead")
      ->excludes(screen)
      ->excludes(json);
  watch
      .add_flag("--volatile", options->with_volatile,
                "Also what changes while nothing happens: loads, temperatures")
      ->excludes(screen);
  add_view_options(tree, watch, all_headings(), options->view);
  add_port_options(watch, *options->ports);
  add_pci_ids_option(watch, options->names);
  watch
      .add_option("--interval", options->interval,
                  "Seconds between two looks where the system tells of no change (default: 1)")
      ->check(whole_number(1, 86400))
      ->type_name("SECONDS");
  watch.callback([options] { run(*options); });
}

}  // namespace zymdb::tool
