// Values between documents and JSON.
#ifndef ZYMDB_DOCUMENTS_JSON_VALUE_H
#define ZYMDB_DOCUMENTS_JSON_VALUE_H

#include <nlohmann/json.hpp>
#include <type_traits>

#include "records/value.h"

namespace zymdb::documents {

using Json = nlohmann::ordered_json;

inline Json json_of_value(const records::Value& value) {
  return std::visit(
      [](const auto& content) -> Json {
        if constexpr (std::is_same_v<decltype(content), const std::monostate&>)
          return nullptr;
        else
          return content;
      },
      value);
}

// Of a number, a text or null.
inline records::Value value_of(const Json& json) {
  if (json.is_string()) return json.get<std::string>();
  if (json.is_number_unsigned()) return json.get<uint64_t>();
  if (json.is_number_integer()) return json.get<int64_t>();
  return {};
}

}  // namespace zymdb::documents

#endif
