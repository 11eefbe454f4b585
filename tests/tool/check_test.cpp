// zymdb check, as a user runs it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/parsing_marker.h"
#include "support/sql.h"
#include "tool/failing.h"
#include "tool/rows.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

class Check : public testing::Test {
 protected:
  Check() { workplace_.collect_example_system(); }

  std::string file(const char* name) const { return workplace_.path(name); }
  std::string inventory() const { return workplace_.inventory(); }

  std::string output(const Words& words, int status = 0) const {
    const Outcome outcome = workplace_.tool(words);
    EXPECT_EQ(outcome.status, status) << outcome;
    EXPECT_THAT(outcome.err, IsEmpty());
    return outcome.out;
  }

  std::string expectations(const std::string& text) const {
    write_file(file("server.toml"), "format_version = 1\n" + text);
    return file("server.toml");
  }

  void fails(const Words& words, const std::string& reason) const {
    expect_one_line(workplace_.tool(words), 2, reason);
  }

  ParsingMarker marker_;  // nobody stores settings meanwhile
  Workplace workplace_;
};

TEST_F(Check, OfTheServerThatItWasDraftedFromIsOneLine) {
  const std::string draft = output({"check", "--draft"});
  EXPECT_THAT(draft, HasSubstr("\n[drives]\ncount = 7\nhealthy = true\nunique = true\n\n[drives.at]\n"));
  EXPECT_THAT(draft,
              HasSubstr("\n\"Bay 1\" = { DisplayType = \"NVMe\", Model = \"SAMSUNG MZQL21T9HCJR-00A07\", "
                        "FwVersion = \">= GDC5602Q\", Capacity = \"1.92TB\" }\n"));
  EXPECT_THAT(draft, HasSubstr("\n[functions]\nfull_links = true\n"));
  EXPECT_THAT(draft, testing::Not(HasSubstr("S64GNE0R000101")));
  write_file(file("draft.toml"), draft);
  EXPECT_THAT(output({"check", "--against", file("draft.toml")}),
              MatchesRegex(".*inventory.db is as expected: [0-9]+ expectations of .*draft.toml\n"));
}

TEST_F(Check, TellsPlaceAndWhatWasExpectedAndFound) {
  const std::string against = expectations(
      "[drives]\ncount = 8\n[drives.at]\n'Bay 3' = { FwVersion = '>= GDC5602Q' }\n'Bay 9' = { Capacity = '2 "
      "TB' }\n");
  const auto lines = lines_of(output({"check", "--against", against}, 1));
  ASSERT_THAT(lines, SizeIs(4));
  EXPECT_THAT(lines[0], MatchesRegex("CLASS +PLACE +EXPECTED +FOUND"));
  EXPECT_THAT(lines[1], MatchesRegex("drives +8 parts +7 parts"));
  EXPECT_THAT(lines[2], MatchesRegex("drives +Bay 3 +FIRMWARE >= GDC5602Q +GDC5302Q"));
  EXPECT_THAT(lines[3], MatchesRegex("drives +Bay 9 +CAPACITY 2 TB +nothing"));
  EXPECT_THAT(lines_of(output({"check", "--against", against, "--no-headings"}, 1)), SizeIs(3));
}

TEST_F(Check, TakesEveryFormOfAnInventory) {
  output({"snapshot", file("a.snapshot")});
  write_file(file("export.json"), output({"export"}));
  write_file(file("drives.json"), output({"show", "drives", "--json"}));
  const std::string draft = output({"check", "--draft"});
  const std::string against = expectations("drives.count = 7");
  for (const char* form : {"a.snapshot", "export.json", "inventory.db"}) {
    EXPECT_EQ(output({"check", "--draft", file(form)}), draft);
    EXPECT_EQ(output({"check", "--draft", "--inventory", file(form)}), draft);
    const Outcome piped =
        run_program({"sh", "-c", std::string(ZYMDB_TOOL) + " check - --draft <" + file(form)});
    EXPECT_EQ(piped.out, draft) << piped;
  }
  EXPECT_THAT(output({"check", file("drives.json"), "--against", against}),
              HasSubstr("is as expected: 1 expectations"));
}

TEST_F(Check, IsWrittenAsJson) {
  const std::string against = expectations("drives = { count = 8, unique = true }");
  const std::string json = output({"check", "--against", against, "--json"}, 1);
  EXPECT_EQ(output({"check", "--against", against, "--format", "json"}, 1), json);
  const auto parsed = nlohmann::json::parse(json);
  EXPECT_EQ(parsed["format_version"], 1);
  EXPECT_EQ(parsed["expectations"], 2);
  ASSERT_EQ(parsed["failures"].size(), 1u);
  EXPECT_EQ(parsed["failures"][0]["expected"], "8 parts");
  const auto fine =
      nlohmann::json::parse(output({"check", "--against", expectations("drives.count = 7"), "--json"}));
  EXPECT_TRUE(fine["failures"].empty());
}

// A card's name, what firmware made of it, and what people expect of it.
TEST_F(Check, IsWrittenAsJUnitThatIsValid) {
  insert_row(workplace_, "AimDisks",
             {{"LocationId", 2u},
              {"BayNo", 20u},
              {"Location", "Bay 20"},
              {"DriveTypeId", 1u},
              {"Presence", 1u},
              {"InfoMask", 0u},
              {"Model", std::string("<script>&\"'\x01\xff]]>")},
              {"SerialNo", std::string("S1")}});
  const std::string against = expectations(
      "[drives]\ncount = 8\nunique = true\n[drives.at]\n'<script>&\"' = {}\n'Bay 20' = { Model = '= "
      "<b>&\"]]>' "
      "}\n");
  const std::string xml = output({"check", "--against", against, "--format", "junit"}, 1);
  EXPECT_THAT(xml, HasSubstr("<testsuites tests=\"4\" failures=\"2\" errors=\"0\">"));
  EXPECT_THAT(xml, HasSubstr("<testcase classname=\"zymdb.drives\" name=\"at &lt;script&gt;&amp;&quot;\">"));
  write_file(file("result.xml"), xml);
  const Outcome valid = run_program(
      {"xmllint", "--noout", "--schema", ZYMDB_SOURCE_DIR "/tests/data/junit-10.xsd", file("result.xml")});
  EXPECT_EQ(valid.status, 0) << valid;
  const Outcome message =
      run_program({"xmllint", "--xpath", "string(//testcase[4]/failure/@message)", file("result.xml")});
  EXPECT_THAT(message.out,
              StartsWith("Bay 20: expected MODEL <b>&\"]]>, found <script>&\"'\xEF\xBF\xBD\xEF\xBF\xBD]]>"));
}

TEST_F(Check, OfWhatIsWrongIsOneLineAndTwo) {
  const std::string draft = file("draft.toml");
  write_file(draft, output({"check", "--draft"}));
  fails({"check"}, "--against: name the file of expectations, or --draft one (try 'zymdb check --help')");
  fails({"check", "--against", ""}, "--against");
  fails({"check", "--against", draft, "--draft"}, "do not go together");
  fails({"check", "--draft", "--json"}, "do not go together");
  fails({"check", "--draft", "--format", "junit"}, "do not go together");
  fails({"check", "--against", draft, "--format", "csv"}, "'csv' is none of table, json, junit");
  fails({"check", "--against", draft, "--format", "junit", "--no-headings"}, "do not go together");
  fails({"check", "--against", file("missing.toml")}, "missing.toml: No such file");
  fails({"check", "--against", expectations("drives.count =")}, "server.toml, line 2: ");
  fails({"check", "--against", expectations("drivess.count = 1")},
        "server.toml, line 2: unknown class 'drivess'");
  fails({"check", "--against", expectations("[drives]\nall = { Modell = 'x' }")},
        "server.toml, line 3: drives have no field 'Modell'; there are Function, PCIFuncKey, ");
  fails({"check", "--against", expectations("")}, "server.toml: nothing is expected");
  fails({"check", "--against", inventory()}, "inventory.db, line 1: ");
  fails({"check", file("missing.db"), "--against", draft}, "missing.db: No such file");
  fails({"check", "--inventory", file("missing.db"), "--against", draft}, "missing.db: No such file");
  fails({"check", draft, "--against", draft}, "draft.toml: not JSON, or cut short");
  write_file(file("drives.json"), output({"show", "drives", "--json"}));
  fails({"check", file("drives.json"), "--against", draft},
        "drives.json tells nothing of system, processors, memory, adapters, functions, gpus, ports, "
        "logical-ports, "
        "firmware, embedded, of which " +
            draft + " expects something");
  fails({"check", "--draft", file("drives.json"), "--color", "mauve"}, "'mauve' is none of");
}

TEST(CheckOfNothing, DraftsNothing) {
  const ParsingMarker marker;
  const Workplace workplace;
  workplace.create_inventory();
  const Outcome outcome = workplace.tool({"check", "--draft"});
  EXPECT_EQ(outcome.status, 2) << outcome;
  EXPECT_THAT(outcome.err, EndsWith("inventory.db has no parts to draft expectations from\n"));
  EXPECT_THAT(outcome.out, IsEmpty());
}

// A link that trained down and a drive that was exchanged, found among machines that are as they should be.
TEST_F(Check, FindsWhatIsNotAsItWas) {
  write_file(file("draft.toml"), output({"check", "--draft"}));
  run_sql_on(inventory(),
             "UPDATE AimDisks SET SerialNo='S64GNE0R000101', FwVersion='GDC5502Q' WHERE BayNo=2;"
             "UPDATE PCIs SET LanesInUse=4 WHERE BusNo=101 AND DeviceNo=0;"
             "DELETE FROM Memory WHERE SlotNo=1;");
  const auto lines = lines_of(output({"check", "--against", file("draft.toml"), "--no-headings"}, 1));
  EXPECT_THAT(lines, ElementsAre(MatchesRegex("memory +32 parts +31 parts"),
                                 MatchesRegex("memory +CPU1_DIMM_A1 +SIZE 64 GiB, TYPE DDR4, .* nothing"),
                                 MatchesRegex("functions +0000:65:00.0 on board +a full link +x4/16 gen4"),
                                 MatchesRegex("drives +Bay 1, Bay 2 +SERIAL once +S64GNE0R000101 2 times"),
                                 MatchesRegex("drives +Bay 2 +FIRMWARE >= GDC5602Q +GDC5502Q")));
}

}  // namespace
}  // namespace zymdb::test
