// `zymdb show`: tables and JSON, which must say the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/listing_case.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;

class Show : public testing::TestWithParam<ListingCase> {
 protected:
  Workplace workplace;
};

INSTANTIATE_TEST_SUITE_P(Listings, Show, testing::ValuesIn(kListings),
                         [](const auto& listing) { return listing.param.name; });

TEST_P(Show, JsonHasTheRecordsFieldsInTheirOrder) {
  workplace.collect_example();
  const auto rows = records(workplace, GetParam());
  ASSERT_FALSE(rows.empty());
  const auto fields = declared_fields(GetParam());
  for (const auto& row : rows) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : row.items()) keys.push_back(key);
    EXPECT_THAT(keys, ElementsAreArray(fields));
  }
}

TEST_P(Show, EveryCellOfTheTableIsTheValueInJson) {
  workplace.collect_example();
  const auto rows = records(workplace, GetParam());
  ASSERT_FALSE(rows.empty());
  for (const auto& field : declared_fields(GetParam())) {
    SCOPED_TRACE(field);
    const auto cells = column(workplace, GetParam(), field);
    ASSERT_THAT(cells, SizeIs(rows.size()));
    for (size_t i = 0; i < cells.size(); ++i) {
      EXPECT_TRUE(shows(cells[i], rows[i].at(field))) << cells[i] << " for " << rows[i].at(field);
    }
  }
}

// Puts the table together again from its columns: a text is as wide as its longest cell, and a blank is
// between two columns.
TEST_P(Show, TheTableWithAllColumnsIsMadeOfTheSingleOnes) {
  workplace.collect_example();
  const auto table = lines_of(workplace.tool({"show", GetParam().name, "--columns", "all"}).out);
  ASSERT_GT(table.size(), 1u);
  size_t begin = 0;
  for (const auto& heading : headings(workplace, GetParam())) {
    SCOPED_TRACE(heading);
    const auto cells = column(workplace, GetParam(), heading);
    ASSERT_EQ(cells.size() + 1, table.size());
    size_t width = heading.size();
    for (const auto& cell : cells) width = std::max(width, cell.size());
    EXPECT_EQ(stripped(table[0].substr(begin, width)), heading);
    for (size_t i = 0; i < cells.size(); ++i) {
      EXPECT_EQ(stripped(table[i + 1].substr(std::min(begin, table[i + 1].size()), width)), cells[i]);
    }
    begin += width + 1;
  }
}

TEST_P(Show, JsonOfTheExampleServerIsAsKept) {
  workplace.collect_example();
  const auto kept = read_file(ZYMDB_SOURCE_DIR "/tests/tool/golden/" + GetParam().name + ".json");
  EXPECT_EQ(workplace.tool({"show", GetParam().name, "--json"}).out, kept);
}

TEST_P(Show, AnEmptyInventoryGivesHeadingsAndAnEmptyArray) {
  const auto table = workplace.tool({"show", GetParam().name});
  EXPECT_EQ(table.status, 0) << table;
  EXPECT_THAT(lines_of(table.out), SizeIs(1));
  EXPECT_THAT(table.err, IsEmpty());
  const auto bare = workplace.tool({"show", GetParam().name, "--no-headings"});
  EXPECT_EQ(bare.status, 0) << bare;
  EXPECT_THAT(bare.out, IsEmpty());
  EXPECT_EQ(workplace.tool({"show", GetParam().name, "--json"}).out,
            "{\n  \"format_version\": 1,\n  \"" + GetParam().name + "\": []\n}\n");
}

TEST_P(Show, NoHeadingsLeavesOutTheFirstLineOnly) {
  workplace.collect_example();
  auto lines = lines_of(workplace.tool({"show", GetParam().name, "--columns", "all"}).out);
  ASSERT_GT(lines.size(), 1u);
  lines.erase(lines.begin());
  auto bare = lines_of(workplace.tool({"show", GetParam().name, "--columns", "all", "--no-headings"}).out);
  ASSERT_EQ(bare.size(), lines.size());
  // Without headings columns may be narrower.
  const auto without_blanks = [](std::string line) {
    std::erase(line, ' ');
    return line;
  };
  for (size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(without_blanks(bare[i]), without_blanks(lines[i]));
}

TEST_P(Show, HelpListsEveryColumnAndEveryKey) {
  const auto help = workplace.tool({"show", GetParam().name, "--help"}).out;
  for (const auto& heading : headings(workplace, GetParam())) {
    EXPECT_THAT(help, testing::ContainsRegex("\n[* ] " + heading + " "));
  }
  for (const auto& field : declared_fields(GetParam()))
    EXPECT_THAT(help, testing::HasSubstr("[" + field + "]"));
}

TEST_P(Show, NamesOfColumnsAreUnambiguous) {
  auto names = headings(workplace, GetParam());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
}

TEST(Columns, ArePrintedInTheOrderAskedFor) {
  const Workplace workplace;
  const auto heading = [&](const std::string& columns) {
    return stripped(lines_of(workplace.tool({"show", "adapters", "--columns", columns}).out).at(0));
  };
  EXPECT_EQ(heading("NAME,PLACE"), "NAME PLACE");
  EXPECT_EQ(heading("PLACE,NAME"), "PLACE NAME");
  EXPECT_EQ(heading("place,cardname,CardName"), "PLACE NAME NAME");
}

TEST(Columns, AreShownAsPeopleWriteThem) {
  const Workplace workplace;
  workplace.collect_example();
  const auto table = workplace.tool({"show", "functions", "--no-headings", "--columns", "ADDRESS,ID"}).out;
  for (const auto& line : lines_of(table)) {
    EXPECT_THAT(line,
                testing::MatchesRegex("[0-9a-f]{4}:[0-9a-f]{2}:[0-9a-f]{2}\\.[0-7] [0-9a-f]{4}:[0-9a-f]{4}"));
  }
}

TEST(Columns, FunctionsComeInTheOrderOfTheirAddresses) {
  const Workplace workplace;
  workplace.collect_example();
  const auto addresses = column(workplace, kListings[2], "ADDRESS");
  EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end()));
  EXPECT_GT(addresses.size(), 1u);
}

TEST(PciIds, AListThatTheUserNamesMustBeThere) {
  const Workplace workplace;
  workplace.collect_example();
  const auto missing = workplace.path("none.ids").string();
  const auto outcome = workplace.tool({"show", "functions", "--pci-ids", missing});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, testing::HasSubstr(missing));
  EXPECT_THAT(lines_of(outcome.err), SizeIs(1));
}

TEST(PciIds, AListThatTheUserNamesGivesTheNames) {
  const Workplace workplace;
  workplace.collect_example();
  const auto list = workplace.path("own.ids");
  write_file(list, "15b3  Maker\n\ta2d6  Data Processor\nC 02  Networking\n\t00  Wired\n");
  const auto table =
      workplace.tool({"show", "functions", "--pci-ids", list.string(), "--columns", "ID,CLASS,NAME"}).out;
  EXPECT_THAT(table, testing::ContainsRegex("15b3:a2d6 Wired +Maker Data Processor\n"));
}

}  // namespace
}  // namespace zymdb::test
