// Documents as JSON, and what is no document.
#include "documents/document_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/source_file.h"
#include "documents/difference.h"
#include "documents/documents.h"

namespace zymdb::documents {
namespace {

using testing::HasSubstr;

std::vector<RecordType> types() {
  RecordType type;
  type.name = "modules";
  type.fields = fields();
  return {type};
}

std::string error_of(const std::string& text) {
  try {
    parse_document(text, "export.json", types());
  } catch (const SourceError& error) {
    return error.what();
  }
  return "parsed";
}

TEST(DocumentJson, ReadsBackAsItWas) {
  Document document = zymdb::documents::document({{}, {.place = "A2", .serial = "", .load = UINT64_MAX}});
  document.generation = 12;
  const Document again = parse_document(to_json(document), "export.json", types());
  EXPECT_EQ(again.generation, 12u);
  ASSERT_EQ(again.classes.size(), 1u);
  EXPECT_EQ(again.classes.front().parts, document.classes.front().parts);
}

TEST(DocumentJson, TakesAListingAsItIs) {
  const Document document =
      parse_document(R"({"format_version":2,"modules":[{"Place":"A1","Load":-1}]})", "listing.json", types());
  const PartClass& of = document.classes.front();
  EXPECT_EQ(of.place(of.parts.front()), "A1");
  EXPECT_EQ(of.parts.front()[*of.field("Load")], Value(int64_t{-1}));
  EXPECT_EQ(of.parts.front()[*of.field("Model")], Value());
}

TEST(DocumentJson, TellsWhatIsNoDocument) {
  struct Case {
    const char* text;
    const char* reason;
  };
  const Case cases[] = {
      {"", "not JSON, or cut short"},
      {"{\"format_version\":2,\"modules\":[{", "not JSON, or cut short"},
      {"[]", "not a document of an inventory"},
      {"{}", "not a document of an inventory"},
      {"{\"format_version\":\"2\"}", "not a document of an inventory"},
      {"{\"format_version\":99}", "its format_version 99 is newer than this program's 2"},
      {"{\"format_version\":2,\"wheels\":[]}", "an inventory has no 'wheels'"},
      {"{\"format_version\":2,\"modules\":{}}", "'modules' is no array"},
      {"{\"format_version\":2,\"modules\":[7]}", "'modules' has an element that is no object"},
      {"{\"format_version\":2,\"modules\":[{\"Wheels\":4}]}", "'modules' has no field 'Wheels'"},
      {"{\"format_version\":2,\"modules\":[{\"Load\":[]}]}", "'modules.Load' is neither number nor text"},
      {"{\"format_version\":2,\"modules\":[{\"Load\":1.5}]}", "'modules.Load' is neither number nor text"},
  };
  for (const Case& each : cases) EXPECT_EQ(error_of(each.text), std::string("export.json: ") + each.reason);
}

TEST(DocumentJson, ThatIsCutAnywhereIsNoDocument) {
  const std::string whole = to_json(document({{}, {.place = "A2"}}));
  for (size_t size = 0; size + 2 < whole.size(); ++size)
    EXPECT_THAT(error_of(whole.substr(0, size)), HasSubstr("cut short")) << size;
}

}  // namespace
}  // namespace zymdb::documents
