#include <strings.h>

#include <memory>

#include "records/json.h"
#include "show/inventory.h"
#include "show/listing.h"
#include "terminal/moment.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using records::FieldInfo;
using records::RecordType;
using records::Selection;

struct ShowOptions {
  bool json = false;
  bool no_headings = false;
  bool tree = false;
  std::string columns;
  std::string moment;
  std::string color = "auto";
};

std::string rendered(const Listing& listing, const ShowOptions& options, const Selection& columns) {
  if (listing.is_stored) open_inventory(Opening::kReading);
  if (!options.moment.empty()) open_moment(options.moment);
  const auto& type = listing.type;
  if (options.json) return records::to_json(type.name, type.list(records::all_fields(type)));
  return render_table(
      type.list(columns),
      {.headings = !options.no_headings, .colors = want_colors(options.color), .tree = options.tree});
}

Selection choose_columns(const Listing& listing, const ShowOptions& options, bool columns_given) {
  if (columns_given) return parse_columns(listing.type, options.columns);
  return options.tree ? parse_columns(listing.type, listing.tree_columns)
                      : records::default_fields(listing.type);
}

void show(const Listing& listing, const ShowOptions& options, bool columns_given) {
  write_output(rendered(listing, options, choose_columns(listing, options, columns_given)));
}

std::vector<std::string> headings_of(const RecordType& type) {
  std::vector<std::string> headings;
  for (const auto& field : type.fields) headings.emplace_back(field.heading);
  headings.emplace_back("all");
  return headings;
}

std::string help_line(const FieldInfo& field) {
  std::string line = field.shown == records::Shown::kByDefault ? "* " : "  ";
  line += field.heading;
  line.resize(std::max(line.size() + 1, size_t{18}), ' ');
  line += field.meaning;
  if (field.unit[0] != '\0') line += std::string(", ") + field.unit;
  return line + " [" + field.key + "]\n";
}

std::string help_footer(const Listing& listing) {
  std::string text = "Columns (*: shown by default; in brackets the key that --json prints):\n";
  for (const auto& field : listing.type.fields) text += help_line(field);
  return text + "\nExamples:\n" + listing.examples;
}

std::string trimmed_name(const std::string& name) {
  const auto first = name.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  return name.substr(first, name.find_last_not_of(" \t") - first + 1);
}

}  // namespace

Selection parse_columns(const RecordType& type, std::string_view names) {
  Selection selection;
  for (const auto& part : CLI::detail::split(std::string(names), ',')) {
    const auto name = trimmed_name(part);
    if (strcasecmp(name.c_str(), "all") == 0) {
      const auto all = records::all_fields(type);
      selection.insert(selection.end(), all.begin(), all.end());
    } else if (const auto field = records::find_field(type, name)) {
      selection.push_back(*field);
    } else {
      throw CLI::ValidationError("--columns", unknown_word("column", name, headings_of(type)));
    }
  }
  return selection;
}

CLI::App& add_listing(CommandTree& tree, CLI::App& parent, Listing listing) {
  auto& command = *parent.add_subcommand(listing.command, listing.type.description);
  command.footer(help_footer(listing));
  const auto options = std::make_shared<ShowOptions>();
  auto* json = command.add_flag("--json", options->json, "Print JSON: everything that is known of each");
  auto* columns = command.add_option("--columns", options->columns,
                                     "Columns to print, by heading or key, separated by commas; or all");
  columns->type_name(kListType)->excludes(json);
  tree.words[columns] = headings_of(listing.type);
  command.add_flag("--no-headings", options->no_headings, "Print no headings")->excludes(json);
  if (!listing.tree_columns.empty())
    command.add_flag("--tree", options->tree, "Print a tree: each below the one above it")->excludes(json);
  if (listing.is_stored)
    command.add_option("--at", options->moment, "As it was at this time (UTC), or of this generation")
        ->check(CLI::Validator(objection_to_moment, ""))
        ->type_name("TIME|GENERATION");
  add_color_option(tree, command, options->color);
  command.callback(
      [listing = std::move(listing), options, columns] { show(listing, *options, columns->count() > 0); });
  return command;
}

}  // namespace zymdb::tool
