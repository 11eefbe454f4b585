#include "show/listing.h"

#include <strings.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace zymdb::tool {
namespace {

// The shape of a version never changes: new keys, and keys that mean something else, take a new version.
constexpr int kFormatVersion = 1;

template <class Predicate>
Selection select(const Listing& listing, Predicate wanted) {
  Selection selection;
  for (size_t i = 0; i < listing.columns.size(); ++i) {
    if (wanted(listing.columns[i])) selection.push_back(i);
  }
  return selection;
}

bool is_named(const ColumnInfo& column, const std::string& name) {
  return strcasecmp(column.heading, name.c_str()) == 0 ||
         (column.field != nullptr && strcasecmp(column.field, name.c_str()) == 0);
}

size_t find_column(const Listing& listing, const std::string& name) {
  const auto found = select(listing, [&](const ColumnInfo& column) { return is_named(column, name); });
  if (!found.empty()) return found.front();
  std::string known;
  for (const auto& column : listing.columns) known += std::string(", ") + column.heading;
  throw CLI::ValidationError("--columns", "unknown column '" + name + "'; the columns are all" + known);
}

nlohmann::ordered_json to_json(const Value& value) {
  if (const auto* number = std::get_if<uint64_t>(&value)) return *number;
  if (const auto* number = std::get_if<int64_t>(&value)) return *number;
  const auto& text = std::get<std::string>(value);
  return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

}  // namespace

Selection default_columns(const Listing& listing) {
  return select(listing, [](const ColumnInfo& column) { return column.shown == Shown::kByDefault; });
}

Selection record_fields(const Listing& listing) {
  return select(listing, [](const ColumnInfo& column) { return column.field != nullptr; });
}

Selection parse_columns(const Listing& listing, std::string_view names) {
  Selection selection;
  for (const auto& name : CLI::detail::split(std::string(names), ',')) {
    if (strcasecmp(name.c_str(), "all") == 0) {
      const auto all = select(listing, [](const ColumnInfo&) { return true; });
      selection.insert(selection.end(), all.begin(), all.end());
    } else {
      selection.push_back(find_column(listing, name));
    }
  }
  return selection;
}

std::string render_json(std::string_view name, const Sheet& sheet) {
  auto rows = nlohmann::ordered_json::array();
  for (const auto& cells : sheet.rows) {
    auto row = nlohmann::ordered_json::object();
    for (size_t i = 0; i < cells.size(); ++i) row[sheet.columns[i].field] = to_json(cells[i].value);
    rows.push_back(std::move(row));
  }
  nlohmann::ordered_json document{{"format_version", kFormatVersion}};
  document[std::string(name)] = std::move(rows);
  return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace zymdb::tool
