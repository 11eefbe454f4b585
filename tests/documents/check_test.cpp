// Whether a server is what it should be.
#include "documents/check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/source_file.h"
#include "documents/check_json.h"
#include "documents/check_junit.h"
#include "documents/documents.h"
#include "documents/draft.h"

namespace zymdb::documents {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr records::Value kNothing;

// Modules, and the links of functions.
std::vector<FieldInfo> link_fields() {
  FieldInfo state = field("LinkState", "LINKSTATE", Role::kState);
  state.judge = [](const Value& value) {
    return value == Value("reduced") ? records::Attention::kWarning : records::Attention::kNone;
  };
  return {field("Address", "ADDRESS", Role::kPlace), state, field("Link", "LINK", Role::kState)};
}

std::vector<RecordType> types() {
  return {{"modules", "", fields(), {}}, {"functions", "", link_fields(), {}}};
}

Document with_links(Document document, const std::vector<Part>& functions) {
  document.classes.push_back({"functions", link_fields(), functions});
  return document;
}

std::vector<Expectation> parsed(const std::string& text) {
  return parse_expectations("format_version = 1\n" + text, "server.toml", types());
}

std::vector<std::string> failures(const std::string& text, const Document& of) {
  std::vector<std::string> texts;
  for (const Verdict& verdict : check(parsed(text), of)) {
    for (const Failure& failure : verdict.failures) texts.push_back(verdict.title + " | " + text_of(failure));
  }
  return texts;
}

std::vector<std::string> failures(const std::string& text, const std::vector<Module>& modules) {
  return failures(text, document(modules));
}

const Module kOne{.firmware = "1.9"};
const Module kTwo{.place = "A2", .serial = "s2", .model = "m2", .firmware = "1.10"};
const Module kEmptySocket{.place = "A3", .serial = "", .model = "", .size = "empty"};

TEST(Check, CountsParts) {
  const std::vector<Module> modules{kOne, kTwo, kEmptySocket};
  EXPECT_THAT(failures("modules.count = 2", modules), IsEmpty());
  EXPECT_THAT(failures("modules.count = '>= 2'", modules), IsEmpty());
  EXPECT_THAT(failures("modules.count = 3", modules), ElementsAre("count | expected 3 parts, found 2 parts"));
  EXPECT_THAT(failures("modules.count = '< 2'", modules),
              ElementsAre("count | expected < 2 parts, found 2 parts"));
  EXPECT_THAT(failures("modules.count = 1", modules), ElementsAre("count | expected 1 part, found 2 parts"));
}

TEST(Check, CountsPartsOfAModel) {
  const std::vector<Module> modules{kOne, kTwo, {.place = "A4", .serial = "s4", .model = "m2"}, kEmptySocket};
  EXPECT_THAT(failures("modules.models = { m1 = 1, m2 = 2, m3 = 0, 'm2 32 GiB' = 2, M1 = 1 }", modules),
              IsEmpty());
  EXPECT_THAT(failures("modules.models = { m2 = 1, m3 = '> 0' }", modules),
              ElementsAre("model m2 | m2: expected 1 part, found 2 parts",
                          "model m3 | m3: expected > 0 parts, found 0 parts"));
}

TEST(Check, LooksAtEveryPartOfAModel) {
  EXPECT_THAT(failures("modules.models.m2 = { Firmware = '>= 1.10' }", {kOne, kTwo}), IsEmpty());
  EXPECT_THAT(failures("modules.models.m2 = { count = 2, Firmware = '>= 2' }", {kOne, kTwo}),
              ElementsAre("model m2 | m2: expected 2 parts, found 1 part",
                          "model m2 | A2: expected FIRMWARE >= 2, found 1.10"));
}

TEST(Check, LooksAtEveryPart) {
  EXPECT_THAT(failures("modules.all = { Firmware = '>= 1.9', Health = 'ok' }", {kOne, kTwo}), IsEmpty());
  EXPECT_THAT(failures("modules.all = { Firmware = '>= 1.10', Model = 'M1' }", {kOne, kTwo, kEmptySocket}),
              ElementsAre("every part | A1: expected FIRMWARE >= 1.10, found 1.9",
                          "every part | A2: expected MODEL M1, found m2"));
}

TEST(Check, TellsWhatIsNotKnown) {
  EXPECT_THAT(failures("modules.all = { Firmware = '>= 1' }", {Module{}}),
              ElementsAre("every part | A1: expected FIRMWARE >= 1, found not known"));
  EXPECT_THAT(failures("modules.all = { Serial = '' }", {Module{}}),
              ElementsAre("every part | A1: expected SERIAL not known, found s1"));
}

TEST(Check, LooksAtPlaces) {
  EXPECT_THAT(failures("[modules.at]\nA1 = { Model = 'm1' }\na2 = { MODEL = 'm2', row = 1 }\nA3 = 'empty'",
                       {kOne, kTwo, kEmptySocket}),
              IsEmpty());
  EXPECT_THAT(failures("[modules.at]\nA1 = { Model = 'm2', Size = '32 GiB' }\nA2 = 'empty'\nA3 = {}\n"
                       "A9 = { Model = 'm1', Firmware = '>= 1' }",
                       {kOne, kTwo, kEmptySocket}),
              ElementsAre("at A1 | A1: expected MODEL m2, found m1",
                          "at A2 | A2: expected empty, found m2 32 GiB (s2)",
                          "at A3 | A3: expected a part, found nothing",
                          "at A9 | A9: expected MODEL m1, FIRMWARE >= 1, found nothing"));
}

// Whichever of them the inventory has first, and however many conditions one meets.
TEST(Check, FindsEachOfSeveralPartsInOnePlace) {
  const Module newer{.serial = "s2", .firmware = "2"}, older{.serial = "s1", .firmware = "1"};
  const char* const both = "modules.at.A1 = [ { Firmware = '>= 1' }, { Firmware = '>= 2' } ]";
  EXPECT_THAT(failures(both, {newer, older}), IsEmpty());
  EXPECT_THAT(failures(both, {older, newer}), IsEmpty());
  EXPECT_THAT(failures(both, {older, older}), ElementsAre("at A1 | A1: expected FIRMWARE >= 2, found 1"));
  EXPECT_THAT(failures(both, {newer}), ElementsAre("at A1 | A1: expected FIRMWARE >= 2, found nothing"));
}

TEST(Check, TellsOfHealth) {
  const Module sick{.place = "A2", .health = "bad"};
  EXPECT_THAT(failures("modules.healthy = true", {kOne, kTwo}), IsEmpty());
  EXPECT_THAT(failures("modules.healthy = true", {kOne, sick}),
              ElementsAre("healthy | A2: expected healthy, found HEALTH bad"));
  EXPECT_THAT(failures("modules.healthy = { except = ['a2'] }", {kOne, sick}), IsEmpty());
  EXPECT_THAT(failures("modules.healthy = { except = ['A1'] }", {kOne, sick}), SizeIs(1));
  EXPECT_THAT(failures("modules.healthy = false\nmodules.count = 2", {kOne, sick}), IsEmpty());
}

TEST(Check, TellsOfLinksThatAreLessThanTheyCouldBe) {
  const Document of = with_links(document({}), {{"0000:01:00.0", "full", "x4/16 gen3"},
                                                {"0000:02:00.0", "reduced", "x8/16 gen3/4"},
                                                {"0000:03:00.0", "down", kNothing}});
  EXPECT_THAT(failures("functions.full_links = true", of),
              ElementsAre("full links | 0000:02:00.0: expected a full link, found x8/16 gen3/4"));
  EXPECT_THAT(failures("functions.full_links = { except = ['0000:02:00.0'] }", of), IsEmpty());
}

TEST(Check, TellsOfASerialNumberThatSeveralPartsHave) {
  const Module twin{.place = "A2", .model = "m2"}, nameless{.place = "A3", .serial = ""};
  EXPECT_THAT(failures("modules.unique = true", {kOne, kTwo, nameless, nameless}), IsEmpty());
  EXPECT_THAT(failures("modules.unique = true", {kOne, twin}),
              ElementsAre("unique | A1, A2: expected SERIAL once, found s1 2 times"));
  EXPECT_THAT(failures("modules.unique = { except = ['s1'] }", {kOne, twin}), IsEmpty());
  EXPECT_THAT(failures("modules.unique = { except = ['A1'] }", {kOne, twin}), SizeIs(1));
}

TEST(Check, NamesTheClassesThatADocumentDoesNotTellOf) {
  const auto expectations = parsed("modules.count = 0\nfunctions.full_links = true\nfunctions.count = 1");
  EXPECT_THAT(missing_classes(expectations, document({})), ElementsAre("functions"));
  EXPECT_THAT(missing_classes(expectations, with_links(document({}), {})), IsEmpty());
}

struct Wrong {
  const char* text;
  const char* told;
};

const Wrong kWrongs[] = {
    {"modules = {", "server.toml, line 2: "},
    {"modules.count = 1\nmodules.count = 2", "server.toml, line 3: "},
    {"modulse.count = 1", "server.toml, line 2: unknown class 'modulse'; there are modules, functions"},
    {"\n\nmodules = 3", "server.toml, line 4: 'modules' is no table"},
    {"[modules]\ncounts = 1",
     "server.toml, line 3: unknown expectation 'counts'; there are count, healthy, full_links, "
     "unique, all, at, models"},
    {"modules.count = 'many'", "server.toml, line 2: 'count' is no number of parts"},
    {"modules.count = 1.5", "server.toml, line 2: 'count' is neither a whole number nor a text in quotes"},
    {"modules.all = { Modell = 'm1' }",
     "server.toml, line 2: modules have no field 'Modell'; there are Place, Serial, "
     "Model, Size, Health, Load, Row, Detail, Firmware"},
    {"modules.all = { Firmware = 1.20 }",
     "server.toml, line 2: 'Firmware' is neither a whole number nor a text in quotes"},
    {"modules.all = { Row = '>= x' }", "server.toml, line 2: 'Row' cannot be >= 'x'"},
    {"modules.all = { Firmware = '>=' }", "server.toml, line 2: 'Firmware' cannot be >= ''"},
    {"modules.all = 'm1'", "server.toml, line 2: 'all' is no table"},
    {"[modules.at]\nA1 = 'm1'", "server.toml, line 3: what is at 'A1' is neither a table nor \"empty\""},
    {"[modules.at]\nA1 = [1]", "server.toml, line 3: what is at 'A1' is neither a table nor \"empty\""},
    {"[modules.models]\nm1 = { count = 'x' }", "server.toml, line 3: 'count' is no number of parts"},
    {"modules.healthy = 1", "server.toml, line 2: 'healthy' is no table"},
    {"modules.healthy = { but = ['A1'] }", "server.toml, line 2: unknown 'but'; there is except"},
    {"modules.healthy = { except = 'A1' }", "server.toml, line 2: 'except' is no array of texts"},
    {"modules.healthy = { except = ['A1', 1] }", "server.toml, line 2: 'except' is no array of texts"},
    {"modules.full_links = true",
     "server.toml, line 2: modules have nothing that 'full_links' could be told by"},
    {"functions.unique = true", "server.toml, line 2: functions have nothing that 'unique' could be told by"},
    {"", "server.toml: nothing is expected"},
    {"modules.healthy = false", "server.toml: nothing is expected"},
};

std::string objection(const std::string& text) {
  try {
    parse_expectations(text, "server.toml", types());
  } catch (const SourceError& error) {
    return error.what();
  }
  return "none";
}

TEST(Expectations, ThatAreWrongAreToldInOneLineWithTheirPlace) {
  for (const auto& [text, told] : kWrongs) {
    const std::string said = objection("format_version = 1\n" + std::string(text));
    EXPECT_THAT(said, testing::StartsWith(told)) << text;
    EXPECT_THAT(said, testing::Not(HasSubstr("\n"))) << text;
  }
}

TEST(Expectations, BearTheirVersion) {
  EXPECT_EQ(objection("modules.count = 1"),
            "server.toml: not a file of expectations: it has no format_version");
  EXPECT_EQ(objection("\nformat_version = 2"), "server.toml, line 2: format_version 2; this program knows 1");
  EXPECT_EQ(objection("{\"format_version\":1}").substr(0, 20), "server.toml, line 1:");
  EXPECT_EQ(objection(std::string("format_version = 1\n# \xff")).substr(0, 20), "server.toml, line 2:");
}

TEST(Expectations, ComeInTheOrderOfTheText) {
  std::vector<std::string> titles;
  for (const auto& each : parsed("modules.unique = true\nfunctions.count = 1\n[modules.at]\nB = {}\nA = {}"))
    titles.push_back(each.part_class + " " + title_of(each));
  EXPECT_THAT(titles, ElementsAre("modules unique", "modules at B", "modules at A", "functions count"));
}

std::vector<std::string> own_failures(const Document& of) {
  std::vector<std::string> texts;
  for (const Verdict& verdict : check(parse_expectations(draft(of), "draft", types()), of)) {
    for (const Failure& failure : verdict.failures) texts.push_back(text_of(failure));
  }
  return texts;
}

TEST(Draft, HasEveryPartOnALineOfItsOwn) {
  EXPECT_THAT(draft(document({kOne, kTwo, kEmptySocket})),
              testing::EndsWith("\nformat_version = 1\n"
                                "\n[modules]\ncount = 2\nhealthy = true\nunique = true\n"
                                "\n[modules.at]\n"
                                "\"A1\" = { Model = \"m1\", Size = \"32 GiB\", Firmware = \">= 1.9\" }\n"
                                "\"A2\" = { Model = \"m2\", Size = \"32 GiB\", Firmware = \">= 1.10\" }\n"));
}

TEST(Draft, LeavesOutWhatIsNotAsItShouldBe) {
  const Document of =
      with_links(document({{.health = "bad"}, {.place = "A2"}}), {{"0000:02:00.0", "reduced", "x8/16"}});
  EXPECT_THAT(draft(of), HasSubstr("healthy = { except = [\"A1\"] }\nunique = { except = [\"s1\"] }\n"));
  EXPECT_THAT(draft(of), HasSubstr("[functions]\nfull_links = { except = [\"0000:02:00.0\"] }\n"));
  EXPECT_THAT(own_failures(of), IsEmpty());
}

TEST(Draft, HasEachOfSeveralPartsInOnePlace) {
  const Module newer{.serial = "s2", .firmware = "2"};
  EXPECT_THAT(draft(document({kOne, newer})),
              HasSubstr("\"A1\" = [\n"
                        "  { Model = \"m1\", Size = \"32 GiB\", Firmware = \">= 1.9\" },\n"
                        "  { Model = \"m1\", Size = \"32 GiB\", Firmware = \">= 2\" },\n"
                        "]\n"));
  EXPECT_THAT(own_failures(document({newer, kOne})), IsEmpty());
}

TEST(Draft, ExpectsNoSerialNumber) {
  Document other = document({{.serial = "s7", .firmware = "1.9"}});
  const auto expectations = parse_expectations(draft(document({kOne})), "draft", types());
  EXPECT_EQ(failure_count(check(expectations, other)), 0u);
}

TEST(Draft, DoesNotCallAPlaceByAVersion) {
  const Module named{.place = "firmware 1.9 of the board", .firmware = "1.9"};
  EXPECT_THAT(draft(document({named, kTwo})), HasSubstr("\"firmware 1.9 of the board\" = "));
  PartClass of{"modules", fields(), {part(named)}};
  of.fields.push_back(field("Id", "ID", Role::kPlace));
  of.parts[0].emplace_back("board");
  EXPECT_THAT(draft(Document{{}, {of}}), HasSubstr("\n\"board\" = { "));
}

// Whatever firmware wrote.
TEST(Draft, HoldsForTheMachineThatItIsOf) {
  for (const char* text :
       {"quote \" and \\ backslash", "two\nlines", "bad \xff byte", "\x1b[31m", "= sign", ">= 1", " blanks ",
        "<b>&amp;</b>", "# none", "'''", "\x7f", "empty ", "\xc3\xbc"}) {
    const Module odd{.place = text, .serial = text, .model = text, .firmware = text};
    const Module twin{.place = text, .serial = text, .model = "other"};
    EXPECT_THAT(own_failures(document({odd, kTwo, kEmptySocket})), IsEmpty()) << text;
    EXPECT_THAT(own_failures(document({odd, twin, kOne})), IsEmpty()) << text;
  }
}

TEST(CheckJson, HasWhatFailed) {
  const auto verdicts =
      check(parsed("modules = { count = 2, unique = true, all = { Firmware = '>= 2' } }"), document({kOne}));
  EXPECT_EQ(to_json(verdicts), R"({
  "format_version": 1,
  "expectations": 3,
  "failures": [
    {
      "class": "modules",
      "expectation": "count",
      "place": null,
      "expected": "2 parts",
      "found": "1 part"
    },
    {
      "class": "modules",
      "expectation": "every part",
      "place": "A1",
      "expected": "FIRMWARE >= 2",
      "found": "1.9"
    }
  ]
}
)");
}

TEST(CheckJunit, HasATestCaseForEachExpectation) {
  const auto verdicts =
      check(parsed("modules = { count = 1, unique = true, all = { Model = 'm1' } }"), document({kOne, kTwo}));
  EXPECT_EQ(to_junit(verdicts), R"(<?xml version="1.0" encoding="UTF-8"?>
<testsuites tests="3" failures="2" errors="0">
  <testsuite name="zymdb check" tests="3" failures="2" errors="0">
    <testcase classname="zymdb.modules" name="count">
      <failure type="expectation" message="expected 1 part, found 2 parts">expected 1 part, found 2 parts</failure>
    </testcase>
    <testcase classname="zymdb.modules" name="unique"/>
    <testcase classname="zymdb.modules" name="every part">
      <failure type="expectation" message="A2: expected MODEL m1, found m2">A2: expected MODEL m1, found m2</failure>
    </testcase>
  </testsuite>
</testsuites>
)");
}

TEST(CheckJunit, EscapesWhatXmlCannotHold) {
  const auto xml = to_junit(
      {{"modules", "at <script>&\"'", {{"\t\n\r", "\x01\xff", "\xEF\xBF\xBF\xEF\xBF\xBE\xc3\xbc", {}}}}});
  EXPECT_THAT(xml, HasSubstr("name=\"at &lt;script&gt;&amp;&quot;&apos;\""));
  const std::string none = "\xEF\xBF\xBD";
  const std::string text = "&#9;&#10;&#13;: expected " + none + none + ", found " + none + none + "\xc3\xbc";
  EXPECT_THAT(xml, HasSubstr("message=\"" + text + "\">" + text + "</failure>"));
}

}  // namespace
}  // namespace zymdb::documents
