// What depends on where the output goes: a terminal, a pipe, a file, nowhere.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tool/rows.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr char kEscape[] = "\033[";

// A processor that is switched off: a state that has a colour.
void disable_processor(const Workplace& workplace) {
  insert_row(workplace, "Processor",
             {{"Socket", "CPU 9"},
              {"Version", "a processor whose name fills most of a line of a terminal"},
              {"Status", 0x42u}});
}

struct ColorCase {
  const char* what;
  bool terminal;
  const char* option;  // of --color; null: not given
  std::pair<std::string, std::string> variable;
  bool colored;
};

const ColorCase kColorCases[] = {
    {"terminal", true, nullptr, {}, true},
    {"file", false, nullptr, {}, false},
    {"terminal, auto", true, "auto", {}, true},
    {"file, auto", false, "auto", {}, false},
    {"terminal, never", true, "never", {}, false},
    {"file, always", false, "always", {}, true},
    {"terminal, NO_COLOR", true, nullptr, {"NO_COLOR", "1"}, false},
    {"terminal, empty NO_COLOR", true, nullptr, {"NO_COLOR", ""}, true},
    {"NO_COLOR is about auto", true, "always", {"NO_COLOR", "1"}, true},
    {"terminal without colours", true, nullptr, {"TERM", "dumb"}, false},
};

TEST(Terminal, ColorsAreForTerminalsAndForThoseWhoAsk) {
  const Workplace workplace;
  disable_processor(workplace);
  for (const auto& [what, terminal, option, variable, colored] : kColorCases) {
    SCOPED_TRACE(what);
    Setting setting;
    if (terminal) setting.out = Stream::terminal(200);
    if (!variable.first.empty()) setting.environment.push_back(variable);
    Words command{"show", "processors"};
    if (option != nullptr) command.insert(command.end(), {"--color", option});
    const auto outcome = workplace.tool(command, setting);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("disabled by user"));
    EXPECT_EQ(outcome.out.find(kEscape) != std::string::npos, colored);
  }
}

size_t widest_line(const std::string& text) {
  size_t widest = 0;
  for (const auto& line : lines_of(text)) widest = std::max(widest, stripped(line).size());
  return widest;
}

TEST(Terminal, TablesAreCutToItsWidth) {
  const Workplace workplace;
  disable_processor(workplace);
  const Words command{"show", "processors", "--color", "never"};
  for (const uint16_t columns : std::initializer_list<uint16_t>{60, 80, 100}) {
    const auto table = workplace.tool(command, printing_to(Stream::terminal(columns))).out;
    EXPECT_LE(widest_line(table), columns);
    EXPECT_GT(widest_line(table) + 15, columns);
  }
  EXPECT_THAT(workplace.tool(command).out, HasSubstr("fills most of a line of a terminal"));
}

TEST(Terminal, JsonIsNeverCutOrColored) {
  const Workplace workplace;
  disable_processor(workplace);
  const auto json = workplace.tool({"show", "processors", "--json"}, printing_to(Stream::terminal(20))).out;
  EXPECT_THAT(json, HasSubstr("fills most of a line of a terminal"));
  EXPECT_THAT(json, Not(HasSubstr(kEscape)));
}

const Words kPrinting[] = {{"show", "functions"}, {"show", "functions", "--json"}, {"--help"},
                           {"--version"},         {"completion", "bash"},          {"init"}};

TEST(Output, AFullDiskIsAFailure) {
  const Workplace workplace;
  workplace.create_inventory();
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(full, 0);
  for (const auto& command : kPrinting) {
    const auto outcome = workplace.tool(command, printing_to(Stream::to(full)));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "zymdb: cannot write the output: No space left on device\n");
  }
  close(full);
}

TEST(Output, AClosedStandardOutputIsAFailure) {
  const Workplace workplace;
  workplace.create_inventory();
  for (const auto& command : kPrinting) {
    const auto outcome = workplace.tool(command, printing_to(Stream::closed()));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "zymdb: cannot write the output: Bad file descriptor\n");
  }
}

TEST(Output, AReaderThatHasGoneEndsTheCommandQuietly) {
  const Workplace workplace;
  workplace.create_inventory();
  for (const auto& command : kPrinting) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    const auto outcome = workplace.tool(command, printing_to(Stream::to(ends[1])));
    close(ends[1]);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty());
  }
}

// The database must never be opened as descriptor 1 or 2, or messages would be written into it.
TEST(Output, ClosedStandardStreamsDoNotHarmTheInventory) {
  const Workplace workplace;
  Setting silent;
  silent.out = silent.err = Stream::closed();
  EXPECT_EQ(workplace.tool({"init"}, silent).status, 1);
  EXPECT_EQ(workplace.tool({"show", "adapters", "--columns", "none"}, silent).status, 2);
  EXPECT_THAT(read_file(workplace.inventory()), StartsWith("SQLite format 3"));
  EXPECT_EQ(workplace.tool({"show", "adapters"}).status, 0);
}

}  // namespace
}  // namespace zymdb::test
