#include <memory>

#include "records/json.h"
#include "show/inventory.h"
#include "show/listing.h"
#include "show/view.h"
#include "terminal/moment.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using records::FieldInfo;

constexpr char kTable[] = "table", kJson[] = "json", kCsv[] = "csv", kPairs[] = "pairs";

struct ShowOptions {
  std::string format = kTable;
  bool no_headings = false;
  bool tree = false;
  ViewOptions view;
  std::string moment;
  std::string color = "auto";
};

std::string rendered(const Listing& listing, const ShowOptions& options, const View& view) {
  if (listing.is_stored) open_inventory(Opening::kReading);
  if (!options.moment.empty()) open_moment(options.moment);
  const auto& type = listing.type;
  const bool is_json = options.format == kJson;
  const auto sheet =
      list_arranged(type, view.arrangement, is_json ? records::all_fields(type) : view.columns);
  if (is_json) return records::to_json(type.name, sheet);
  if (options.format == kCsv) return render_csv(sheet, !options.no_headings);
  if (options.format == kPairs) return render_pairs(sheet);
  return render_table(
      sheet, {.headings = !options.no_headings, .colors = want_colors(options.color), .tree = options.tree});
}

// What --json excludes, --format json excludes as well.
void require_that_format_takes(const ShowOptions& options) {
  const bool is_json = options.format == kJson, is_pairs = options.format == kPairs;
  const std::string format = "--format " + options.format;
  if (is_json && options.view.columns) throw CLI::ExcludesError(format, "--columns");
  if ((is_json || is_pairs) && options.no_headings) throw CLI::ExcludesError(format, "--no-headings");
  if (options.format != kTable && options.tree) throw CLI::ExcludesError(format, "--tree");
}

void show(const Listing& listing, const ShowOptions& options) {
  require_that_format_takes(options);
  const auto columns = options.tree ? parse_columns(listing.type, listing.tree_columns)
                                    : records::default_fields(listing.type);
  write_output(rendered(listing, options, parse_view(listing.type, options.view, columns)));
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

}  // namespace

CLI::App& add_listing(CommandTree& tree, CLI::App& parent, Listing listing) {
  auto& command = *parent.add_subcommand(listing.command, listing.type.description);
  command.footer(help_footer(listing));
  const auto options = std::make_shared<ShowOptions>();
  const auto format = add_format_options(tree, command, options->format, {kTable, kJson, kCsv, kPairs});
  format.json->description("Print JSON: everything that is known of each");
  const auto view = add_view_options(tree, command, headings_of(listing.type), options->view);
  view.columns->excludes(format.json);
  command.add_flag("--no-headings", options->no_headings, "Print no headings")->excludes(format.json);
  if (!listing.tree_columns.empty())
    command.add_flag("--tree", options->tree, "Print a tree: each below the one above it")
        ->excludes(format.json)
        ->excludes(view.sort)
        ->excludes(view.where);
  if (listing.is_stored)
    command.add_option("--at", options->moment, "As it was at this time (UTC), or of this generation")
        ->check(CLI::Validator(objection_to_moment, ""))
        ->type_name("TIME|GENERATION");
  add_color_option(tree, command, options->color);
  command.callback([listing = std::move(listing), options] { show(listing, *options); });
  return command;
}

}  // namespace zymdb::tool
