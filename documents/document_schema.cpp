#include "documents/document_schema.h"

#include "documents/document_json.h"
#include "documents/json_value.h"
#include "records/json.h"

namespace zymdb::documents {
namespace {

using records::FieldInfo;
using records::Kind;
using records::RecordType;

// Every field may be null: nobody knows.
Json schema_of(const FieldInfo& field) {
  const bool is_number = field.kind == Kind::kNumber && !field.is_wide_identifier();
  Json schema{{"description", field.meaning}, {"type", {is_number ? "integer" : "string", "null"}}};
  if (field.is_wide_identifier()) schema["pattern"] = "^0x[0-9a-f]{" + std::to_string(field.hex_digits) + "}$";
  if (field.unit[0] != '\0') schema["unit"] = field.unit;
  return schema;
}

Json closed_object(const Json& properties) {
  Json required = Json::array();
  for (const auto& [key, ignored] : properties.items()) required.push_back(key);
  return {{"type", "object"}, {"properties", properties}, {"required", required}, {"additionalProperties", false}};
}

Json schema_of(const RecordType& type) {
  Json fields = Json::object();
  for (const FieldInfo& field : type.fields) fields[field.key] = schema_of(field);
  return {{"description", type.description}, {"type", "array"}, {"items", closed_object(fields)}};
}

}  // namespace

std::string json_schema(const std::vector<RecordType>& types) {
  Json members{
      {kFormatVersionKey, {{"description", "version of the document's shape"}, {"const", records::kFormatVersion}}},
      {kZymdbVersionKey, {{"description", "version of the program that wrote it"}, {"type", "string"}}},
      {kGenerationKey,
       {{"description", "how often the inventory had changed; null where it does not count"},
        {"type", {"integer", "null"}},
        {"minimum", 0}}}};
  for (const RecordType& type : types) members[type.name] = schema_of(type);
  const std::string version = std::to_string(records::kFormatVersion);
  Json schema{{"$schema", "https://json-schema.org/draft/2020-12/schema"},
              {"$id", "urn:zymdb:inventory:" + version},
              {"title", "Hardware inventory of a server, version " + version},
              {"version", records::kFormatVersion}};
  schema.update(closed_object(members));
  return schema.dump(2) + "\n";
}

}  // namespace zymdb::documents
