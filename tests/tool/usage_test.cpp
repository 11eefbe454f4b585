// Command lines, right and wrong: exit statuses, help and version.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

struct WrongUsage {
  Words arguments;
  std::string told;
};

const WrongUsage kWrongUsages[] = {
    {{}, "A subcommand is required (try 'zymdb --help')"},
    {{"show"}, "A subcommand is required (try 'zymdb show --help')"},
    {{"completion"}, "A subcommand is required (try 'zymdb completion --help')"},
    {{"shwo"}, "unknown command or option 'shwo' (try 'zymdb --help')"},
    {{"show", "widgets"}, "unknown command or option 'widgets' (try 'zymdb show --help')"},
    {{"--verbose"}, "unknown command or option '--verbose' (try 'zymdb --help')"},
    {{"init", "here"}, "unknown command or option 'here' (try 'zymdb init --help')"},
    {{"collect", "--lspci"}, "--lspci: 1 required FILE missing (try 'zymdb collect --help')"},
    {{"--inventory"}, "--inventory: 1 required FILE missing (try 'zymdb --help')"},
    {{"show", "adapters", "--color", "mauve"},
     "--color: mauve not in {auto,always,never} (try 'zymdb show adapters --help')"},
    {{"show", "adapters", "--json", "--columns", "NAME"},
     "--json excludes --columns (try 'zymdb show adapters --help')"},
    {{"show", "adapters", "--json", "--no-headings"},
     "--json excludes --no-headings (try 'zymdb show adapters --help')"},
    {{"show", "adapters", "--columns", "NAME,PRICE"},
     "--columns: unknown column 'PRICE'; the columns are all, PLACE, KEY, NODE, SLOTNO, CONNECTORTYPE, "
     "CONNECTOR, "
     "NAME, AIM, LOCATION, HEALTH, NCSI, PACKAGE1, PACKAGE2 (try 'zymdb show adapters --help')"},
    {{"show", "functions", "--columns", ""}, "--columns: unknown column ''; the columns are all, ADDRESS, "},
    {{"completion", "fish"}, "unknown command or option 'fish' (try 'zymdb completion --help')"},
};

TEST(Usage, WrongUsageIsToldInOneLineAndEndsWith2) {
  const Workplace workplace;
  for (const auto& [arguments, told] : kWrongUsages) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const auto outcome = workplace.tool(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, StartsWith("zymdb: " + told));
    EXPECT_EQ(lines_of(outcome.err).size(), 1u);
  }
}

TEST(Usage, WrongUsageTouchesNoInventory) {
  const Workplace workplace;
  for (const auto& wrong : kWrongUsages) workplace.tool(wrong.arguments);
  EXPECT_FALSE(exists(workplace.inventory()));
}

const Words kCommands[] = {
    {},
    {"init"},
    {"collect"},
    {"show"},
    {"show", "processors"},
    {"show", "adapters"},
    {"show", "functions"},
    {"show", "ports"},
    {"show", "logical-ports"},
    {"show", "memory"},
    {"show", "gpus"},
    {"show", "cards"},
    {"show", "firmware"},
    {"show", "pldm"},
    {"show", "embedded"},
    {"show", "drives"},
    {"show", "backplanes"},
    {"link"},
    {"watch"},
    {"watch", "ports"},
    {"merge"},
    {"settings"},
    {"settings", "import"},
    {"settings", "list"},
    {"settings", "set"},
    {"settings", "pending"},
    {"dpu"},
    {"dpu", "log"},
    {"dpu", "append"},
    {"dpu", "clear"},
    {"dpu", "uefi"},
    {"retimer"},
    {"retimer", "update"},
    {"retimer", "progress"},
    {"properties"},
    {"properties", "import"},
    {"vpd"},
    {"drive-date"},
    {"completion"},
    {"completion", "bash"},
};

TEST(Usage, EveryCommandHasHelpWithExamples) {
  const Workplace workplace;
  for (auto command : kCommands) {
    SCOPED_TRACE(testing::PrintToString(command));
    std::string name = "zymdb";
    for (const auto& word : command) name += " " + word;
    command.emplace_back("--help");
    const auto outcome = workplace.tool(command);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty());
    EXPECT_THAT(outcome.out, HasSubstr("Usage: " + name + " [OPTIONS]"));
    EXPECT_THAT(outcome.out, HasSubstr("Examples:\n  "));
  }
  EXPECT_FALSE(exists(workplace.inventory()));
}

TEST(Usage, HelpOfTheProgramNamesItsCommandsAndExitStatuses) {
  const auto help = run_tool({"--help"}).out;
  for (const char* word : {"init", "collect", "show", "completion", "--inventory", "--version",
                           "ZYMDB_INVENTORY", "NO_COLOR", "Exit status: 0 done, 1 failed, 2 wrong usage"}) {
    EXPECT_THAT(help, HasSubstr(word));
  }
}

TEST(Usage, HelpFitsIntoTheWidthOfThisProject) {
  for (auto command : kCommands) {
    command.emplace_back("--help");
    for (const auto& line : lines_of(run_tool(command).out)) EXPECT_LE(line.size(), 110u) << line;
  }
}

TEST(Usage, VersionIsOneLine) {
  const auto outcome = run_tool({"--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, MatchesRegex("zymdb [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  EXPECT_THAT(outcome.err, IsEmpty());
}

TEST(Usage, TheInventoryMayBeNamedBeforeOrAfterTheCommandAndBeatsTheEnvironment) {
  const Workplace workplace;
  const auto other = workplace.path("other.db").string();
  const auto another = workplace.path("another.db").string();
  EXPECT_EQ(workplace.tool({"--inventory", other, "init"}).out, other + "\n");
  EXPECT_EQ(workplace.tool({"init", "--inventory=" + another}).out, another + "\n");
  EXPECT_TRUE(exists(workplace.path("other.db")));
  EXPECT_TRUE(exists(workplace.path("another.db")));
  EXPECT_FALSE(exists(workplace.inventory()));
}

}  // namespace
}  // namespace zymdb::test
