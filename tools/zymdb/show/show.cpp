#include <memory>

#include "commands/commands.h"
#include "show/inventory.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

struct ShowOptions {
  bool json = false;
  bool no_headings = false;
  std::string columns;
  std::string color = "auto";
};

Sheet read_sheet(const Listing& listing, const Selection& selection) {
  const auto action = "read the " + listing.name;
  if (listing.is_stored) open_inventory();
  auto sheet = listing.read(selection);
  require_no_logged_error(action);
  return sheet;
}

void show(const Listing& listing, const ShowOptions& options, bool columns_given) {
  if (options.json) {
    write_output(render_json(listing.name, read_sheet(listing, record_fields(listing))));
    return;
  }
  const auto selection = columns_given ? parse_columns(listing, options.columns) : default_columns(listing);
  write_output(render_table(read_sheet(listing, selection),
                            {.headings = !options.no_headings, .colors = want_colors(options.color)}));
}

std::vector<std::string> column_words(const Listing& listing) {
  std::vector<std::string> words;
  for (const auto& column : listing.columns) words.emplace_back(column.heading);
  words.emplace_back("all");
  return words;
}

std::string help_line(const ColumnInfo& column) {
  std::string line = column.shown == Shown::kByDefault ? "* " : "  ";
  line += column.heading;
  line.resize(std::max(line.size() + 1, size_t{18}), ' ');
  line += column.help;
  if (column.field != nullptr) line += std::string(" [") + column.field + "]";
  return line + "\n";
}

std::string help_footer(const Listing& listing, const std::string& examples) {
  std::string text = "Columns (*: shown by default; in brackets the key that --json prints):\n";
  for (const auto& column : listing.columns) text += help_line(column);
  return text + "\nExamples:\n" + examples;
}

}  // namespace

CLI::App& add_listing(CommandTree& tree, CLI::App& parent, Listing listing, const std::string& examples) {
  auto& command = *parent.add_subcommand(listing.command, listing.description);
  command.footer(help_footer(listing, examples));
  const auto options = std::make_shared<ShowOptions>();
  auto* json = command.add_flag("--json", options->json, "Print JSON: every field of the records");
  auto* columns = command.add_option("--columns", options->columns,
                                     "Columns to print, by heading or field, separated by commas; or all");
  columns->type_name(kListType)->excludes(json);
  tree.words[columns] = column_words(listing);
  command.add_flag("--no-headings", options->no_headings, "Print no headings")->excludes(json);
  const std::vector<std::string> choices{"auto", "always", "never"};
  tree.words[command.add_option("--color", options->color, "Colour: auto (on a terminal), always, never")
                 ->check(CLI::IsMember(choices).description({}))
                 ->type_name("WHEN")] = choices;
  command.callback(
      [listing = std::move(listing), options, columns] { show(listing, *options, columns->count() > 0); });
  return command;
}

}  // namespace zymdb::tool
