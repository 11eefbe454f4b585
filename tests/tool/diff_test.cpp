// zymdb diff, history, snapshot, export and show --at, as a user runs them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "support/parsing_marker.h"
#include "tool/failing.h"
#include "tool/rows.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

// The example server, one of whose drives is another by now.
class Changes : public testing::Test {
 protected:
  Changes() {
    run_program({"python3", ZYMDB_SOURCE_DIR "/data/example-server/system_tree.py", tree()});
    collect();
    ok({"snapshot", file("before.snapshot")});
    ok({"export"}, &before_);
    std::ofstream(tree() + "/class/nvme/nvme0/serial") << "REPLACED1\n";
    collect();
  }

  std::string tree() const { return workplace_.path("tree"); }
  std::string file(const char* name) const { return workplace_.path(name); }
  std::string inventory() const { return workplace_.inventory(); }

  void collect() const { ok({"collect", "--quiet", "--sysfs", tree()}); }

  void ok(const Words& words, std::string* out = nullptr) const {
    const Outcome outcome = workplace_.tool(words);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_THAT(outcome.err, IsEmpty());
    if (out != nullptr) *out = outcome.out;
  }
  std::string output(const Words& words) const {
    std::string out;
    ok(words, &out);
    return out;
  }

  void fails(const Words& words, int status, const std::string& reason) const {
    expect_one_line(workplace_.tool(words), status, reason);
  }

  ParsingMarker marker_;  // nobody stores settings meanwhile
  Workplace workplace_;
  std::string before_;  // the export
};

constexpr char kReplaced[] = "replaced drives +Bay [0-9]+ .*S64[0-9A-Z]+.* -> .*REPLACED1.*";

TEST_F(Changes, AreToldOfASnapshotAndAnInventory) {
  const auto lines = lines_of(output({"diff", file("before.snapshot"), inventory()}));
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_THAT(lines[0], MatchesRegex("CHANGE +CLASS +PLACE +WHAT"));
  EXPECT_THAT(lines[1], MatchesRegex(kReplaced));
}

TEST_F(Changes, AreTheSameForEveryFormOfAnInventory) {
  std::ofstream(file("before.json")) << before_;
  const std::string expected = output({"diff", file("before.snapshot"), inventory()});
  ok({"snapshot", file("after.snapshot")});
  EXPECT_EQ(output({"diff", file("before.json"), inventory()}), expected);
  EXPECT_EQ(output({"diff", file("before.json"), file("after.snapshot")}), expected);
  for (const char* piped : {"before.json", "before.snapshot"}) {
    const Outcome outcome =
        run_program({"sh", "-c", std::string(ZYMDB_TOOL) + " diff - " + inventory() + " <" + file(piped)});
    EXPECT_EQ(outcome.out, expected) << outcome;
  }
}

TEST_F(Changes, AreToldAsJson) {
  const auto json = nlohmann::json::parse(output({"diff", file("before.snapshot"), inventory(), "--json"}));
  EXPECT_EQ(json["format_version"], 1);
  ASSERT_EQ(json["changes"].size(), 1u);
  EXPECT_EQ(json["changes"][0]["change"], "replaced");
  EXPECT_EQ(json["changes"][0]["class"], "drives");
  EXPECT_EQ(json["changes"][0]["fields"][0]["field"], "SerialNo");
  EXPECT_EQ(json["changes"][0]["fields"][0]["after"], "REPLACED1");
}

TEST_F(Changes, AreAnExitStatusWhereAskedFor) {
  EXPECT_EQ(workplace_.tool({"diff", file("before.snapshot"), inventory(), "--exit-code"}).status, 1);
  EXPECT_EQ(workplace_.tool({"diff", inventory(), inventory(), "--exit-code"}).status, 0);
}

TEST_F(Changes, OfTwoMachinesAreToldByPlace) {
  EXPECT_THAT(lines_of(output({"diff", file("before.snapshot"), inventory(), "--by-place"})), SizeIs(1));
}

TEST_F(Changes, AreHistory) {
  const auto lines = lines_of(output({"history"}));
  ASSERT_THAT(lines, SizeIs(3));
  EXPECT_THAT(lines[1], MatchesRegex("20[0-9-]+ [0-9:]+ +1 baseline +[0-9]+ parts"));
  EXPECT_THAT(lines[2], MatchesRegex(std::string("20[0-9-]+ [0-9:]+ +2 ") + kReplaced));
}

TEST_F(Changes, AreHistoryOfOnePart) {
  EXPECT_THAT(lines_of(output({"history", "--of", "replaced1"})), SizeIs(2));
  EXPECT_THAT(lines_of(output({"history", "--of", "nothing"})), SizeIs(1));
}

TEST_F(Changes, AreHistorySinceATime) {
  EXPECT_THAT(lines_of(output({"history", "--since", "1h"})), SizeIs(3));
  EXPECT_THAT(lines_of(output({"history", "--since", "2000-01-01"})), SizeIs(3));
  EXPECT_THAT(lines_of(output({"history", "--since", "2100-01-01"})), SizeIs(1));
}

TEST_F(Changes, AreHistoryAsOneObjectALine) {
  const auto lines = lines_of(output({"history", "--json"}));
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_EQ(nlohmann::json::parse(lines[0])["change"], "baseline");
  EXPECT_EQ(nlohmann::json::parse(lines[1])["change"], "replaced");
  EXPECT_EQ(nlohmann::json::parse(lines[1])["generation"], 2);
}

TEST_F(Changes, CanBeLookedBehind) {
  EXPECT_THAT(output({"show", "drives"}), HasSubstr("REPLACED1"));
  EXPECT_THAT(output({"show", "drives", "--at", "1"}), testing::Not(HasSubstr("REPLACED1")));
  EXPECT_THAT(output({"show", "drives", "--at", "0"}), testing::Not(HasSubstr("Bay")));
  EXPECT_THAT(output({"show", "drives", "--at", "2100-01-01 12:00"}), HasSubstr("REPLACED1"));
  EXPECT_THAT(output({"show", "drives"}), HasSubstr("REPLACED1"));
}

TEST_F(Changes, CannotBeLookedBehindTheJournal) {
  fails({"show", "drives", "--at", "3"}, 1, "the newest generation is 2");
  fails({"show", "drives", "--at", "2000-01-01"}, 1,
        "the inventory's journal does not reach back to 2000-01-01");
  for (const char* moment : {"yesterday", "2026-02-30", "2026-13-01", "-1", "1x", ""})
    fails({"show", "drives", "--at", moment}, 2, "--at");
  fails({"history", "--since", "yesterday"}, 2, "'yesterday' is no time");
}

TEST_F(Changes, OfWhatIsNoInventoryAreOneLineAndChangeNothing) {
  const std::string snapshot = read_file(file("before.snapshot"));
  write_file(file("cut.snapshot"), snapshot.substr(0, snapshot.size() / 2));
  write_file(file("letter"), "Dear reader");
  write_file(file("unlike.json"), "{\"format_version\":2}");
  write_file(file("newer.json"), "{\"format_version\":99}");
  const std::string before = read_file(inventory());
  fails({"diff", file("cut.snapshot"), inventory()}, 2, "cut.snapshot: the snapshot is cut short");
  fails({"diff", inventory(), file("letter")}, 2, "letter: not JSON, or cut short");
  fails({"diff", inventory(), file("missing")}, 2, "missing: No such file");
  fails({"diff", inventory(), file("unlike.json")}, 2, "nothing in common");
  fails({"diff", inventory(), file("newer.json")}, 2, "format_version 99 is newer");
  fails({"diff", "-", "-"}, 2, "only one of the two");
  fails({"show", "drives", "--inventory", file("cut.snapshot")}, 1,
        "cut.snapshot: the snapshot is cut short");
  EXPECT_EQ(read_file(inventory()), before);
}

TEST_F(Changes, ASnapshotIsAnInventoryForReaders) {
  const std::string snapshot = file("before.snapshot");
  const std::string before = read_file(snapshot);
  EXPECT_THAT(output({"show", "drives", "--inventory", snapshot}), HasSubstr("Bay"));
  EXPECT_THAT(lines_of(output({"history", "--inventory", snapshot})), SizeIs(2));
  EXPECT_EQ(output({"export", "--inventory", snapshot}), before_);
  fails({"collect", "--quiet", "--sysfs", tree(), "--inventory", snapshot}, 1,
        "is a snapshot, which can only be read");
  fails({"init", "--inventory", snapshot}, 1, "is a snapshot, which can only be read");
  fails({"merge", "--inventory", snapshot}, 1, "is a snapshot, which can only be read");
  EXPECT_EQ(read_file(snapshot), before);
}

TEST_F(Changes, ASnapshotTellsWhatItIsOf) {
  EXPECT_THAT(output({"snapshot", file("new.snapshot")}),
              MatchesRegex(".*new.snapshot: generation 2 of Example Systems .*\n"));
  const auto header = nlohmann::json::parse(lines_of(read_file(file("new.snapshot")))[0]);
  EXPECT_EQ(header["generation"], 2);
  EXPECT_THAT(header["system"].get<std::string>(), HasSubstr("ES2240-000017"));
  fails({"snapshot", file("new.snapshot")}, 1, "new.snapshot: File exists");
  fails({"snapshot", file("missing/new.snapshot")}, 1, "No such file");
}

TEST_F(Changes, LeaveNothingBehind) {
  create_directory(workplace_.path("scratch"));
  const Setting setting{.environment = {{"TMPDIR", workplace_.path("scratch")}}};
  for (const Words& words : {Words{"history"}, Words{"diff", file("before.snapshot"), inventory()},
                             Words{"show", "drives", "--at", "1"}, Words{"snapshot", file("b.snapshot")}})
    EXPECT_EQ(workplace_.tool(words, setting).status, 0);
  EXPECT_TRUE(is_empty(workplace_.path("scratch")));
}

TEST_F(Changes, ThatWereDroppedAreTold) {
  const Setting setting{.environment = {{"ZYMDB_HISTORY", "1K"}}};
  for (int i = 0; i < 40; ++i) {
    const char* const state = i % 2 == 0 ? "status=down" : "status=up";
    ASSERT_EQ(workplace_.tool({"link", "0000:17:00.0", "--set", state}, setting).status, 0);
  }
  const Outcome outcome = workplace_.tool({"history"});
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.err,
              MatchesRegex("zymdb: earlier changes were dropped: the journal begins with generation [0-9]+, "
                           "20[0-9-]+ [0-9:]+\n"));
  EXPECT_THAT(outcome.out, HasSubstr("LINK up -> down"));
  EXPECT_THAT(outcome.out, testing::Not(HasSubstr("baseline")));
}

}  // namespace
}  // namespace zymdb::test
