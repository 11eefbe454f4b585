#include "records/json.h"

#include <nlohmann/json.hpp>

namespace zymdb::records {
namespace {

using Json = nlohmann::ordered_json;

Json json_of(const FieldInfo& field, const Value& value) {
  if (!is_known(value)) return nullptr;
  if (field.is_wide_identifier()) return text_of(field, value);
  return std::visit(
      [](const auto& content) -> Json {
        if constexpr (std::is_same_v<decltype(content), const std::monostate&>)
          return nullptr;
        else
          return content;
      },
      value);
}

}  // namespace

std::string to_json(std::string_view name, const Sheet& sheet) {
  auto rows = Json::array();
  for (const auto& cells : sheet.rows) {
    auto row = Json::object();
    for (size_t i = 0; i < cells.size(); ++i)
      row[sheet.fields[i].key] = json_of(sheet.fields[i], cells[i].value);
    rows.push_back(std::move(row));
  }
  Json document{{"format_version", kFormatVersion}};
  document[std::string(name)] = std::move(rows);
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace zymdb::records
