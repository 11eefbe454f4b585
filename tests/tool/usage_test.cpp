// Command lines, right and wrong: exit statuses, help and version.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

struct WrongUsage {
  Words arguments;
  std::string told;
};

constexpr char kColumnsOfAdapters[] =
    "there are PLACE, ADDRESS, KEY, NODE, SLOTNO, CONNECTORTYPE, CONNECTOR, SERIAL, PART, NAME, AIM, "
    "LOCATION, HEALTH, "
    "NCSI, "
    "PACKAGE1, PACKAGE2, all (try 'zymdb show adapters --help')\n";

const WrongUsage kWrongUsages[] = {
    // What is missing.
    {{},
     "a command is missing; there are init, collect, record, show, link, watch, diff, check, history, "
     "snapshot, export, serve, settings, dpu, retimer, merge, "
     "properties, "
     "vpd, drive-date, completion (try 'zymdb --help')\n"},
    {{"show"},
     "a command is missing; there are system, processors, memory, adapters, vpd, gpus, backplanes, firmware, "
     "embedded, "
     "settings, "
     "functions, ports, logical-ports, drives, pldm, cards (try 'zymdb show --help')\n"},
    {{"link"}, "FUNCTION is missing (try 'zymdb link --help')\n"},
    {{"dpu", "append", "3"}, "--message is missing (try 'zymdb dpu append --help')\n"},
    {{"collect", "--lspci"}, "--lspci: its value is missing (try 'zymdb collect --help')\n"},
    {{"--inventory"}, "--inventory: its value is missing (try 'zymdb --help')\n"},
    {{"settings", "set"}, "ID=VALUE is missing (try 'zymdb settings set --help')\n"},
    // What there is not, with what was perhaps meant.
    {{"shwo"}, "unknown command 'shwo'; did you mean 'show'? (try 'zymdb --help')\n"},
    {{"show", "adapter"}, "unknown command 'adapter'; did you mean 'adapters'? (try 'zymdb show --help')\n"},
    {{"show", "FUNCTIONS"},
     "unknown command 'FUNCTIONS'; did you mean 'functions'? (try 'zymdb show --help')\n"},
    {{"settings", "lsit"}, "unknown command 'lsit'; did you mean 'list'? (try 'zymdb settings --help')\n"},
    {{"dpu", "widgets"},
     "unknown command 'widgets'; there are log, append, clear, uefi (try 'zymdb dpu --help')\n"},
    {{"completion", "tcsh"},
     "unknown command 'tcsh'; there are bash, zsh, fish (try 'zymdb completion --help')\n"},
    {{"--verbose"}, "unknown option '--verbose' (try 'zymdb --help')\n"},
    {{"--versoin"}, "unknown option '--versoin'; did you mean '--version'? (try 'zymdb --help')\n"},
    {{"show", "adapters", "--jsno"},
     "unknown option '--jsno'; did you mean '--json'? (try 'zymdb show adapters --help')\n"},
    {{"show", "adapters", "--inventroy=x.db"},
     "unknown option '--inventroy=x.db'; did you mean '--inventory'? (try 'zymdb show adapters --help')\n"},
    {{"init", "here"}, "'here' is more than the command takes (try 'zymdb init --help')\n"},
    {{"show", "adapters", "--columns", "NAME,PLCAE"},
     "--columns: unknown column 'PLCAE'; did you mean 'PLACE'? (try 'zymdb show adapters --help')\n"},
    {{"show", "adapters", "--columns", "NAME,PRICE-LIST"},
     std::string("--columns: unknown column 'PRICE-LIST'; ") + kColumnsOfAdapters},
    {{"show", "adapters", "--columns", ""},
     std::string("--columns: unknown column ''; ") + kColumnsOfAdapters},
    // What does not go together.
    {{"export", "--schema", "--format", "csv"},
     "--format and --schema do not go together (try 'zymdb export --help')\n"},
    {{"export", "--format", "csv"},
     "--format: csv is several files: --output names their folder (try 'zymdb export --help')\n"},
    {{"show", "adapters", "--json", "--columns", "NAME"},
     "--json and --columns do not go together (try 'zymdb show adapters --help')\n"},
    {{"show", "adapters", "--json", "--no-headings"},
     "--json and --no-headings do not go together (try 'zymdb show adapters --help')\n"},
    {{"show", "ports", "--function", "3b:00.0", "--adapter", "slot 3"},
     "--function and --adapter do not go together (try 'zymdb show ports --help')\n"},
    {{"show", "drives", "--m2", "--sata"},
     "only one can be given of --m2, --7mm, --sata, --merged, --controller, --function (try 'zymdb show "
     "drives --help')\n"},
    // Values.
    {{"export", "--format", "xml"},
     "--format: 'xml' is none of json, csv, prometheus, cyclonedx (try 'zymdb export --help')\n"},
    {{"show", "adapters", "--color", "mauve"},
     "--color: 'mauve' is none of auto, always, never (try 'zymdb show adapters --help')\n"},
    {{"--inventory", "", "show", "adapters"},
     "--inventory: an empty name names no file (try 'zymdb show adapters --help')\n"},
    {{"init", "--inventory="}, "--inventory: its value is missing (try 'zymdb init --help')\n"},
    {{"link", "4b0000"},
     "FUNCTION: '4b0000' is neither an address like 0000:3b:00.0 nor a key (decimal, or hexadecimal with 0x) "
     "(try "
     "'zymdb link --help')\n"},
    {{"link", "3b:00.0", "--port", "-1"},
     "--port: '-1' is no whole number from 0 to 2147483647 (try 'zymdb link --help')\n"},
    {{"dpu", "log", "0"}, "SLOT: '0' is no whole number from 1 to 2147483647 (try 'zymdb dpu log --help')\n"},
    {{"dpu", "clear", "x"},
     "SLOT: 'x' is no whole number from 1 to 2147483647 (try 'zymdb dpu clear --help')\n"},
    {{"retimer", "progress", "x"},
     "SLOT: 'x' is no whole number from 0 to 4294967295 (try 'zymdb retimer progress --help')\n"},
    {{"watch", "ports", "--interval", "0"},
     "--interval: '0' is no whole number from 1 to 86400 (try 'zymdb watch --help')\n"},
    {{"drive-date", "week"}, "CODE: 'week' is not four digits (try 'zymdb drive-date --help')\n"},
};

TEST(Usage, WrongUsageIsToldInOneLineAndEndsWith2) {
  const Workplace workplace;
  for (const auto& [arguments, told] : kWrongUsages) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const auto outcome = workplace.tool(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_EQ(outcome.err, "zymdb: " + told);
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
    {"show", "settings"},
    {"link"},
    {"watch"},
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
    {"diff"},
    {"history"},
    {"snapshot"},
    {"export"},
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
