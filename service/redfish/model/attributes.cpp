#include "service/redfish/model/attributes.h"

#include <algorithm>
#include <charconv>

#include "documents/part_names.h"
#include "service/redfish/model/mapping.h"
#include "zymdb_pci_settings.h"

namespace zymdb::service::redfish {
namespace {

// The type code of numbers; texts and choices have others.
constexpr uint64_t kNumber = 1;

std::optional<int64_t> integer_of(const std::string& text) {
  int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_whole = error == std::errc() && end == text.data() + text.size();
  return is_whole && !text.empty() ? std::optional(number) : std::nullopt;
}

bool is_integer_or_unknown(const Row& setting, std::string_view key) {
  const std::string text = setting.text(key);
  return text.empty() || integer_of(text).has_value();
}

struct Bounds {
  int64_t least = 0;
  int64_t most = 0;
  int64_t step = 0;
};

// No bounds where both are 0.
std::optional<Bounds> bounds_of(const Row& setting) {
  const Bounds bounds{static_cast<int64_t>(setting.number("Minim").value_or(0)),
                      static_cast<int64_t>(setting.number("Maxim").value_or(0)),
                      static_cast<int64_t>(setting.number("Step").value_or(0))};
  return bounds.most > bounds.least ? std::optional(bounds) : std::nullopt;
}

// Set as a message's argument.
std::string shown(const Json& value) {
  const std::string text = value.is_string() ? value.get<std::string>() : text_of(value);
  return text.substr(0, 64);
}

NewValue refused(const Setting& setting, const Json& value, std::string_view key) {
  return {"", Message{key, {shown(value), setting.attribute}, "#/Attributes/" + setting.attribute}};
}

NewValue new_integer(const Setting& setting, const Json& value) {
  if (!value.is_number_integer()) return refused(setting, value, "PropertyValueTypeError");
  const bool is_too_large = value.is_number_unsigned() && value.get<uint64_t>() > INT64_MAX;
  const auto bounds = bounds_of(setting.row);
  const int64_t number = is_too_large ? 0 : value.get<int64_t>();
  const bool is_outside = bounds && (number < bounds->least || number > bounds->most ||
                                     (bounds->step > 1 && (number - bounds->least) % bounds->step != 0));
  if (is_too_large || is_outside) return refused(setting, value, "PropertyValueOutOfRange");
  return {std::to_string(number), {}};
}

NewValue new_text(const Setting& setting, const Json& value) {
  if (!value.is_string()) return refused(setting, value, "PropertyValueTypeError");
  const auto& text = value.get_ref<const std::string&>();
  if (type_of(setting.row) == AttributeType::kEnumeration) {
    const auto choices = choices_of(setting.row);
    if (std::ranges::find(choices, text) == choices.end())
      return refused(setting, value, "PropertyValueNotInList");
  }
  // The library's statements hold it between single quotes, and its entries have no more room.
  const bool fits = text.size() < sizeof(ZYMDB_PCI_Config_Set::PendingValue) &&
                    text.find('\'') == std::string::npos && text.find('\0') == std::string::npos;
  return fits ? NewValue{text, {}} : refused(setting, value, "PropertyValueFormatError");
}

}  // namespace

AttributeType type_of(const Row& setting) {
  if (!choices_of(setting).empty()) return AttributeType::kEnumeration;
  const bool has_numbers = setting.number("Type") == kNumber &&
                           is_integer_or_unknown(setting, "CurrentValue") &&
                           is_integer_or_unknown(setting, "PendingValue");
  return has_numbers ? AttributeType::kInteger : AttributeType::kText;
}

std::vector<std::string> choices_of(const Row& setting) {
  std::vector<std::string> choices;
  const std::string text = setting.text("Choices");
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find(';', begin), text.size());
    if (end > begin) choices.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return choices;
}

Json attribute_value(const Row& setting, std::string_view key) {
  const std::string text = setting.text(key);
  if (text.empty()) return nullptr;
  if (type_of(setting) != AttributeType::kInteger) return documents::utf8_text(text);
  const auto number = integer_of(text);
  return number ? Json(*number) : Json();
}

Json attribute_entry(const Setting& setting) {
  constexpr const char* kTypes[] = {"String", "Integer", "Enumeration"};
  const Row& row = setting.row;
  const AttributeType type = type_of(row);
  Json entry{{"AttributeName", setting.attribute},
             {"Type", kTypes[static_cast<size_t>(type)]},
             {"ReadOnly", false},
             {"ResetRequired", true}};
  fill(entry, row, mappings_of("AttributeRegistry", "settings"));
  if (Json value = attribute_value(row, "Defvalue"); !value.is_null()) entry["DefaultValue"] = value;
  for (const std::string& choice : choices_of(row)) {
    const std::string name = documents::utf8_text(choice);
    entry["Value"].push_back({{"ValueName", name}, {"ValueDisplayName", name}});
  }
  const auto bounds = type == AttributeType::kInteger ? bounds_of(row) : std::nullopt;
  if (bounds) entry["LowerBound"] = bounds->least;
  if (bounds) entry["UpperBound"] = bounds->most;
  if (bounds && bounds->step > 0) entry["ScalarIncrement"] = bounds->step;
  return entry;
}

NewValue new_value(const Setting& setting, const Json& value) {
  return type_of(setting.row) == AttributeType::kInteger ? new_integer(setting, value)
                                                         : new_text(setting, value);
}

}  // namespace zymdb::service::redfish
