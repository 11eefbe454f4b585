// `zymdb show`: some rows, in some order, in every form.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class View : public testing::Test {
 protected:
  View() {
    insert_row(workplace_, "AimDisks", drive(10, "M,1", "1.9"));
    insert_row(workplace_, "AimDisks", drive(9, "m \"2\"", "1.10"));
    insert_row(workplace_, "AimDisks", drive(1, "", ""));
  }

  static std::vector<ColumnValue> drive(unsigned bay, const std::string& model, const std::string& firmware) {
    return {{"LocationId", 2u}, {"BayNo", bay},   {"DriveTypeId", 1u},     {"Presence", 1u},
            {"InfoMask", 0u},   {"Model", model}, {"FwVersion", firmware}, {"CtrlType", bay % 3}};
  }

  std::string output(Words words) const {
    words.insert(words.begin(), {"show", "drives"});
    const Outcome outcome = workplace_.tool(words);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_THAT(outcome.err, IsEmpty());
    return outcome.out;
  }

  // The bays in the order of the table.
  std::vector<std::string> bays(Words words) const {
    words.insert(words.end(), {"--columns", "NUMBER", "--no-headings"});
    auto lines = lines_of(output(words));
    for (auto& line : lines) line = stripped(line);
    return lines;
  }

  Workplace workplace_;
};

TEST_F(View, IsSortedByFieldsUpAndDown) {
  EXPECT_THAT(bays({}), ElementsAre("1", "9", "10"));
  EXPECT_THAT(bays({"--sort", "-NUMBER"}), ElementsAre("10", "9", "1"));
  EXPECT_THAT(bays({"--sort", "FwVersion"}), ElementsAre("10", "9", "1"));
  EXPECT_THAT(bays({"--sort=-firmware"}), ElementsAre("9", "10", "1"));
  EXPECT_THAT(bays({"--sort", "CONTROLLER, -number"}), ElementsAre("10", "1", "9"));
}

TEST_F(View, HasTheRowsThatMeetEveryCondition) {
  EXPECT_THAT(bays({"--where", "NUMBER=9"}), ElementsAre("9"));
  EXPECT_THAT(bays({"--where", "BayNo!=0x9"}), ElementsAre("1", "10"));
  EXPECT_THAT(bays({"--where", "NUMBER>1", "--where", "NUMBER<10"}), ElementsAre("9"));
  EXPECT_THAT(bays({"--where", " number >= 9 "}), ElementsAre("9", "10"));
  EXPECT_THAT(bays({"--where", "MODEL=m,1"}), ElementsAre("10"));
  EXPECT_THAT(bays({"--where", "FIRMWARE>=1.10"}), ElementsAre("9"));
  EXPECT_THAT(bays({"--where", "MODEL="}), ElementsAre("1"));
  EXPECT_THAT(bays({"--where", "MODEL!=", "--sort", "-NUMBER"}), ElementsAre("10", "9"));
  EXPECT_THAT(bays({"--where", "MODEL=none"}), IsEmpty());
}

TEST_F(View, IsTheSameInJson) {
  const auto json = Json::parse(output({"--json", "--where", "NUMBER>1", "--sort", "-NUMBER"}));
  ASSERT_EQ(json["drives"].size(), 2u);
  EXPECT_EQ(json["drives"][0]["BayNo"], 10);
  EXPECT_EQ(json["drives"][1]["BayNo"], 9);
  EXPECT_EQ(json["drives"][0].size(), Json::parse(output({"--json"}))["drives"][0].size());
  EXPECT_EQ(output({"--format", "json"}), output({"--json"}));
  EXPECT_EQ(output({"--format", "table"}), output({}));
}

TEST_F(View, IsWrittenAsCommaSeparatedValues) {
  const Words columns{"--format", "csv", "--columns", "NUMBER,MODEL,FIRMWARE,TEMP"};
  const std::string lines = "1,,,\r\n9,\"m \"\"2\"\"\",1.10,\r\n10,\"M,1\",1.9,\r\n";
  EXPECT_EQ(output(columns), "BayNo,Model,FwVersion,Temperature\r\n" + lines);
  Words bare = columns;
  bare.emplace_back("--no-headings");
  EXPECT_EQ(output(bare), lines);
  EXPECT_EQ(output({"--format", "csv", "--columns", "MODEL", "--where", "NUMBER=1"}), "Model\r\n\"\"\r\n");
  EXPECT_EQ(output({"--format", "csv", "--columns", "MODEL", "--where", "NUMBER=2"}), "Model\r\n");
}

TEST_F(View, IsWrittenAsPairsForAShell) {
  EXPECT_EQ(output({"--format", "pairs", "--columns", "NUMBER,MODEL,TEMP", "--where", "NUMBER>1"}),
            "BayNo=\"9\" Model=\"m \\x222\\x22\" Temperature=\"\"\n"
            "BayNo=\"10\" Model=\"M,1\" Temperature=\"\"\n");
  EXPECT_THAT(output({"--format", "pairs", "--where", "NUMBER=2"}), IsEmpty());
}

TEST_F(View, OfHostileTextsIsOneLineToAShellWhichRunsNothing) {
  const std::string hostile = "$(touch ran)`touch ran`\"; touch ran; #'\\\n\x1b[31m!!";
  insert_row(workplace_, "AimDisks", drive(20, hostile, "1"));
  const std::string pairs =
      output({"--format", "pairs", "--columns", "MODEL,FIRMWARE", "--where", "NUMBER=20"});
  EXPECT_THAT(lines_of(pairs), SizeIs(1));
  write_file(workplace_.path("pairs"), pairs);
  const Outcome outcome = run_program(
      {"bash", "-c",
       "cd \"$1\"; eval \"$(cat pairs)\"; printf '%b' \"$Model\"; test $FwVersion = 1 -a ! -e ran", "bash",
       workplace_.path("").string()});
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out, hostile);
}

// Every name that is printed means its own field, in whichever form it stands.
TEST_F(View, HasTheSameNamesEverywhere) {
  const auto json = Json::parse(output({"--json"}));
  const auto keys = keys_of(json["drives"][0]);
  const std::string csv = lines_of(output({"--format", "csv", "--columns", "all"})).at(0);
  std::string joined;
  for (const auto& key : keys) joined += (joined.empty() ? "" : ",") + key;
  EXPECT_EQ(csv, joined + "\r");
  for (const auto& key : keys) {
    EXPECT_THAT(output({"--format", "pairs", "--columns", key}), testing::StartsWith(key + "=\"")) << key;
    EXPECT_EQ(workplace_.tool({"show", "drives", "--sort", key, "--where", key + "="}).status, 0) << key;
  }
}

TEST_F(View, OfAnEarlierMomentIsSortedToo) {
  EXPECT_THAT(bays({"--at", "2", "--sort", "-NUMBER"}), ElementsAre("10", "9"));
}

TEST_F(View, OnAScreenIsTheSame) {
  const Outcome outcome =
      run_program({"timeout", "--preserve-status", "-s", "INT", "1", ZYMDB_TOOL, "watch", "drives",
                   "--screen", "--columns", "NUMBER", "--sort", "-NUMBER", "--where", "NUMBER>1"},
                  workplace_.with_inventory());
  EXPECT_EQ(outcome.out, "NUMBER\n    10\n     9\n") << outcome;
}

struct Refused {
  Words words;
  std::string told;
};

const Refused kRefusals[] = {
    {{"--sort", "SHELFLIFE"}, "--sort: unknown column 'SHELFLIFE'; there are FUNCTION, KEY, SLOT, "},
    {{"--sort", "NUMBR"}, "--sort: unknown column 'NUMBR'; did you mean 'NUMBER'?"},
    {{"--sort", ""}, "--sort: unknown column ''; there are "},
    {{"--sort", "all"}, "--sort: unknown column 'all'"},
    {{"--where", "SHELFLIFE=1"}, "--where: unknown column 'SHELFLIFE'; there are FUNCTION, KEY, SLOT, "},
    {{"--where", "NUMBER"}, "--where: 'NUMBER' is no FIELD=VALUE"},
    {{"--where", ""}, "--where: '' is no FIELD=VALUE"},
    {{"--where", "=9"}, "--where: unknown column ''"},
    {{"--where", "NUMBER=nine"}, "--where: 'NUMBER=nine': 'nine' is no number to compare NUMBER with"},
    {{"--where", "MODEL<"}, "--where: 'MODEL<': '' is no number to compare MODEL with"},
    {{"--format", "xml"}, "--format: 'xml' is none of table, json, csv, pairs"},
    {{"--format", "csv", "--json"}, "--format and --json do not go together"},
    {{"--format", "json", "--columns", "NUMBER"}, "--format json and --columns do not go together"},
    {{"--format", "json", "--no-headings"}, "--format json and --no-headings do not go together"},
    {{"--format", "pairs", "--no-headings"}, "--format pairs and --no-headings do not go together"},
};

TEST_F(View, ThatCannotBeIsToldInOneLine) {
  for (const auto& [words, told] : kRefusals) {
    Words command{"show", "drives"};
    command.insert(command.end(), words.begin(), words.end());
    const Outcome outcome = workplace_.tool(command);
    EXPECT_EQ(outcome.status, 2) << outcome;
    EXPECT_THAT(outcome.err, testing::StartsWith("zymdb: " + told));
    EXPECT_THAT(outcome.err, testing::EndsWith(" (try 'zymdb show drives --help')\n"));
    EXPECT_THAT(lines_of(outcome.err), SizeIs(1));
    EXPECT_THAT(outcome.out, IsEmpty());
  }
}

TEST_F(View, OfATreeHasAllOfIt) {
  for (const Words& words :
       {Words{"--sort", "ADDRESS"}, Words{"--where", "BUS=0"}, Words{"--format", "csv"}}) {
    Words command{"show", "functions", "--tree"};
    command.insert(command.end(), words.begin(), words.end());
    const Outcome outcome = workplace_.tool(command);
    EXPECT_EQ(outcome.status, 2) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr("do not go together"));
  }
}

TEST_F(View, IsOfAScreenWhereItIsWatched) {
  const Outcome outcome = workplace_.tool({"watch", "drives", "--sort", "NUMBER"});
  EXPECT_EQ(outcome.status, 2) << outcome;
  EXPECT_EQ(outcome.err, "zymdb: --columns, --sort and --where are for --screen\n");
  const Outcome unknown = workplace_.tool({"watch", "drives", "--screen", "--sort", "PLACE"});
  EXPECT_EQ(unknown.status, 2) << unknown;
  EXPECT_THAT(unknown.err, HasSubstr("--sort: unknown column 'PLACE'"));
}

}  // namespace
}  // namespace zymdb::test
