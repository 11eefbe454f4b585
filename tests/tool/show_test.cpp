// `zymdb show`: tables and JSON, which must say the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <regex>

#include "support/parsing_marker.h"
#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAreArray;

// The listings of the example server. It has no device that is updated over PLDM.
class Show : public testing::TestWithParam<ListingCase> {
 protected:
  // Settings cannot be read while another test stores some.
  void SetUp() override {
    if (GetParam().name == "settings") marker_.emplace();
  }

  void fill() const {
    workplace.collect_example_system();
    if (GetParam().name == "settings") import_settings();
    insert_row(
        workplace, "PldmDeviceFirmware",
        {{"DeviceName", "a device"}, {"VersionString", "1.2"}, {"UpdateErrCode", 9u}, {"Updated", 1u}});
  }

  Workplace workplace;

 private:
  void import_settings() const {
    const auto file = ZYMDB_SOURCE_DIR "/data/example-server/settings.json";
    const auto outcome = workplace.tool({"settings", "import", file});
    EXPECT_EQ(outcome.status, 0) << outcome;
  }

  std::optional<ParsingMarker> marker_;
};

std::string name_of(const testing::TestParamInfo<ListingCase>& listing) {
  auto name = listing.param.name;
  std::erase(name, '-');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Listings, Show, testing::ValuesIn(kListings), name_of);

// All but the cards, which the library knows by itself.
class StoredListing : public Show {};

std::vector<ListingCase> stored_listings() {
  std::vector<ListingCase> listings(std::begin(kListings), std::end(kListings));
  std::erase_if(listings, [](const auto& each) { return each.name == "cards"; });
  return listings;
}

INSTANTIATE_TEST_SUITE_P(Listings, StoredListing, testing::ValuesIn(stored_listings()), name_of);

TEST_P(StoredListing, OfAMissingInventoryIsAFailureAndMakesNone) {
  for (const char* form : {"--json", "--no-headings"}) {
    const auto outcome = workplace.tool({"show", GetParam().name, form});
    EXPECT_EQ(outcome.status, 1) << outcome;
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, testing::HasSubstr(workplace.inventory().string()));
    EXPECT_THAT(lines_of(outcome.err), SizeIs(1)) << outcome;
  }
  EXPECT_TRUE(std::filesystem::is_empty(workplace.path("")));
}

TEST_P(Show, JsonHasEveryFieldOfTheRecordsAndWhatIsDerivedFromThem) {
  fill();
  const auto rows = records(workplace, GetParam());
  ASSERT_FALSE(rows.empty());
  const auto fields = declared_fields(GetParam());
  for (const auto& row : rows) {
    auto declared = keys_of(row);
    const auto rest = std::ranges::stable_partition(
        declared, [&](const auto& key) { return std::ranges::find(fields, key) != fields.end(); });
    EXPECT_THAT(std::vector(rest.begin(), rest.end()), ElementsAreArray(GetParam().derived));
    declared.erase(rest.begin(), rest.end());
    EXPECT_THAT(declared, UnorderedElementsAreArray(fields));
  }
}

TEST_P(Show, EveryCellOfTheTableIsTheValueInJson) {
  fill();
  const auto rows = records(workplace, GetParam());
  ASSERT_FALSE(rows.empty());
  const auto keys = keys_of(rows[0]);
  const auto names = headings(workplace, GetParam());
  ASSERT_THAT(names, SizeIs(keys.size()));
  for (size_t field = 0; field < keys.size(); ++field) {
    SCOPED_TRACE(names[field]);
    const auto cells = column(workplace, GetParam(), names[field]);
    ASSERT_THAT(cells, SizeIs(rows.size()));
    for (size_t i = 0; i < cells.size(); ++i) {
      const auto& value = rows[i].at(keys[field]);
      EXPECT_TRUE(shows(cells[i], value)) << cells[i] << " for " << value;
    }
  }
}

// Puts the table together again from its columns: a text is as wide as its longest cell, and a blank is
// between two columns.
TEST_P(Show, TheTableWithAllColumnsIsMadeOfTheSingleOnes) {
  fill();
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

// When, by what and from where it was collected is another thing every time.
std::string without_collection(const std::string& json) {
  return std::regex_replace(json, std::regex(R"re(("Collected\w*": )("[^"]*"|\d+))re"), "$1null");
}

TEST_P(Show, JsonOfTheExampleServerIsAsKept) {
  fill();
  const auto kept = read_file(ZYMDB_SOURCE_DIR "/tests/tool/golden/" + GetParam().name + ".json");
  EXPECT_EQ(without_collection(workplace.tool({"show", GetParam().name, "--json"}).out), kept);
}

TEST_P(StoredListing, OfAnEmptyInventoryIsHeadingsAndAnEmptyArray) {
  workplace.create_inventory();
  const auto table = workplace.tool({"show", GetParam().name});
  EXPECT_EQ(table.status, 0) << table;
  EXPECT_THAT(lines_of(table.out), SizeIs(1));
  EXPECT_THAT(table.err, IsEmpty());
  const auto bare = workplace.tool({"show", GetParam().name, "--no-headings"});
  EXPECT_EQ(bare.status, 0) << bare;
  EXPECT_THAT(bare.out, IsEmpty());
  EXPECT_EQ(workplace.tool({"show", GetParam().name, "--json"}).out,
            "{\n  \"format_version\": 2,\n  \"" + GetParam().name + "\": []\n}\n");
}

TEST_P(Show, NoHeadingsLeavesOutTheFirstLineOnly) {
  fill();
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
  workplace.create_inventory();
  const auto help = workplace.tool({"show", GetParam().name, "--help"}).out;
  for (const auto& heading : headings(workplace, GetParam())) {
    EXPECT_THAT(help, testing::ContainsRegex("\n[* ] " + heading + " "));
  }
  for (const auto& fields : {declared_fields(GetParam()), GetParam().derived}) {
    for (const auto& field : fields) EXPECT_THAT(help, testing::HasSubstr("[" + field + "]"));
  }
}

TEST_P(Show, NamesOfColumnsAreUnambiguous) {
  workplace.create_inventory();
  auto names = headings(workplace, GetParam());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
}

TEST(Columns, ArePrintedInTheOrderAskedFor) {
  const Workplace workplace;
  workplace.create_inventory();
  const auto heading = [&](const std::string& columns) {
    return stripped(lines_of(workplace.tool({"show", "adapters", "--columns", columns}).out).at(0));
  };
  EXPECT_EQ(heading("NAME,PLACE"), "NAME PLACE");
  EXPECT_EQ(heading("PLACE,NAME"), "PLACE NAME");
  EXPECT_EQ(heading("place,cardname,CardName"), "PLACE NAME NAME");
  EXPECT_EQ(heading(" PLACE ,\tname "), "PLACE NAME");
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
  const auto addresses = column(workplace, listing("functions"), "ADDRESS");
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
