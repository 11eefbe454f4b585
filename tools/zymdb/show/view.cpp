#include "show/view.h"

#include <strings.h>

#include <algorithm>

#include "common/text.h"

namespace zymdb::tool {
namespace {

using records::RecordType;
using records::Selection;

constexpr char kAll[] = "all";

size_t parse_field(const RecordType& type, const char* option, const std::string& name,
                   const std::vector<std::string>& known) {
  const auto field = records::find_field(type, name);
  if (!field) throw CLI::ValidationError(option, unknown_word("column", name, known));
  return *field;
}

std::vector<records::SortKey> parse_order(const RecordType& type, const std::string& names) {
  std::vector<records::SortKey> order;
  for (const auto& part : CLI::detail::split(names, ',')) {
    std::string_view name = trimmed(part);
    const bool is_descending = name.starts_with('-');
    if (is_descending) name = trimmed(name.substr(1));
    order.push_back({parse_field(type, "--sort", std::string(name), headings_of(type)), is_descending});
  }
  return order;
}

records::FieldCondition parse_condition(const RecordType& type, const std::string& text) {
  const size_t at = std::min(text.find_first_of("!<=>"), text.size());
  std::string_view rest = std::string_view(text).substr(at);
  const auto relation = records::take_relation(rest);
  if (!relation) throw CLI::ValidationError("--where", "'" + text + "' is no FIELD=VALUE");
  const std::string name(trimmed(text.substr(0, at)));
  const size_t field = parse_field(type, "--where", name, headings_of(type));
  records::Condition condition{*relation, std::string(trimmed(rest))};
  if (!records::is_comparable(type.fields[field], condition))
    throw CLI::ValidationError("--where", "'" + text + "': '" + condition.value +
                                              "' is no number to compare " + type.fields[field].heading +
                                              " with");
  return {field, std::move(condition)};
}

}  // namespace

ViewOptionNames add_view_options(CommandTree& tree, CLI::App& command, const std::vector<std::string>& names,
                                 ViewOptions& options) {
  // An empty text names no column, and is told so.
  auto* columns = command.add_option_function<std::string>(
      "--columns", [&options](const std::string& text) { options.columns = text; },
      "Columns to print, by heading or key, separated by commas; or all");
  columns->type_name(kListType);
  tree.words[columns] = names;
  tree.words[columns].emplace_back(kAll);
  auto* sort = command.add_option_function<std::string>(
      "--sort", [&options](const std::string& text) { options.sort = text; },
      "Sort by these columns; downwards by one with a - in front");
  sort->type_name(kListType);
  tree.words[sort] = names;
  auto* where = command.add_option("--where", options.where,
                                   "Only rows in which it is so; also !=, <, <=, >, >=. May be repeated");
  where->type_name(kConditionType)
      ->expected(1)
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  tree.words[where] = names;
  return {columns, sort, where};
}

View parse_view(const RecordType& type, const ViewOptions& options, Selection columns) {
  View view{std::move(columns), {}};
  if (options.columns) view.columns = parse_columns(type, *options.columns);
  if (options.sort) view.arrangement.order = parse_order(type, *options.sort);
  for (const auto& each : options.where) view.arrangement.conditions.push_back(parse_condition(type, each));
  return view;
}

Selection parse_columns(const RecordType& type, std::string_view names) {
  auto known = headings_of(type);
  known.emplace_back(kAll);
  Selection selection;
  for (const auto& part : CLI::detail::split(std::string(names), ',')) {
    const std::string name(trimmed(part));
    if (strcasecmp(name.c_str(), kAll) == 0) {
      const auto all = records::all_fields(type);
      selection.insert(selection.end(), all.begin(), all.end());
    } else {
      selection.push_back(parse_field(type, "--columns", name, known));
    }
  }
  return selection;
}

std::vector<std::string> headings_of(const RecordType& type) {
  std::vector<std::string> headings;
  for (const auto& field : type.fields) headings.emplace_back(field.heading);
  return headings;
}

}  // namespace zymdb::tool
