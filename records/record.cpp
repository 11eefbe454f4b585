#include "records/record.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>

namespace zymdb::records {
namespace {

template <class Predicate>
Selection select(const RecordType& type, Predicate wanted) {
  Selection selection;
  for (size_t i = 0; i < type.fields.size(); ++i) {
    if (wanted(type.fields[i])) selection.push_back(i);
  }
  return selection;
}

}  // namespace

Selection all_fields(const RecordType& type) {
  return select(type, [](const FieldInfo&) { return true; });
}

Selection default_fields(const RecordType& type) {
  return select(type, [](const FieldInfo& field) { return field.shown == Shown::kByDefault; });
}

std::optional<size_t> find_field(const RecordType& type, std::string_view name) {
  const std::string wanted(name);
  for (const auto part : {&FieldInfo::heading, &FieldInfo::key}) {
    const auto printed = select(type, [&](const FieldInfo& field) { return field.*part == wanted; });
    if (!printed.empty()) return printed.front();
  }
  for (const auto part : {&FieldInfo::heading, &FieldInfo::key}) {
    const auto named =
        select(type, [&](const FieldInfo& field) { return strcasecmp(field.*part, wanted.c_str()) == 0; });
    if (!named.empty()) return named.front();
  }
  return std::nullopt;
}

std::string text_of(const FieldInfo& field, const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  const auto* number = std::get_if<uint64_t>(&value);
  if (number == nullptr) return {};
  if (field.hex_digits == 0) return std::to_string(*number);
  char hex[20];
  std::snprintf(hex, sizeof hex, "0x%0*llx", static_cast<int>(field.hex_digits),
                static_cast<unsigned long long>(*number));
  return hex;
}

}  // namespace zymdb::records
