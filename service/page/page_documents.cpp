#include "service/page/page_documents.h"

#include <utility>

#include "documents/json_value.h"
#include "documents/part_names.h"

namespace zymdb::service {
namespace {

using documents::Json;
using records::Attention;

const char* name_of(records::Role role) {
  switch (role) {
    case records::Role::kStable:
      return "stable";
    case records::Role::kIdentity:
      return "identity";
    case records::Role::kModel:
      return "model";
    case records::Role::kPlace:
      return "place";
    case records::Role::kState:
      return "state";
    case records::Role::kVolatile:
      return "volatile";
    case records::Role::kVersion:
      return "version";
    case records::Role::kRow:
      return "row";
  }
  return "";
}

const char* name_of(records::Kind kind) {
  switch (kind) {
    case records::Kind::kNumber:
      return "number";
    case records::Kind::kText:
      return "text";
    case records::Kind::kLongText:
      return "long text";
  }
  return "";
}

const char* name_of(Attention attention) {
  return attention == Attention::kWarning ? "warning" : "absent";
}

Json json_of(const records::FieldInfo& field) {
  return {{"key", field.key},
          {"heading", field.heading},
          {"meaning", field.meaning},
          {"unit", field.unit},
          {"kind", name_of(field.kind)},
          {"role", name_of(field.role)},
          {"hex_digits", field.hex_digits},
          {"is_shown", field.shown == records::Shown::kByDefault},
          {"is_derived", field.is_derived},
          {"is_amount", field.is_amount}};
}

Json attention_of(const documents::PartClass& of, const documents::Part& part) {
  Json found = Json::object();
  for (size_t i = 0; i < part.size(); ++i) {
    const Attention attention = records::attention_of(of.fields[i], part[i]);
    if (attention != Attention::kNone) found[of.fields[i].key] = name_of(attention);
  }
  return found;
}

Json json_of(const documents::PartClass& of) {
  const auto names = documents::part_names(of);
  Json parts = Json::array();
  for (size_t i = 0; i < of.parts.size(); ++i) {
    const documents::Part& part = of.parts[i];
    Json& json =
        parts.emplace_back(Json{{"name", names[i]}, {"place", of.place(part)}, {"model", of.model(part)}});
    if (of.is_vacant(part)) json["vacant"] = true;
    Json attention = attention_of(of, part);
    if (!attention.empty()) json["attention"] = std::move(attention);
  }
  return parts;
}

Json generation_of(std::optional<uint64_t> generation) {
  return generation ? Json(*generation) : Json();
}

std::string dumped(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string fields_json(const std::vector<documents::RecordType>& types) {
  Json classes = Json::array();
  for (const auto& type : types) {
    Json fields = Json::array();
    for (const auto& field : type.fields) fields.push_back(json_of(field));
    classes.push_back(
        {{"name", type.name}, {"description", type.description}, {"fields", std::move(fields)}});
  }
  return dumped({{"classes", std::move(classes)}});
}

std::string parts_json(const documents::Document& document) {
  Json classes = Json::object();
  for (const auto& of : document.classes) classes[of.name] = json_of(of);
  return dumped({{"generation", generation_of(document.generation)}, {"classes", std::move(classes)}});
}

std::string history_json(const std::vector<PastChange>& changes, std::optional<uint64_t> generation) {
  Json list = Json::array();
  for (const PastChange& each : changes) list.push_back(Json::parse(each.json));
  return dumped({{"generation", generation_of(generation)}, {"changes", std::move(list)}});
}

std::string error_json(const std::string& reason) {
  return dumped({{"error", reason}});
}

}  // namespace zymdb::service
