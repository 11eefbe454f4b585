// The completion, in a real bash, zsh and fish.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::UnorderedElementsAre;

struct Shell {
  std::string name;
  std::string file;  // of its completion, as installed
  // What it is asked by, and how it is told of the folder to stand in and the words.
  Words (*question)(const std::string& folder, const Words& words);
};

std::string installed(const std::string& file) {
  return ZYMDB_COMPLETIONS "/" + file;
}

std::string line_of(const Words& words) {
  std::string line = "zymdb";
  for (const auto& word : words) line += " " + word;
  return line;
}

// Words are separated as bash separates them: "=" is a word.
Words ask_bash(const std::string& folder, const Words& words) {
  std::string script = "cd \"$1\" && shift && source <(\"$1\" completion bash) && shift || exit 1\n";
  script += "[[ $(complete -p zymdb) == *_zymdb* ]] || exit 2\n";
  script += "COMP_WORDS=(zymdb \"$@\"); COMP_CWORD=$#; _zymdb; printf '%s\\n' \"${COMPREPLY[@]}\"";
  Words command{"bash", "--norc", "-c", script, "bash", folder, ZYMDB_TOOL};
  command.insert(command.end(), words.begin(), words.end());
  return command;
}

Words ask_zsh(const std::string& folder, const Words& words) {
  return {"zsh",  "-f",          ZYMDB_SOURCE_DIR "/tests/tool/complete.zsh", ZYMDB_COMPLETIONS,
          folder, line_of(words)};
}

Words ask_fish(const std::string& folder, const Words& words) {
  return {
      "fish", "--no-config",           "-c",          "cd $argv[1]; source $argv[2]; complete -C $argv[3]",
      folder, installed("zymdb.fish"), line_of(words)};
}

const Shell kShells[] = {
    {"bash", "zymdb", ask_bash}, {"zsh", "_zymdb", ask_zsh}, {"fish", "zymdb.fish", ask_fish}};

// What the shell offers for the last of the words, without what it says about it.
std::vector<std::string> offers(const Shell& shell, const Words& words, const std::string& folder) {
  const TemporaryFolder home;
  const auto outcome =
      run_program(shell.question(folder, words), {.environment = {{"HOME", home.path().string()}}});
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.err, IsEmpty());
  auto lines = lines_of(outcome.out);
  for (auto& line : lines) line = line.substr(0, line.find('\t'));
  std::erase(lines, "");
  return lines;
}

class Completion : public testing::TestWithParam<Shell> {
 protected:
  static std::vector<std::string> complete(const Words& words, const std::filesystem::path& folder = "/") {
    return offers(GetParam(), words, folder.string());
  }
};

INSTANTIATE_TEST_SUITE_P(Shells, Completion, testing::ValuesIn(kShells),
                         [](const auto& shell) { return shell.param.name; });

TEST_P(Completion, OffersTheCommands) {
  EXPECT_THAT(complete({""}),
              IsSupersetOf({"init", "collect", "record", "show", "link", "watch", "diff", "check", "history",
                            "snapshot", "export", "settings", "dpu", "retimer", "merge", "properties", "vpd",
                            "drive-date", "completion"}));
  EXPECT_THAT(complete({"co"}), UnorderedElementsAre("collect", "completion"));
  EXPECT_THAT(complete({"show", "a"}), ElementsAre("adapters"));
  EXPECT_THAT(complete({"completion", ""}), IsSupersetOf({"bash", "zsh", "fish"}));
}

TEST_P(Completion, OffersTheOptionsOfACommandAndTheGlobalOnes) {
  EXPECT_THAT(
      complete({"collect", "--"}),
      UnorderedElementsAre("--help", "--version", "--inventory", "--lspci", "--smbios", "--sysfs",
                           "--pci-ids", "--allow-empty", "--only", "--timeout", "--replace", "--quiet"));
  EXPECT_THAT(complete({"show", "processors", "--"}),
              AllOf(IsSupersetOf({"--json", "--columns", "--sort", "--where", "--format", "--inventory"}),
                    Not(Contains("--lspci"))));
}

TEST_P(Completion, OffersTheValuesOfAnOption) {
  EXPECT_THAT(complete({"show", "functions", "--color", ""}),
              UnorderedElementsAre("auto", "always", "never"));
  EXPECT_THAT(complete({"show", "functions", "--format", "c"}), ElementsAre("csv"));
  EXPECT_THAT(complete({"check", "--format", ""}), UnorderedElementsAre("table", "json", "junit"));
}

TEST_P(Completion, OffersTheColumnsOfTheListing) {
  EXPECT_THAT(complete({"show", "adapters", "--columns", "PA"}),
              UnorderedElementsAre("PART", "PACKAGE1", "PACKAGE2"));
  EXPECT_THAT(complete({"show", "adapters", "--columns", "NAME,PL"}), ElementsAre("NAME,PLACE"));
  EXPECT_THAT(complete({"show", "processors", "--columns", "PL"}), IsEmpty());
}

TEST_P(Completion, OffersTheColumnsToSortBy) {
  EXPECT_THAT(complete({"show", "adapters", "--sort", "PL"}), ElementsAre("PLACE"));
  EXPECT_THAT(complete({"show", "adapters", "--sort", "-PL"}), ElementsAre("-PLACE"));
  EXPECT_THAT(complete({"show", "adapters", "--sort", "NAME,-PL"}), ElementsAre("NAME,-PLACE"));
}

TEST_P(Completion, OffersTheColumnsOfACondition) {
  EXPECT_THAT(complete({"show", "adapters", "--where", "PL"}), ElementsAre("PLACE="));
}

TEST_P(Completion, OffersTheListingsToWatch) {
  EXPECT_THAT(complete({"watch", "mem"}), ElementsAre("memory"));
}

TEST_P(Completion, OffersTheClassesOfACollection) {
  EXPECT_THAT(complete({"collect", "--only", "p"}), UnorderedElementsAre("processors", "pci", "ports"));
  EXPECT_THAT(complete({"collect", "--only", "pci,d"}), ElementsAre("pci,drives"));
}

// Some shells tell a folder by its end.
TEST_P(Completion, OffersFilesAndFoldersWhereTheyAreMeant) {
  const Workplace workplace;
  write_file(workplace.path("server.lspci"), "");
  create_directory(workplace.path("sys"));
  const auto folder = workplace.path("");
  EXPECT_THAT(complete({"collect", "--lspci", "se"}, folder), Contains("server.lspci"));
  EXPECT_THAT(complete({"check", "--against", "se"}, folder), Contains("server.lspci"));
  EXPECT_THAT(complete({"--inventory", "se"}, folder), Contains("server.lspci"));
  EXPECT_THAT(complete({"collect", "--sysfs", "s"}, folder),
              AllOf(Contains(testing::MatchesRegex("sys/?")), Not(Contains("server.lspci"))));
}

TEST_P(Completion, OffersNothingWhereNobodyKnows) {
  EXPECT_THAT(complete({"show", "adapters", "--at", ""}), IsEmpty());
  EXPECT_THAT(complete({"history", "--of", ""}), IsEmpty());
  EXPECT_THAT(complete({"show", "cards", "--match", ""}), IsEmpty());
}

TEST_P(Completion, TheValueOfAnOptionIsNoCommand) {
  EXPECT_THAT(complete({"--inventory", "init", "sh"}), ElementsAre("show"));
  EXPECT_THAT(complete({"show", "adapters", "--sort", "-PLACE", "--js"}), ElementsAre("--json"));
}

TEST_P(Completion, TheInstalledFileIsWhatTheProgramPrints) {
  EXPECT_EQ(read_file(installed(GetParam().file)), run_tool({"completion", GetParam().name}).out);
}

std::vector<std::string> in_shell(size_t shell, const Words& words, const std::string& folder = "/") {
  return offers(kShells[shell], words, folder);
}

TEST(CompletionInBash, TakesAnOptionApartFromItsValue) {
  EXPECT_THAT(in_shell(0, {"show", "functions", "--color", "=", "a"}),
              UnorderedElementsAre("auto", "always"));
  EXPECT_THAT(in_shell(0, {"show", "functions", "--color", "="}),
              UnorderedElementsAre("auto", "always", "never"));
  EXPECT_THAT(in_shell(0, {"--inventory", "=", "x.db", "show", "ad"}), ElementsAre("adapters"));
  EXPECT_THAT(in_shell(0, {"show", "ports", "--where", "LINK", "="}), IsEmpty());
  EXPECT_THAT(in_shell(0, {"show", "ports", "--where", "LINK", "=", "u"}), IsEmpty());
}

TEST(CompletionInBash, TakesBlanksInFileNames) {
  const Workplace workplace;
  write_file(workplace.path("server dump.lspci"), "");
  EXPECT_THAT(in_shell(0, {"collect", "--lspci", "se"}, workplace.path("")),
              ElementsAre("server dump.lspci"));
}

TEST(CompletionInZshAndFish, TakesAnOptionApartFromItsValue) {
  for (const size_t shell : {1u, 2u}) {
    EXPECT_THAT(in_shell(shell, {"show", "functions", "--color=a"}),
                UnorderedElementsAre("--color=auto", "--color=always"));
    EXPECT_THAT(in_shell(shell, {"--inventory=x.db", "show", "ad"}), ElementsAre("adapters"));
    EXPECT_THAT(in_shell(shell, {"show", "ports", "--sort=LINK,-SP"}), ElementsAre("--sort=LINK,-SPEED"));
    EXPECT_THAT(in_shell(shell, {"show", "ports", "--where=CONNECTORL"}),
                ElementsAre("--where=CONNECTORLAYOUT="));
    EXPECT_THAT(in_shell(shell, {"show", "ports", "--where", "LINK="}), IsEmpty());
    EXPECT_THAT(in_shell(shell, {"show", "ports", "--where=LINK="}), IsEmpty());
  }
}

TEST(CompletionInFish, SaysWhatItOffers) {
  const auto outcome = run_program(ask_fish("/", {"show", "ad"}));
  EXPECT_EQ(outcome.out, "adapters\tAdapters: cards, drives and on-board devices\n") << outcome;
}

TEST(CompletionInBash, KnowsEverySubcommandOfTheHelp) {
  for (const auto& word : in_shell(0, {"show", ""})) {
    if (word.starts_with("--")) continue;
    EXPECT_EQ(run_tool({"show", word, "--help"}).status, 0) << word;
  }
}

}  // namespace
}  // namespace zymdb::test
