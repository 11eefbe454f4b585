// The schema of documents as JSON.
#include "documents/document_schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "documents/document_json.h"
#include "documents/documents.h"
#include "documents/inventory_types.h"
#include "records/json.h"

namespace zymdb::documents {
namespace {

using nlohmann::json;

std::vector<RecordType> types() {
  RecordType type;
  type.name = "modules";
  type.description = "Memory modules";
  FieldInfo number = field("Load", "LOAD", Role::kVolatile);
  number.kind = records::Kind::kNumber;
  number.meaning = "load";
  number.unit = "%";
  FieldInfo id = number;
  id.key = "Id";
  id.hex_digits = 16;
  id.unit = "";
  type.fields = {field("Place", "PLACE", Role::kPlace), number, id};
  return {type};
}

TEST(DocumentSchema, DescribesEachFieldAndRefusesOthers) {
  const json schema = json::parse(json_schema(types()));
  EXPECT_EQ(schema["$schema"], "https://json-schema.org/draft/2020-12/schema");
  EXPECT_EQ(schema["additionalProperties"], false);
  const json& modules = schema["properties"]["modules"];
  EXPECT_EQ(modules["description"], "Memory modules");
  const json& fields = modules["items"]["properties"];
  EXPECT_EQ(fields["Place"]["type"], json({"string", "null"}));
  const json load = {{"description", "load"}, {"type", {"integer", "null"}}, {"unit", "%"}};
  EXPECT_EQ(fields["Load"], load);
  EXPECT_EQ(fields["Id"]["type"], json({"string", "null"}));
  EXPECT_EQ(fields["Id"]["pattern"], "^0x[0-9a-f]{16}$");
  EXPECT_EQ(modules["items"]["required"], json({"Place", "Load", "Id"}));
  EXPECT_EQ(modules["items"]["additionalProperties"], false);
}

TEST(DocumentSchema, HasTheMembersOfADocument) {
  const auto all = inventory_types("");
  Document document;
  for (const RecordType& type : all) document.classes.push_back({type.name, type.fields, {}});
  const auto written = nlohmann::ordered_json::parse(to_json(document));
  const json schema = json::parse(json_schema(all));
  json members = json::array();
  for (const auto& [name, ignored] : written.items()) members.push_back(name);
  EXPECT_EQ(schema["required"], members);
  EXPECT_EQ(schema["properties"]["format_version"]["const"], records::kFormatVersion);
  EXPECT_EQ(schema["version"], records::kFormatVersion);
}

}  // namespace
}  // namespace zymdb::documents
