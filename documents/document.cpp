#include "documents/document.h"

#include <algorithm>

#include "common/client_extensions.h"
#include "common/client_objects.h"
#include "records/text.h"

namespace zymdb::documents {
namespace {

using records::Role;

std::string joined(const PartClass& of, const Part& part, Role role) {
  std::string text;
  for (size_t i = 0; i < of.fields.size(); ++i) {
    const FieldInfo& field = of.fields[i];
    if (field.role != role || field.shown != records::Shown::kByDefault) continue;
    const std::string value = records::text_of(field, part[i]);
    if (!value.empty()) text += (text.empty() ? "" : " ") + value;
  }
  return text;
}

// The first that is known, shown or not.
std::string first(const PartClass& of, const Part& part, Role role) {
  for (size_t i = 0; i < of.fields.size(); ++i) {
    if (of.fields[i].role == role && records::is_known(part[i])) return records::text_of(of.fields[i], part[i]);
  }
  return {};
}

}  // namespace

std::optional<size_t> PartClass::field(std::string_view key) const {
  const auto found = std::ranges::find(fields, key, &FieldInfo::key);
  if (found == fields.end()) return std::nullopt;
  return static_cast<size_t>(found - fields.begin());
}

std::vector<const Part*> PartClass::present() const {
  std::vector<const Part*> found;
  for (const Part& part : parts) {
    if (!is_vacant(part)) found.push_back(&part);
  }
  return found;
}

bool PartClass::is_vacant(const Part& part) const {
  for (size_t i = 0; i < fields.size(); ++i) {
    const auto* const text = std::get_if<std::string>(&part[i]);
    if (fields[i].is_derived && text != nullptr && *text == records::kEmpty) return true;
  }
  return false;
}

std::string PartClass::place(const Part& part) const {
  std::string text = joined(*this, part, Role::kPlace);
  return text.empty() ? first(*this, part, Role::kPlace) : text;
}

std::string PartClass::model(const Part& part) const {
  std::string text = joined(*this, part, Role::kModel);
  return text.empty() ? first(*this, part, Role::kModel) : text;
}

std::string PartClass::description(const Part& part) const {
  std::string text = model(part);
  const std::string identity = first(*this, part, Role::kIdentity);
  if (identity.empty()) return text;
  return text.empty() ? identity : text + " (" + identity + ")";
}

const PartClass* Document::find(std::string_view name) const {
  const auto found = std::ranges::find(classes, name, &PartClass::name);
  return found == classes.end() ? nullptr : &*found;
}

bool Document::is_empty() const {
  return std::ranges::all_of(classes, [](const PartClass& each) { return each.parts.empty(); });
}

Value normalized(const FieldInfo& field, const Value& value) {
  if (records::is_known(value) && field.is_wide_identifier()) return records::text_of(field, value);
  const auto* const number = std::get_if<int64_t>(&value);
  return number != nullptr && *number >= 0 ? Value(static_cast<uint64_t>(*number)) : value;
}

PartClass read_class(const RecordType& type) {
  const auto sheet = type.list(records::all_fields(type));
  PartClass of{type.name, sheet.fields, {}};
  for (const auto& row : sheet.rows) {
    Part& part = of.parts.emplace_back();
    for (size_t i = 0; i < row.size(); ++i) part.push_back(normalized(of.fields[i], row[i].value));
  }
  return of;
}

// Somebody may commit between two classes: then all is read again.
Document read_document(const std::vector<RecordType>& types) {
  constexpr int kTries = 10;
  for (int tries = 0; tries < kTries; ++tries) {
    Document document{inventory_generation(), {}};
    for (const auto& type : types) document.classes.push_back(read_class(type));
    if (inventory_generation() == document.generation) return document;
  }
  throw DatabaseError("cannot read the inventory: it keeps changing");
}

}  // namespace zymdb::documents
