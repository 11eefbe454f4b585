// Documents as bills of materials.
#include "documents/document_cyclonedx.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "documents/documents.h"

namespace zymdb::documents {
namespace {

using nlohmann::json;
using records::Nature;
using records::Tells;
using testing::ElementsAre;

FieldInfo telling(Tells what, const char* key, Role role) {
  FieldInfo info = field(key, key, role);
  info.tells = what;
  return info;
}

RecordType type_of(const char* name, const std::vector<FieldInfo>& fields, Nature nature = Nature::kDevice) {
  RecordType type;
  type.name = name;
  type.fields = fields;
  type.nature = nature;
  return type;
}

// A machine, cards, functions, ports, firmware and settings, of as few fields as say where they belong.
std::vector<RecordType> types() {
  return {type_of("system",
                  {telling(Tells::kName, "Model", Role::kModel), field("SerialNo", "", Role::kIdentity),
                   telling(Tells::kCollected, "At", Role::kVolatile)},
                  Nature::kMachine),
          type_of("cards", {telling(Tells::kPosition, "Place", Role::kPlace),
                            telling(Tells::kFirstFunction, "Address", Role::kPlace),
                            telling(Tells::kMaker, "Maker", Role::kStable),
                            telling(Tells::kFirmware, "Firmware", Role::kStable)}),
          type_of("functions", {telling(Tells::kOwnFunction, "Address", Role::kPlace),
                                telling(Tells::kPosition, "Place", Role::kStable)}),
          type_of("ports",
                  {field("Index", "", Role::kPlace), telling(Tells::kFunction, "Function", Role::kStable),
                   field("Link", "", Role::kState), field("Row", "", Role::kRow)}),
          type_of("firmware",
                  {telling(Tells::kName, "Name", Role::kPlace),
                   telling(Tells::kVersion, "Version", Role::kStable),
                   telling(Tells::kPosition, "Place", Role::kStable)},
                  Nature::kFirmware),
          type_of("settings", {field("Name", "", Role::kPlace)}, Nature::kLogical)};
}

using Rows = std::vector<std::vector<std::string>>;

// The rows of the types, in their order; an empty text is not known.
json bill(const std::vector<Rows>& classes, std::optional<uint64_t> generation = 1) {
  Document document{generation, {}};
  const auto all = types();
  for (size_t i = 0; i < all.size(); ++i) {
    PartClass of{all[i].name, all[i].fields, {}};
    for (const auto& row : i < classes.size() ? classes[i] : Rows()) {
      Part& part = of.parts.emplace_back();
      for (const std::string& text : row) part.push_back(text_or_unknown(text));
    }
    document.classes.push_back(of);
  }
  return json::parse(to_cyclonedx(document, all));
}

// "cards:slot 1[functions:0000:01:00.0[ports:0]]".
std::string outline(const json& components) {
  std::string text;
  for (const json& each : components) {
    text += (text.empty() ? "" : " ") + each["bom-ref"].get<std::string>();
    if (each.contains("components")) text += "[" + outline(each["components"]) + "]";
  }
  return text;
}

std::string outline_of(const std::vector<Rows>& classes) {
  return outline(bill(classes)["components"]);
}

TEST(DocumentCycloneDx, HasTheMachineForItsSubject) {
  const json whole = bill({{{"Server 1", "s1", "1767225600"}}});
  EXPECT_EQ(whole["metadata"]["component"]["name"], "Server 1");
  EXPECT_EQ(whole["metadata"]["component"]["type"], "device");
  EXPECT_EQ(whole["metadata"]["timestamp"], "2026-01-01T00:00:00Z");
  EXPECT_EQ(whole["components"], json::array());
}

TEST(DocumentCycloneDx, OfNoMachineHasNoSubjectAndNoTime) {
  const json whole = bill({});
  EXPECT_FALSE(whole["metadata"].contains("component"));
  EXPECT_FALSE(whole["metadata"].contains("timestamp"));
  EXPECT_EQ(whole["metadata"]["tools"]["components"][0]["name"], "zymdb");
}

TEST(DocumentCycloneDx, PutsFunctionsInCardsAndPortsInFunctions) {
  EXPECT_EQ(outline_of({{},
                        {{"slot 1", "0000:01:00.0", "", ""}},
                        {{"0000:01:00.0", "slot 1"}, {"0000:01:00.1", "slot 1"}, {"0000:02:00.0", "slot 2"}},
                        {{"p", "0000:01:00.1", "", ""}, {"q", "0000:07:00.0", "", ""}}}),
            "cards:slot 1 0000:01:00.0[functions:0000:01:00.0 functions:0000:01:00.1[ports:p]] "
            "functions:0000:02:00.0 ports:q");
}

TEST(DocumentCycloneDx, PutsWhatIsBehindACardsBridgeIntoTheCard) {
  EXPECT_EQ(outline_of({{}, {{"slot 1", "0000:01:00.0", "", ""}}, {{"0000:02:00.0", "slot 1"}}}),
            "cards:slot 1 0000:01:00.0[functions:0000:02:00.0]");
}

TEST(DocumentCycloneDx, KnowsDevicesOnTheBoardByTheirAddressOnly) {
  EXPECT_EQ(outline_of({{},
                        {{"on board", "0000:04:00.0", "", ""}},
                        {{"0000:04:00.1", "on board"}, {"0000:00:00.0", "on board"}}}),
            "cards:on board 0000:04:00.0[functions:0000:04:00.1] functions:0000:00:00.0");
}

TEST(DocumentCycloneDx, TakesNoneOfTwoCardsInOnePosition) {
  EXPECT_EQ(
      outline_of({{},
                  {{"slot 1", "0000:01:00.0", "", ""}, {"slot 1", "0000:03:00.0", "", ""}},
                  {{"0000:02:00.0", "slot 1"}, {"0000:03:00.1", "slot 1"}}}),
      "cards:slot 1 0000:01:00.0 cards:slot 1 0000:03:00.0[functions:0000:03:00.1] functions:0000:02:00.0");
}

TEST(DocumentCycloneDx, PutsFirmwareIntoItsCardAndItsVersionWithIt) {
  const json whole =
      bill({{}, {{"slot 1", "0000:01:00.0", "A maker", "1.2"}}, {}, {}, {{"fw", "3.4", "slot 1"}}});
  EXPECT_EQ(outline(whole["components"]),
            "cards:slot 1 0000:01:00.0[cards:slot 1 0000:01:00.0/firmware firmware:fw]");
  const json& card = whole["components"][0];
  EXPECT_EQ(card["manufacturer"]["name"], "A maker");
  EXPECT_EQ(card["components"][0]["version"], "1.2");
  EXPECT_EQ(card["components"][0]["type"], "firmware");
  EXPECT_EQ(card["components"][1]["version"], "3.4");
  EXPECT_EQ(card["components"][1]["type"], "firmware");
  EXPECT_EQ(card["type"], "device");
}

TEST(DocumentCycloneDx, LeavesOutWhatIsNoPartAndHowPartsAreAtTheMoment) {
  const json whole = bill({{}, {}, {}, {{"p", "", "up", "7"}}, {}, {{"a setting"}}});
  EXPECT_EQ(outline(whole["components"]), "ports:p");
  const json expected = {{{"name", "zymdb:ports:Index"}, {"value", "p"}}};
  EXPECT_EQ(whole["components"][0]["properties"], expected);
}

TEST(DocumentCycloneDx, HasNoVacantPositions) {
  RecordType type;
  type.name = "modules";
  type.fields = fields();
  const json whole = json::parse(to_cyclonedx(document({{.size = "empty"}, {.place = "A2"}}), {type}));
  EXPECT_EQ(outline(whole["components"]), "modules:A2");
}

TEST(DocumentCycloneDx, HasOneSerialNumberForAMachineAndAVersionForItsGeneration) {
  const json once = bill({{{"Server 1", "s1", "1"}}}, 3);
  const json later = bill({{{"Server 1", "s1", "9"}}, {{"slot 1", "0000:01:00.0", "", ""}}}, 4);
  EXPECT_EQ(once["serialNumber"], later["serialNumber"]);
  EXPECT_EQ(once["version"], 3);
  EXPECT_EQ(later["version"], 4);
  EXPECT_NE(once["serialNumber"], bill({{{"Server 1", "s2", "1"}}}, 3)["serialNumber"]);
  EXPECT_EQ(bill({}, 0)["version"], 1);
  EXPECT_EQ(bill({}, std::nullopt)["version"], 1);
}

// Computed by another implementation of name-based identifiers.
TEST(DocumentCycloneDx, HasASerialNumberThatOthersCanCompute) {
  EXPECT_EQ(bill({{{"Server 1", "s1", "1"}}})["serialNumber"],
            "urn:uuid:812efa83-1cc0-5a2d-bedc-05c48dfb1ad7");
}

TEST(DocumentCycloneDx, OfAMachineThatNothingIdentifiesHasTheSerialNumberOfItsContent) {
  const std::vector<Rows> one = {{{"Server 1", "", ""}}, {{"slot 1", "0000:01:00.0", "", ""}}};
  const std::vector<Rows> other = {{{"Server 1", "", ""}}, {{"slot 2", "0000:01:00.0", "", ""}}};
  EXPECT_EQ(bill(one, 1)["serialNumber"], bill(one, 2)["serialNumber"]);
  EXPECT_NE(bill(one)["serialNumber"], bill(other)["serialNumber"]);
}

TEST(DocumentCycloneDx, KeepsTextsAsUtf8) {
  const json whole = bill({{}, {}, {}, {{"<script>\"\\\n\xff", "", "", ""}}});
  EXPECT_EQ(whole["components"][0]["bom-ref"], "ports:<script>\"\\\n\xEF\xBF\xBD");
  EXPECT_EQ(whole["components"][0]["properties"][0]["value"], "<script>\"\\\n\xEF\xBF\xBD");
}

}  // namespace
}  // namespace zymdb::documents
