#include <algorithm>
#include <memory>

#include "commands/commands.h"
#include "common/source_file.h"
#include "common/text.h"
#include "documents/check_json.h"
#include "documents/check_junit.h"
#include "documents/draft.h"
#include "documents/inventory_types.h"
#include "files/document_file.h"
#include "records/pci.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using documents::Document;
using documents::Verdict;
using records::Attention;

constexpr char kFooter[] =
    "INVENTORY is an inventory, a snapshot or an export; \"-\" is standard input. FILE is TOML, one table "
    "for each "
    "class:\n"
    "  [drives]\n"
    "  count = 2                  parts; a text like \">= 2\" compares\n"
    "  healthy = true             no part deserves a look\n"
    "  unique = true              no serial number or address twice\n"
    "  all = { MediaType = \"SSD\", FwVersion = \">= 2.1\" }       of every part\n"
    "  [drives.models]\n"
    "  \"PM9A3\" = 2                                             parts of a model\n"
    "  [drives.at]\n"
    "  \"Bay 1\" = { Model = \"PM9A3\", FwVersion = \">= GDC5602Q\" }\n"
    "  \"Bay 9\" = \"empty\"\n"
    "  [functions]\n"
    "  full_links = { except = [\"0000:3b:00.0\"] }             links as wide and fast as both ends can do\n"
    "\n"
    "Exit status: 0 as expected, 1 not so, 2 trouble.\n"
    "\n"
    "Examples:\n"
    "  zymdb check --draft >server.toml\n"
    "  zymdb check --against server.toml\n"
    "  ssh server zymdb export | zymdb check - --against server.toml --format junit >result.xml";

constexpr char kTable[] = "table", kJson[] = "json", kJunit[] = "junit";

constexpr records::FieldInfo kFields[] = {
    {.key = "class", .heading = "CLASS", .meaning = "what kind of part"},
    {.key = "place", .heading = "PLACE", .meaning = "where; empty of a class as a whole"},
    {.key = "expected", .heading = "EXPECTED", .meaning = "what was expected"},
    {.key = "found", .heading = "FOUND", .meaning = "what there is", .kind = records::Kind::kLongText},
};

struct CheckOptions {
  std::string inventory, against;
  std::string names = records::kPciIdsFile;
  std::string format = kTable;
  std::string color = "auto";
  bool draft = false;
  bool no_headings = false;

  std::string source() const { return inventory.empty() ? inventory_location() : inventory; }
};

records::Sheet sheet_of(const std::vector<Verdict>& verdicts) {
  records::Sheet sheet{{std::begin(kFields), std::end(kFields)}, {}};
  for (const Verdict& verdict : verdicts) {
    for (const auto& failure : verdict.failures)
      sheet.rows.push_back(
          {{verdict.part_class}, {failure.place}, {failure.expected}, {failure.found, Attention::kWarning}});
  }
  return sheet;
}

std::string rendered(const std::vector<Verdict>& verdicts, const CheckOptions& options) {
  if (options.format == kJson) return documents::to_json(verdicts);
  if (options.format == kJunit) return documents::to_junit(verdicts);
  if (documents::failure_count(verdicts) == 0)
    return options.source() + " is as expected: " + std::to_string(verdicts.size()) + " expectations of " +
           options.against + "\n";
  return render_table(sheet_of(verdicts),
                      {.headings = !options.no_headings, .colors = want_colors(options.color)});
}

std::vector<documents::Expectation> load_expectations(const std::string& path,
                                                      const std::vector<records::RecordType>& types) {
  try {
    return documents::parse_expectations(read_source(path), path, types);
  } catch (const SourceError& error) {
    throw WrongInput(error.what());
  }
}

Document load(const CheckOptions& options, const std::vector<records::RecordType>& types) {
  return options.inventory.empty() ? load_chosen_document(types) : load_document(options.inventory, types);
}

void check(const CheckOptions& options, const std::vector<records::RecordType>& types) {
  const auto expectations = load_expectations(options.against, types);
  const auto document = load(options, types);
  const auto missing = documents::missing_classes(expectations, document);
  if (!missing.empty())
    throw WrongInput(options.source() + " tells nothing of " + listed(missing) + ", of which " +
                     options.against + " expects something");
  const auto verdicts = documents::check(expectations, document);
  write_output(rendered(verdicts, options));
  if (documents::failure_count(verdicts) != 0) throw Different();
}

void draft(const CheckOptions& options, const std::vector<records::RecordType>& types) {
  const auto document = load(options, types);
  if (document.is_empty()) throw WrongInput(options.source() + " has no parts to draft expectations from");
  write_output(documents::draft(document));
}

void run(const CheckOptions& options) {
  if (options.draft == !options.against.empty())
    throw CLI::ValidationError("--against", "name the file of expectations, or --draft one");
  if (options.format != kTable && options.no_headings)
    throw CLI::ExcludesError("--format " + options.format, "--no-headings");
  const auto types = documents::inventory_types(options.names);
  if (options.draft)
    draft(options, types);
  else
    check(options, types);
}

}  // namespace

void add_check(CommandTree& tree) {
  const auto options = std::make_shared<CheckOptions>();
  auto& command = *tree.app.add_subcommand("check", "Whether this server is what it should be");
  command.footer(kFooter);
  command.add_option("INVENTORY", options->inventory, "What to check (default: the inventory)")
      ->type_name("");
  auto* against = command.add_option("--against", options->against, "The file that says what is expected");
  against->type_name(kFileType);
  auto* draft = command.add_flag("--draft", options->draft, "Print such a file, drafted from this server")
                    ->excludes(against);
  const auto format = add_format_options(tree, command, options->format, {kTable, kJson, kJunit});
  draft->excludes(format.format)->excludes(format.json);
  command.add_flag("--no-headings", options->no_headings, "Print no headings")
      ->excludes(draft)
      ->excludes(format.json);
  add_color_option(tree, command, options->color);
  add_pci_ids_option(command, options->names);
  command.callback([options] { run(*options); });
}

}  // namespace zymdb::tool
