#include <memory>

#include "commands/commands.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "documents/document_csv.h"
#include "documents/document_cyclonedx.h"
#include "documents/document_json.h"
#include "documents/document_prometheus.h"
#include "documents/document_schema.h"
#include "documents/inventory_types.h"
#include "records/pci.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using documents::Document;
using records::RecordType;

constexpr char kFooter[] =
    "The whole inventory in one document:\n"
    "  json        the arrays of all listings of `zymdb show … --json`; --schema prints the JSON Schema\n"
    "  csv         a file for each class in FILE, which is a new or empty folder\n"
    "  prometheus  metrics in the text format, for node_exporter's textfile collector for one\n"
    "  cyclonedx   hardware bill of materials, CycloneDX 1.6\n"
    "\n"
    "Examples:\n"
    "  zymdb export >inventory.json\n"
    "  zymdb export | jq '.drives[].SerialNo'\n"
    "  zymdb export --format csv --output inventory\n"
    "  zymdb export --format prometheus --output /var/lib/prometheus/node-exporter/zymdb.prom";

constexpr char kCsv[] = "csv";

std::string to_json(const Document& document, const std::vector<RecordType>&) {
  return documents::to_json(document);
}

// The formats that are one text.
struct Format {
  const char* name;
  std::string (*write)(const Document& document, const std::vector<RecordType>& types);
};
constexpr Format kFormats[] = {
    {"json", to_json},
    {"prometheus", documents::to_prometheus},
    {"cyclonedx", documents::to_cyclonedx},
};

struct ExportOptions {
  std::string format = kFormats[0].name;
  std::string output;
  std::string names = records::kPciIdsFile;
  bool schema = false;
};

void write_text(const std::string& text, const std::string& path) {
  path.empty() ? write_output(text) : replace_file(path, text);
}

void write_files(const std::vector<documents::CsvFile>& files, const std::string& path) {
  NewFolder folder(path);
  for (const auto& [name, content] : files) folder.add_file(name, content);
  folder.finish();
}

void write_document(const Document& document, const std::vector<RecordType>& types,
                    const ExportOptions& options) {
  if (options.format == kCsv) return write_files(documents::to_csv(document), options.output);
  const auto* const format = std::ranges::find(kFormats, options.format, &Format::name);
  write_text(format->write(document, types), options.output);
}

// Wherever the output is to be is what the command was given.
template <class Write>
void try_to(Write write) {
  try {
    write();
  } catch (const SourceError& error) {
    throw WrongInput(std::string("cannot write ") + error.what());
  }
}

void run(const ExportOptions& options) {
  const auto types = documents::inventory_types(options.names);
  if (options.schema) return try_to([&] { write_text(documents::json_schema(types), options.output); });
  if (options.format == kCsv && options.output.empty())
    throw CLI::ValidationError("--format", "csv is several files: --output names their folder");
  open_inventory(Opening::kReading);
  const Document document = documents::read_document(types);
  try_to([&] { write_document(document, types, options); });
}

std::vector<std::string> format_names() {
  std::vector<std::string> names;
  for (const Format& format : kFormats) names.emplace_back(format.name);
  names.insert(names.begin() + 1, kCsv);
  return names;
}

}  // namespace

void add_export(CommandTree& tree) {
  const auto options = std::make_shared<ExportOptions>();
  auto& command = *tree.app.add_subcommand("export", "The whole inventory as one document");
  command.footer(kFooter);
  auto& format = *command.add_option("--format", options->format, "json, csv, prometheus or cyclonedx")
                      ->type_name("FORMAT")
                      ->check(one_of(format_names()))
                      ->capture_default_str();
  tree.words[&format] = format_names();
  command.add_option("--output", options->output, "Write it there, whole or not at all")
      ->type_name(kFileType);
  command.add_flag("--schema", options->schema, "Print the JSON Schema of the format json instead")
      ->excludes(&format);
  add_pci_ids_option(command, options->names);
  command.callback([options] { run(*options); });
}

}  // namespace zymdb::tool
