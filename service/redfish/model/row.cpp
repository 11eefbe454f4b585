#include "service/redfish/model/row.h"

#include <charconv>

namespace zymdb::service::redfish {

using documents::Value;

const Value& Row::value(std::string_view key) const {
  static const Value kUnknown;
  const auto field = of_->field(key);
  return field && *field < part().size() ? part()[*field] : kUnknown;
}

std::optional<uint64_t> Row::number(std::string_view key) const {
  const Value& known = value(key);
  if (const auto* const number = std::get_if<uint64_t>(&known)) return *number;
  const auto* const is_signed = std::get_if<int64_t>(&known);
  if (is_signed != nullptr && *is_signed >= 0) return static_cast<uint64_t>(*is_signed);
  const auto* const text = std::get_if<std::string>(&known);
  if (text == nullptr || !text->starts_with("0x")) return {};
  uint64_t number = 0;
  const auto [end, error] = std::from_chars(text->data() + 2, text->data() + text->size(), number, 16);
  return error == std::errc() && end == text->data() + text->size() ? std::optional(number) : std::nullopt;
}

std::string Row::text(std::string_view key) const {
  const auto* const text = std::get_if<std::string>(&value(key));
  return text != nullptr ? *text : "";
}

std::optional<bool> Row::is_warned(std::initializer_list<std::string_view> keys) const {
  std::optional<bool> is_warned;
  for (const std::string_view key : keys) {
    const auto field = of_->field(key);
    if (!field || !records::is_known(value(key))) continue;
    const bool warns = records::attention_of(of_->fields[*field], value(key)) == records::Attention::kWarning;
    is_warned = is_warned.value_or(false) || warns;
  }
  return is_warned;
}

}  // namespace zymdb::service::redfish
