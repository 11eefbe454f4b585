// The completion, in a real bash.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

// What bash offers for the last of the words. Words are separated as bash separates them: "=" is a word.
Words complete(const Words& words, const std::filesystem::path& folder = "/") {
  std::string script = "cd \"$1\" && shift && source <(\"$1\" completion bash) && shift || exit 1\n";
  script += "[[ $(complete -p zymdb) == *_zymdb* ]] || exit 2\n";
  script += "COMP_WORDS=(zymdb \"$@\"); COMP_CWORD=$#; _zymdb; printf '%s\\n' \"${COMPREPLY[@]}\"";
  Words command{"bash", "--norc", "-c", script, "bash", folder.string(), ZYMDB_TOOL};
  command.insert(command.end(), words.begin(), words.end());
  const auto outcome = run_program(command);
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.err, IsEmpty());
  auto offers = lines_of(outcome.out);
  std::erase(offers, "");
  return offers;
}

TEST(Completion, OffersTheCommands) {
  EXPECT_THAT(complete({""}),
              UnorderedElementsAre("init", "collect", "record", "show", "link", "watch", "diff", "history",
                                   "snapshot", "export", "settings", "dpu", "retimer", "merge", "properties",
                                   "vpd", "drive-date", "completion", "--help", "--version", "--inventory"));
  EXPECT_THAT(complete({"co"}), UnorderedElementsAre("collect", "completion"));
  EXPECT_THAT(complete({"show", "a"}), ElementsAre("adapters"));
  EXPECT_THAT(complete({"completion", ""}), Contains("bash"));
}

TEST(Completion, OffersTheOptionsOfACommandAndTheGlobalOnes) {
  EXPECT_THAT(
      complete({"collect", "--"}),
      UnorderedElementsAre("--help", "--version", "--inventory", "--lspci", "--smbios", "--sysfs",
                           "--pci-ids", "--allow-empty", "--only", "--timeout", "--replace", "--quiet"));
  EXPECT_THAT(
      complete({"show", "processors", "--"}),
      AllOf(Contains("--json"), Contains("--columns"), Contains("--inventory"), Not(Contains("--lspci"))));
}

TEST(Completion, OffersTheValuesOfAnOption) {
  EXPECT_THAT(complete({"show", "functions", "--color", ""}),
              UnorderedElementsAre("auto", "always", "never"));
  EXPECT_THAT(complete({"show", "functions", "--color", "=", "a"}), UnorderedElementsAre("auto", "always"));
  EXPECT_THAT(complete({"show", "functions", "--color", "="}),
              UnorderedElementsAre("auto", "always", "never"));
}

TEST(Completion, OffersTheColumnsOfTheListing) {
  EXPECT_THAT(complete({"show", "adapters", "--columns", "PA"}),
              UnorderedElementsAre("PART", "PACKAGE1", "PACKAGE2"));
  EXPECT_THAT(complete({"show", "adapters", "--columns", "NAME,PL"}), ElementsAre("NAME,PLACE"));
  EXPECT_THAT(complete({"show", "processors", "--columns", "PL"}), IsEmpty());
}

TEST(Completion, OffersTheClassesOfACollection) {
  EXPECT_THAT(complete({"collect", "--only", "p"}), UnorderedElementsAre("processors", "pci", "ports"));
  EXPECT_THAT(complete({"collect", "--only", "pci,d"}), ElementsAre("pci,drives"));
}

TEST(Completion, OffersFilesAndFoldersWhereTheyAreMeant) {
  const Workplace workplace;
  write_file(workplace.path("server dump.lspci"), "");
  create_directory(workplace.path("sys"));
  const auto folder = workplace.path("");
  EXPECT_THAT(complete({"collect", "--lspci", "se"}, folder), ElementsAre("server dump.lspci"));
  EXPECT_THAT(complete({"collect", "--sysfs", "s"}, folder), ElementsAre("sys"));
  EXPECT_THAT(complete({"--inventory", "se"}, folder), ElementsAre("server dump.lspci"));
}

TEST(Completion, TheValueOfAnOptionIsNoCommand) {
  EXPECT_THAT(complete({"--inventory", "init", "sh"}), ElementsAre("show"));
  EXPECT_THAT(complete({"--inventory", "=", "x.db", "show", "ad"}), ElementsAre("adapters"));
}

TEST(Completion, KnowsEverySubcommandOfTheHelp) {
  for (const auto& word : complete({"show", ""})) {
    if (word.starts_with("--")) continue;
    EXPECT_EQ(run_tool({"show", word, "--help"}).status, 0) << word;
  }
}

TEST(Completion, TheInstalledFileIsWhatTheProgramPrints) {
  EXPECT_EQ(read_file(ZYMDB_COMPLETION), run_tool({"completion", "bash"}).out);
}

}  // namespace
}  // namespace zymdb::test
