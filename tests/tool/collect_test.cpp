// `zymdb collect` as its user sees it: what it prints, and what it leaves alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "tool/listing_case.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

const Words kCollect{"collect", "--lspci", example_lspci(), "--smbios", example_smbios()};

struct SummaryLine {
  std::string table;
  int inserted = -1, updated = -1, removed = -1, unchanged = -1;
};

std::vector<SummaryLine> summary_of(const Outcome& outcome) {
  auto lines = lines_of(outcome.out);
  EXPECT_THAT(lines.at(0), testing::ContainsRegex("^TABLE +INSERTED +UPDATED +REMOVED +UNCHANGED$"));
  std::vector<SummaryLine> summary;
  for (size_t i = 1; i < lines.size(); ++i) {
    auto& row = summary.emplace_back();
    std::istringstream(lines[i]) >> row.table >> row.inserted >> row.updated >> row.removed >> row.unchanged;
  }
  return summary;
}

const SummaryLine& line_of(const std::vector<SummaryLine>& summary, const std::string& table) {
  for (const auto& line : summary) {
    if (line.table == table) return line;
  }
  throw std::out_of_range(table);
}

TEST(Collect, TheSummaryCountsTheRowsOfEveryTable) {
  const Workplace workplace;
  const auto outcome = workplace.tool(kCollect);
  ASSERT_EQ(outcome.status, 0) << outcome;
  const auto summary = summary_of(outcome);
  const auto& functions = line_of(summary, "PCIs");
  EXPECT_EQ(static_cast<size_t>(functions.inserted), records(workplace, listing("functions")).size());
  EXPECT_EQ(static_cast<size_t>(line_of(summary, "Processor").inserted),
            records(workplace, listing("processors")).size());
  for (const auto& line : summary) EXPECT_EQ(line.updated + line.removed + line.unchanged, 0) << line.table;
}

TEST(Collect, ASecondRunChangesNoRow) {
  const Workplace workplace;
  const auto first = summary_of(workplace.tool(kCollect));
  const auto bytes = read_file(workplace.inventory());
  const auto second = summary_of(workplace.tool(kCollect));
  ASSERT_EQ(second.size(), first.size());
  for (size_t i = 0; i < first.size(); ++i) {
    EXPECT_EQ(second[i].unchanged, first[i].inserted) << first[i].table;
    EXPECT_EQ(second[i].inserted + second[i].updated + second[i].removed, 0) << first[i].table;
  }
  EXPECT_EQ(read_file(workplace.inventory()), bytes);
}

TEST(Collect, HardwareThatIsGoneIsRemoved) {
  const Workplace workplace;
  workplace.collect_example();
  const auto dump = read_file(example_lspci());
  const auto last_device = dump.rfind("\n\n", dump.find_last_not_of('\n'));
  ASSERT_NE(last_device, std::string::npos);
  const auto smaller = workplace.path("smaller.lspci").string();
  write_file(smaller, dump.substr(0, last_device + 2));
  const auto before = records(workplace, listing("functions")).size();
  const auto summary =
      summary_of(workplace.tool({"collect", "--lspci", smaller, "--smbios", example_smbios()}));
  EXPECT_EQ(line_of(summary, "PCIs").removed, 1);
  EXPECT_EQ(records(workplace, listing("functions")).size(), before - 1);
}

TEST(Collect, AnEmptySourceEmptiesTheInventoryOnlyWhereItMay) {
  const Workplace workplace;
  workplace.collect_example();
  const auto before = records(workplace, listing("functions")).size();
  const auto empty = workplace.path("sys");
  std::filesystem::create_directories(empty / "bus/pci/devices");
  Words command{"collect", "--smbios", example_smbios(), "--sysfs", empty.string()};
  const auto outcome = workplace.tool(command);
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("zymdb: no PCI functions in " + empty.string() + "/bus/pci/devices"));
  EXPECT_EQ(records(workplace, listing("functions")).size(), before);
  command.emplace_back("--allow-empty");
  EXPECT_EQ(workplace.tool(command).status, 0);
  EXPECT_THAT(records(workplace, listing("functions")), IsEmpty());
}

TEST(Collect, OnlyTheClassesThatAreNamedAreCollected) {
  const Workplace workplace;
  auto command = kCollect;
  command.insert(command.end(), {"--only", "processors, memory"});
  const auto summary = summary_of(workplace.tool(command));
  ASSERT_EQ(summary.size(), 2U);
  EXPECT_EQ(summary[0].table, "Processor");
  EXPECT_EQ(summary[1].table, "Memory");
  command.back() = "memory,disks";
  const auto refused = workplace.tool(command);
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("unknown class 'disks'; there are system, processors, memory, firmware, "
                                     "pci, gpus, ports, drives"));
}

TEST(Collect, AnotherMachineNeedsToBeToldToReplaceTheFormer) {
  const Workplace workplace;
  workplace.collect_example();
  auto tables = read_file(example_smbios());
  tables[tables.find("\x55\x44\x77\x66")] = '\x56';
  const auto other = workplace.path("other.smbios").string();
  write_file(other, tables);
  Words command{"collect", "--lspci", example_lspci(), "--smbios", other};
  const auto refused = workplace.tool(command);
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, HasSubstr("-4456-"));
  EXPECT_THAT(lines_of(refused.err).size(), 1U);
  command.emplace_back("--replace");
  EXPECT_EQ(workplace.tool(command).status, 0);
  EXPECT_THAT(records(workplace, listing("system")).at(0).at("UUID"), HasSubstr("-4456-"));
}

TEST(Collect, QuietPrintsNothing) {
  const Workplace workplace;
  auto command = kCollect;
  command.emplace_back("--quiet");
  const auto outcome = workplace.tool(command);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, IsEmpty());
  EXPECT_FALSE(records(workplace, listing("functions")).empty());
}

TEST(Collect, NamesComeFromTheListThatIsNamed) {
  const Workplace workplace;
  const auto list = workplace.path("own.ids");
  write_file(list, "15b3  Maker\n\ta2d6  Data Processor\n");
  auto command = kCollect;
  command.insert(command.end(), {"--pci-ids", list.string()});
  ASSERT_EQ(workplace.tool(command).status, 0);
  EXPECT_THAT(column(workplace, listing("adapters"), "NAME"), Contains(HasSubstr("Data Processor")));
}

TEST(Collect, WithoutATerminalNothingIsDrawn) {
  const Workplace workplace;
  EXPECT_THAT(workplace.tool(kCollect).err, Not(HasSubstr("\033")));
}

TEST(Collect, OnATerminalNothingIsLeftOfTheProgress) {
  const Workplace workplace;
  Setting terminal;
  terminal.err = Stream::terminal();
  const auto outcome = workplace.tool(kCollect, terminal);
  EXPECT_EQ(outcome.status, 0);
  constexpr std::string_view kErase = "\r\033[K";
  for (auto line : lines_of(outcome.err)) {
    if (const auto erased = line.rfind(kErase); erased != std::string::npos)
      line.erase(0, erased + kErase.size());
    EXPECT_TRUE(line.empty() || line.starts_with("zymdb: ")) << outcome;
  }
}

// The machine that the tests run on, whatever it lets us see.
TEST(Collect, TheRunningMachineCanBeCollectedTwice) {
  const Workplace workplace;
  const auto first = workplace.tool({"collect"});
  ASSERT_EQ(first.status, 0) << first;
  for (const auto& line : lines_of(first.err)) EXPECT_TRUE(line.starts_with("zymdb: ")) << line;
  const auto second = workplace.tool({"collect"});
  for (const auto& line : summary_of(second))
    EXPECT_EQ(line.inserted + line.updated + line.removed, 0) << line.table;
}

}  // namespace
}  // namespace zymdb::test
