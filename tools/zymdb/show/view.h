// Which rows and columns of a listing are printed, as the command line says it.
#ifndef ZYMDB_TOOL_SHOW_VIEW_H
#define ZYMDB_TOOL_SHOW_VIEW_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records/arrangement.h"
#include "terminal/command_line.h"

namespace zymdb::tool {

struct ViewOptions {
  std::optional<std::string> columns;
  std::optional<std::string> sort;
  std::vector<std::string> where;

  bool is_given() const { return columns || sort || !where.empty(); }
};

struct View {
  records::Selection columns;
  records::Arrangement arrangement;
};

// Adds --columns, --sort and --where, and returns the first two. `names` are the words that completion
// offers.
struct ViewOptionNames {
  CLI::Option* columns;
  CLI::Option* sort;
  CLI::Option* where;
};
ViewOptionNames add_view_options(CommandTree& tree, CLI::App& command, const std::vector<std::string>& names,
                                 ViewOptions& options);

// Throws CLI::ValidationError for names that the type lacks, which lists those it has, and for what cannot be
// compared. `columns` are printed where no others are named.
View parse_view(const records::RecordType& type, const ViewOptions& options, records::Selection columns);

// Fields by their headings or keys, in any case, separated by commas and blanks; "all" stands for every one.
records::Selection parse_columns(const records::RecordType& type, std::string_view names);

// As many as there are, in their order.
std::vector<std::string> headings_of(const records::RecordType& type);

}  // namespace zymdb::tool

#endif
