// Inventories that cannot be used, and sources that are damaged: one clear line, exit status 1, nothing
// harmed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/failing.h"
#include "tool/rows.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using std::filesystem::perms;
using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;

const Words kCommands[] = {{"init"},
                           {"show", "processors"},
                           {"show", "adapters", "--json"},
                           {"show", "functions"},
                           {"collect", "--quiet", "--lspci", example_lspci(), "--smbios", example_smbios()}};

void expect_every_command_fails(const Workplace& workplace, const std::string& path,
                                const Setting& setting = {}) {
  for (auto command : kCommands) {
    SCOPED_TRACE(testing::PrintToString(command));
    command.insert(command.end(), {"--inventory", path});
    expect_one_line(workplace.tool(command, setting), 1, path);
  }
}

TEST(Inventory, AMissingFolderIsToldInOneLine) {
  const Workplace workplace;
  expect_every_command_fails(workplace, workplace.path("missing") / "inventory.db");
}

TEST(Inventory, AFolderInItsPlaceIsToldInOneLine) {
  const Workplace workplace;
  create_directory(workplace.path("folder"));
  expect_every_command_fails(workplace, workplace.path("folder"));
}

TEST(Inventory, AForeignFileIsRefusedAndLeftAsItIs) {
  const Workplace workplace;
  const auto path = workplace.path("letter.txt");
  const std::string letter = "Dear reader,\n" + std::string(5000, '.');
  write_file(path, letter);
  expect_every_command_fails(workplace, path);
  EXPECT_EQ(read_file(path), letter);
}

TEST(Inventory, ADamagedInventoryIsRefused) {
  const Workplace workplace;
  workplace.collect_example();
  auto content = read_file(workplace.inventory());
  for (size_t i = 100; i < content.size(); ++i) content[i] = static_cast<char>(i * 31);
  write_file(workplace.inventory(), content);
  expect_every_command_fails(workplace, workplace.inventory());
}

// A part of the hardware must never be taken for the whole.
TEST(Inventory, ADamagedPageIsToldUnlessTheListingDoesNotNeedIt) {
  constexpr size_t kPage = 4096;
  const Workplace workplace;
  workplace.collect_example();
  const auto sound = read_file(workplace.inventory());
  const auto damaged = workplace.path("damaged.db");
  for (const char* listing : {"processors", "memory", "adapters", "functions", "gpus"}) {
    SCOPED_TRACE(listing);
    const auto whole = workplace.tool({"show", listing, "--json"}).out;
    int told = 0;
    for (size_t page = kPage; page < sound.size(); page += kPage) {
      auto content = sound;
      write_file(damaged, content.replace(page, kPage, kPage, '\x55'));
      const auto outcome = workplace.tool({"show", listing, "--json", "--inventory", damaged});
      if (outcome.status != 0) {
        expect_one_line(outcome, 1, "malformed");
        ++told;
      } else {
        EXPECT_EQ(outcome.out, whole);
      }
    }
    EXPECT_GT(told, 0);
  }
}

TEST(Inventory, AFolderThatMayNotBeWrittenIsToldInOneLine) {
  const Workplace workplace;
  permissions(workplace.path(""),
              perms::owner_all | perms::group_exec | perms::others_exec | perms::others_read);
  const auto folder = workplace.path("closed");
  create_directory(folder);
  permissions(folder, perms::owner_read | perms::owner_exec | perms::others_read | perms::others_exec);
  Setting nobody;
  nobody.unprivileged = true;
  expect_every_command_fails(workplace, folder / "inventory.db", nobody);
  EXPECT_TRUE(std::filesystem::is_empty(folder));
  permissions(folder, perms::owner_all);
}

TEST(Inventory, AnInventoryThatMayNotBeReadIsToldInOneLine) {
  const Workplace workplace;
  workplace.collect_example();
  permissions(workplace.path(""), perms::all);
  permissions(workplace.inventory(), perms::none);
  Setting nobody;
  nobody.unprivileged = true;
  expect_every_command_fails(workplace, workplace.inventory(), nobody);
}

TEST(Inventory, TheLogIsPrintedForThoseWhoAskOnly) {
  const Workplace workplace;
  const auto path = workplace.path("missing") / "inventory.db";
  const Words command{"show", "adapters", "--inventory", path};
  for (const char* log : {"", "syslog", "none"})
    expect_one_line(workplace.tool(command, {.environment = {{"ZYMDB_LOG", log}}}), 1, path);
  const auto told = workplace.tool(command);
  const auto logged = workplace.tool(command, {.environment = {{"ZYMDB_LOG", "stderr"}}});
  EXPECT_EQ(logged.status, 1);
  EXPECT_THAT(logged.err, EndsWith(told.err));
  EXPECT_THAT(lines_of(logged.err), SizeIs(2)) << logged;
}

// ---- Sources -----------------------------------------------------------------------------------------

std::string all_rows(const Workplace& workplace) {
  std::string rows;
  for (const char* listing : {"processors", "adapters", "functions"}) {
    rows += workplace.tool({"show", listing, "--json"}).out;
  }
  return rows;
}

TEST(Sources, AMissingFileIsAFailureThatNamesIt) {
  const Workplace workplace;
  const auto missing = workplace.path("missing.dump").string();
  for (const char* option : {"--lspci", "--smbios", "--sysfs"}) {
    expect_one_line(workplace.tool({"collect", "--quiet", option, missing}), 1, missing);
  }
}

TEST(Sources, ATruncatedDumpIsRefusedAndTheInventoryStaysAsItWas) {
  const Workplace workplace;
  workplace.collect_example();
  const auto before = all_rows(workplace);
  const auto cut = workplace.path("cut").string();
  const auto whole = read_file(example_lspci());
  write_file(cut, whole.substr(0, whole.size() / 2 + 5));
  expect_one_line(workplace.tool({"collect", "--quiet", "--lspci", cut}), 1, cut);
  EXPECT_EQ(all_rows(workplace), before);
}

TEST(Sources, TruncatedTablesAreANoticeAndTheInventoryStaysAsItWas) {
  const Workplace workplace;
  workplace.collect_example();
  const auto before = all_rows(workplace);
  const auto cut = workplace.path("cut").string();
  const auto whole = read_file(example_smbios());
  write_file(cut, whole.substr(0, whole.size() / 2 + 5));
  const auto outcome = workplace.tool({"collect", "--smbios", cut});
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("zymdb: " + cut + ", offset 0x"));
  EXPECT_EQ(all_rows(workplace), before);
}

TEST(Sources, AForeignFileIsRefused) {
  const Workplace workplace;
  expect_one_line(workplace.tool({"collect", "--quiet", "--lspci", example_smbios()}), 1, example_smbios());
  expect_one_line(workplace.tool({"collect", "--quiet", "--smbios", example_lspci()}), 1, example_lspci());
}

TEST(Sources, ADamagedSecondFileKeepsTheFirstFromBeingStored) {
  const Workplace workplace;
  const auto foreign = workplace.path("foreign").string();
  write_file(foreign, "no tables");
  expect_one_line(workplace.tool({"collect", "--lspci", example_lspci(), "--smbios", foreign}), 1, foreign);
  const auto functions = workplace.tool({"show", "functions"});
  EXPECT_EQ(functions.status, 0) << functions;
  EXPECT_THAT(lines_of(functions.out), SizeIs(1));
}

}  // namespace
}  // namespace zymdb::test
