// `watch` in a file, and its screen on a terminal of the test's own: what they print, and how they end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <utility>

#include "tool/rows.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char kOtherScreen[] = "\033[?1049h";
constexpr char kFirstScreen[] = "\033[?25h\033[?1049l";
constexpr char kClear[] = "\033[2J";
constexpr char kInterrupt[] = "\003";  // Ctrl-C

// The tool on a terminal.
class Terminal {
 public:
  Terminal(const Workplace& workplace, const Words& arguments, unsigned short lines = 24) {
    const winsize size{lines, 100, 0, 0};
    child_ = forkpty(&master_, nullptr, nullptr, &size);
    if (child_ == 0) run(workplace, arguments);
  }
  ~Terminal() {
    if (child_ > 0) {
      kill(child_, SIGKILL);
      waitpid(child_, nullptr, 0);
    }
    close(master_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // Everything printed until `text` was, which must be within 20 s.
  std::string read_until(const std::string& text) {
    std::string printed;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (printed.find(text) == std::string::npos && std::chrono::steady_clock::now() < deadline) {
      pollfd ready{master_, POLLIN, 0};
      if (poll(&ready, 1, 100) <= 0) continue;
      char block[4096];
      const ssize_t count = read(master_, block, sizeof block);
      if (count <= 0) break;
      printed.append(block, static_cast<size_t>(count));
    }
    EXPECT_THAT(printed, HasSubstr(text));
    return printed;
  }

  void type(const char* keys) {
    EXPECT_EQ(write(master_, keys, std::strlen(keys)), static_cast<ssize_t>(std::strlen(keys)));
  }

  void resize(unsigned short lines) {
    const winsize size{lines, 100, 0, 0};
    EXPECT_EQ(ioctl(master_, TIOCSWINSZ, &size), 0);
  }

  int end() {
    int status = -1;
    EXPECT_GT(waitpid(std::exchange(child_, -1), &status, 0), 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

  pid_t child() const { return child_; }

 private:
  [[noreturn]] static void run(const Workplace& workplace, const Words& arguments) {
    setenv("ZYMDB_INVENTORY", workplace.inventory().c_str(), 1);
    setenv("TERM", "xterm", 1);
    std::vector<char*> words{const_cast<char*>(ZYMDB_TOOL)};
    for (const auto& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execv(ZYMDB_TOOL, words.data());
    _exit(127);
  }

  int master_ = -1;
  pid_t child_ = -1;
};

class Watch : public testing::Test {
 protected:
  Watch() {
    insert_row(workplace_, "PCIs",
               {{"FunKey", 0x3B0000u}, {"BusNo", 0x3Bu}, {"DeviceNo", 0u}, {"FunctionNo", 0u}});
    insert_row(workplace_, "PCINetwork", {{"PCIFuncKey", 0x3B0000u}, {"NumberofPhysicalPorts", 2u}});
    for (const unsigned port : {0u, 1u}) {
      insert_row(workplace_, "PCIPhysicalPort", {{"PCIFuncKey", 0x3B0000u}, {"Idx", port}});
      insert_row(workplace_, "PCIPhysicalPortStat",
                 {{"PCIFuncKey", 0x3B0000u}, {"Idx", port}, {"LinkStatus", 1u}, {"LinkSpeed", 25000u}});
    }
  }

  void set_link(const std::string& port, const std::string& change) const {
    const auto outcome = workplace_.tool({"link", "3b:00.0", "--port", port, "--set", change});
    EXPECT_EQ(outcome.status, 0) << outcome;
  }

  Workplace workplace_;
};

TEST_F(Watch, DrawsTheTableOnceAndThenWhatChanged) {
  Terminal terminal(workplace_, {"watch", "ports", "--screen"});
  const auto first = terminal.read_until("\033[3;68H0");  // its last cell
  EXPECT_THAT(first, StartsWith(kOtherScreen));
  EXPECT_THAT(first, HasSubstr("FUNCTION"));
  set_link("1", "tx=42");
  const auto second = terminal.read_until("42");
  EXPECT_THAT(second, HasSubstr("\033[3;"));
  EXPECT_THAT(second.substr(second.rfind("\033[3;")), testing::MatchesRegex("\033\\[3;[0-9]+H42"));
  EXPECT_THAT(second, Not(HasSubstr(kClear)));
  terminal.type(kInterrupt);
  EXPECT_THAT(terminal.read_until(kFirstScreen), HasSubstr(kFirstScreen));
  EXPECT_EQ(terminal.end(), 0);
}

TEST_F(Watch, EndsCleanlyWhenItIsTerminated) {
  Terminal terminal(workplace_, {"watch", "ports", "--screen", "--interval", "3600"});
  terminal.read_until("Gbit/s");
  kill(terminal.child(), SIGTERM);
  EXPECT_THAT(terminal.read_until(kFirstScreen), HasSubstr(kFirstScreen));
  EXPECT_EQ(terminal.end(), 0);
}

TEST_F(Watch, DrawsEverythingAfterTheTerminalChangedItsSize) {
  Terminal terminal(workplace_, {"watch", "ports", "--screen", "--interval", "3600"});
  terminal.read_until("Gbit/s");
  terminal.resize(2);
  const auto again = terminal.read_until("more;");
  EXPECT_THAT(again, HasSubstr(kClear));
  terminal.type(kInterrupt);
  EXPECT_THAT(terminal.read_until(kFirstScreen), Not(HasSubstr("\033[3;")));
  EXPECT_EQ(terminal.end(), 0);
}

TEST_F(Watch, SaysHowManyLinesAScreenHasNoRoomFor) {
  struct Case {
    unsigned short lines;
    const char* shown;  // behind the last line of the table
  } const cases[] = {{2, "\033[2;1H...\033[2;5Hand\033[2;9H2\033[2;11Hmore;"}, {3, "\033[3;68H0"}};
  for (const auto& [lines, shown] : cases) {
    SCOPED_TRACE(lines);
    Terminal terminal(workplace_, {"watch", "ports", "--screen", "--interval", "3600"}, lines);
    const auto drawn = terminal.read_until(shown);
    EXPECT_EQ(drawn.find("more;") != std::string::npos, lines < 3);
    terminal.type(kInterrupt);
    terminal.read_until(kFirstScreen);
    EXPECT_EQ(terminal.end(), 0);
  }
}

TEST_F(Watch, BringsTheScreenBackBeforeItFails) {
  Terminal terminal(workplace_, {"watch", "ports", "--screen"});
  terminal.read_until("Gbit/s");
  std::filesystem::remove(workplace_.inventory());
  write_file(workplace_.inventory(), "not a database any more");
  const auto end = terminal.read_until("zymdb: ");
  EXPECT_THAT(end, HasSubstr(kFirstScreen));
  EXPECT_LT(end.find(kFirstScreen), end.find("zymdb: "));
  EXPECT_EQ(terminal.end(), 1);
}

TEST_F(Watch, InAFilePrintsTheTableAnewAfterAChange) {
  // Each step waits for what the one before it printed; only then is the watch interrupted.
  const auto script =
      std::string("shown() { for i in {1..600}; do grep -q \"$1\" out && return; sleep 0.05; done; };") +
      " '" + ZYMDB_TOOL + "' watch ports --screen > out & watch=$!; shown ' up '; '" + ZYMDB_TOOL +
      "' link 3b:00.0 --port 0 --set status=down; shown ' down '; sleep 0.2; kill -INT $watch;" +
      " wait $watch; status=$?; cat out; exit $status";
  const auto outcome =
      run_program({"bash", "-c", "cd '" + workplace_.path("").string() + "'; set -m; " + script},
                  workplace_.with_inventory());
  EXPECT_EQ(outcome.status, 0) << outcome;
  const auto lines = lines_of(outcome.out);
  ASSERT_EQ(lines.size(), 7u) << outcome;
  EXPECT_THAT(lines[0], StartsWith("FUNCTION"));
  EXPECT_THAT(lines[1], HasSubstr(" up "));
  EXPECT_EQ(lines[3], "");
  EXPECT_THAT(lines[5], HasSubstr(" down "));
  EXPECT_THAT(outcome.out, Not(HasSubstr("\033")));
}

// Runs `watch` with the options in the background, then the steps, each of which waits for what the watch
// printed.
class WatchLines : public Watch {
 protected:
  Outcome watch(const std::string& options, const std::string& steps) const {
    const auto script =
        std::string("shown() { for i in {1..600}; do grep -q \"$1\" out && return; sleep 0.05; done; };") +
        " zymdb() { '" + ZYMDB_TOOL + "' \"$@\"; }; : > out; '" + ZYMDB_TOOL + "' watch " + options +
        " > out & watch=$!; for i in {1..600}; do grep -q inotify /proc/$watch/fdinfo/* 2>/dev/null && break;"
        " sleep 0.05; done; sleep 0.3; " +
        steps + "; kill -INT $watch; wait $watch; status=$?; cat out; exit $status";
    return run_program({"bash", "-c", "cd '" + workplace_.path("").string() + "'; set -m; " + script},
                       workplace_.with_inventory());
  }
};

constexpr char kLinkDown[] = "zymdb link 3b:00.0 --port 0 --set status=down; shown down";
constexpr char kLinkUp[] = "zymdb link 3b:00.0 --port 0 --set status=up; shown 'down -> up'";

TEST_F(WatchLines, TellEachChangeInOneLine) {
  const Outcome outcome = watch("", std::string(kLinkDown) + "; " + kLinkUp);
  EXPECT_EQ(outcome.status, 0) << outcome;
  const auto lines = lines_of(outcome.out);
  ASSERT_EQ(lines.size(), 2u) << outcome;
  EXPECT_THAT(lines[0],
              testing::MatchesRegex("20[0-9-]+ [0-9:]+  changed  ports  0000:3b:00.0 0  LINK up -> down"));
  EXPECT_THAT(lines[1],
              testing::MatchesRegex("20[0-9-]+ [0-9:]+  changed  ports  0000:3b:00.0 0  LINK down -> up"));
}

TEST_F(WatchLines, AreOneObjectEachInJson) {
  const Outcome outcome = watch("ports --json", kLinkDown);
  EXPECT_EQ(outcome.status, 0) << outcome;
  const auto lines = lines_of(outcome.out);
  ASSERT_EQ(lines.size(), 1u) << outcome;
  EXPECT_THAT(lines[0], HasSubstr("\"change\":\"changed\",\"class\":\"ports\""));
}

TEST_F(WatchLines, LeaveOutOtherListingsAndWhatIsVolatile) {
  const std::string load = "zymdb link 3b:00.0 --port 1 --set tx=42; ";
  EXPECT_EQ(watch("drives memory", load + "zymdb link 3b:00.0 --port 0 --set status=down; sleep 0.5").out,
            "");
  const Outcome outcome = watch("ports", load + "sleep 0.2; " + kLinkUp);
  EXPECT_EQ(lines_of(outcome.out).size(), 1u) << outcome;
}

TEST_F(WatchLines, TellVolatileChangesWhereAskedFor) {
  const Outcome outcome = watch("ports --volatile", "zymdb link 3b:00.0 --port 1 --set tx=42; shown 42");
  EXPECT_THAT(outcome.out, HasSubstr("TX% 0 -> 42"));
}

// What `watch --log` sends to the system's journal, until the first entry has come after the steps. The
// journal's socket is at one place for the whole system: the listener has that place for itself.
std::string logged(const Workplace& workplace, const std::string& steps) {
  const std::string entries = workplace.path("entries");
  const auto until = [](const std::string& condition) {
    return "for i in {1..600}; do " + condition + " && break; sleep 0.05; done; ";
  };
  const Outcome outcome = run_program(
      {"unshare", "--map-root-user", "--mount", "bash", "-c",
       "entries='" + entries + "'; zymdb() { '" ZYMDB_TOOL "' \"$@\"; }; " +
           "mount -t tmpfs none /run && mkdir -p /run/systemd/journal; " +
           "python3 " ZYMDB_SOURCE_DIR "/tests/tool/journal_listener.py \"$entries\" & listener=$!; " +
           until("[ -e \"$entries\" ]") + "set -m; '" ZYMDB_TOOL "' watch --log & watch=$!; " +
           until("grep -q inotify /proc/$watch/fdinfo/* 2>/dev/null") + "sleep 0.3; " + steps + "; " +
           until("[ -s \"$entries\" ]") +
           "kill -INT $watch; wait $watch; status=$?; kill $listener; exit $status"},
      workplace.with_inventory());
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out, "");
  return read_file(entries);
}

TEST_F(WatchLines, GoToTheSystemsJournalWhereAskedFor) {
  const std::string sent = logged(workplace_, "zymdb link 3b:00.0 --port 0 --set status=down");
  for (const char* field :
       {"MESSAGE=changed  ports  0000:3b:00.0 0  LINK up -> down\n", "PRIORITY=5\n",
        "MESSAGE_ID=3f1b6c0d5a6e4e0f8f5b7f6a1d2c9e05\n", "SYSLOG_IDENTIFIER=zymdb\n",
        "ZYMDB_CHANGE=changed\n", "ZYMDB_CLASS=ports\n", "ZYMDB_PLACE=0000:3b:00.0 0\n", "ZYMDB_GENERATION="})
    EXPECT_THAT(sent, HasSubstr(field));
}

TEST(WatchService, WaitsForTheFirstCollectionAndLogsItAsOneEntry) {
  const Workplace workplace;
  const std::string sent = logged(workplace, "zymdb collect --quiet --lspci '" + example_lspci() +
                                                 "' --smbios '" + example_smbios() + "'");
  EXPECT_THAT(sent, testing::ContainsRegex("MESSAGE=baseline  [0-9]+ parts\n"));
  for (const char* field :
       {"PRIORITY=6\n", "MESSAGE_ID=3f1b6c0d5a6e4e0f8f5b7f6a1d2c9e06\n", "ZYMDB_CHANGE=baseline\n"})
    EXPECT_THAT(sent, HasSubstr(field));
  EXPECT_THAT(sent, Not(HasSubstr("added")));
}

TEST(WatchService, EndsWhileItWaitsForTheFirstCollection) {
  const Workplace workplace;
  const Outcome outcome = run_program(
      {"bash", "-c",
       "set -m; '" ZYMDB_TOOL "' watch --log & watch=$!; for i in {1..600}; do grep -q inotify "
       "/proc/$watch/fdinfo/* 2>/dev/null && break; "
       "sleep 0.05; done; sleep 0.2; kill -WINCH $watch; sleep 0.1; kill -TERM $watch; wait $watch"},
      workplace.with_inventory());
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("cannot open the inventory"));
}

TEST_F(Watch, RefusesWhatDoesNotGoTogether) {
  struct Case {
    Words words;
    const char* reason;
  };
  const Case cases[] = {
      {{"watch", "wheels"}, "wheels"},
      {{"watch", "--screen"}, "--screen shows one listing: name it"},
      {{"watch", "ports", "drives", "--screen"}, "--screen shows one listing: name it"},
      {{"watch", "ports", "--screen", "--json"}, "--json"},
      {{"watch", "drives", "--screen", "--adapter", "slot 3"}, "--function and --adapter are for"},
      {{"watch", "ports", "--adapter", "slot 3"}, "--function and --adapter are for"}};
  for (const auto& [words, reason] : cases) {
    const Outcome outcome = workplace_.tool(words);
    EXPECT_EQ(outcome.status, 2) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr(reason));
    EXPECT_EQ(lines_of(outcome.err).size(), 1u) << outcome;
  }
}

}  // namespace
}  // namespace zymdb::test
