// Network ports as users see them: `show ports`, `show logical-ports` and `link`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// Every command that takes a function, up to that.
const Words kOfOneFunction[] = {{"link"},
                                {"show", "ports", "--function"},
                                {"show", "logical-ports", "--function"},
                                {"show", "drives", "--function"},
                                {"settings", "list"},
                                {"watch", "ports", "--screen", "--function"}};

// The example server with its ports.
class Ports : public testing::Test {
 protected:
  Ports() { workplace_.collect_example_system(); }

  // One column of the ports that the options select.
  Words shown(const Words& options, const std::string& column) const {
    Words command{"show", "ports", "--no-headings", "--columns", column};
    command.insert(command.end(), options.begin(), options.end());
    const auto outcome = workplace_.tool(command);
    EXPECT_EQ(outcome.status, 0) << outcome;
    Words cells = lines_of(outcome.out);
    for (auto& cell : cells) cell = stripped(cell);
    return cells;
  }

  // What `link` prints, without its headings.
  std::string link(Words options) const {
    options.insert(options.begin(), "link");
    const auto outcome = workplace_.tool(options);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_THAT(outcome.err, IsEmpty());
    const auto lines = lines_of(outcome.out);
    return lines.size() < 2 ? "" : stripped(lines[1]);
  }

  // A second port of the first fast function, in every table that a port has a row in.
  void add_second_port() const {
    insert_row(workplace_, "PCINetwork", {{"PCIFuncKey", 0x170000u}, {"NumberofPhysicalPorts", 1u}});
    insert_row(workplace_, "PCIPhysicalPort", {{"PCIFuncKey", 0x170000u}, {"Idx", 1u}});
    insert_row(workplace_, "PCIPhysicalPortStat",
               {{"PCIFuncKey", 0x170000u}, {"Idx", 1u}, {"LinkStatus", 2u}});
  }

  Workplace workplace_;
};

TEST_F(Ports, AreListedFunctionByFunction) {
  EXPECT_THAT(shown({}, "FUNCTION"), SizeIs(12));
  EXPECT_THAT(shown({"--function", "17:00.0"}, "ADDRESS"), ElementsAre("B8:CE:F6:00:20:00"));
  EXPECT_THAT(shown({"--function", "0000:17:00.1"}, "ADDRESS"), ElementsAre("B8:CE:F6:00:20:01"));
  EXPECT_THAT(shown({"--function", "0x170001"}, "ADDRESS"), ElementsAre("B8:CE:F6:00:20:01"));
  EXPECT_THAT(shown({"--adapter", "slot 1"}, "SPEED"), ElementsAre("100 Gbit/s", "100 Gbit/s"));
  EXPECT_THAT(shown({"--adapter", "0x40000"}, "LINK"), ElementsAre("up", "down"));
  EXPECT_THAT(shown({"--adapter", "slot 2"}, "LINK"), IsEmpty());
}

TEST_F(Ports, OfAnAdapterThatIsNotThereAreAFailure) {
  const auto outcome = workplace_.tool({"show", "ports", "--adapter", "slot 99"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("there is no adapter 'slot 99'"));
}

TEST_F(Ports, OfSomethingThatIsNoFunctionAreWrongUsage) {
  for (const char* function :
       {"nonsense", "3b-", "0x", "170000g", "17:00", "4294967296", "zz:00.0", "17:00.8", ""}) {
    for (Words command : kOfOneFunction) {
      command.emplace_back(function);
      const auto outcome = workplace_.tool(command);
      EXPECT_EQ(outcome.status, 2) << testing::PrintToString(command);
      EXPECT_THAT(outcome.err, HasSubstr("'" + std::string(function) +
                                         "' is neither an address like 0000:3b:00.0 nor a key"));
    }
  }
}

TEST_F(Ports, OfAFunctionThatIsNotThereAreAFailure) {
  for (const char* function : {"3f:00.0", "0x3f0000", "4128768"}) {
    for (Words command : kOfOneFunction) {
      command.emplace_back(function);
      const auto outcome = workplace_.tool(command);
      EXPECT_EQ(outcome.status, 1) << testing::PrintToString(command);
      EXPECT_EQ(outcome.err, "zymdb: there is no function 0000:3f:00.0 in the inventory\n");
      EXPECT_THAT(outcome.out, IsEmpty());
    }
  }
}

// What looks like an address without its marks is no key: 4b0000 would be the function 4 of the host bridge.
TEST_F(Ports, AreNotThoseOfAnotherFunctionForWantOfAColon) {
  for (Words command : kOfOneFunction) {
    command.emplace_back("4b0000");
    EXPECT_EQ(workplace_.tool(command).status, 2) << testing::PrintToString(command);
  }
}

TEST_F(Ports, OfAnAdapterWhoseKeyIsOnlyBegunAreAFailure) {
  for (const char* adapter : {"0x40000z", "262144 ", "262144:1", "0x"}) {
    const auto outcome = workplace_.tool({"show", "ports", "--adapter", adapter});
    EXPECT_EQ(outcome.status, 1) << adapter;
    EXPECT_EQ(outcome.err, "zymdb: there is no adapter '" + std::string(adapter) + "' in the inventory\n");
  }
  EXPECT_THAT(shown({"--adapter", "262144"}, "LINK"), ElementsAre("up", "down"));
}

TEST_F(Ports, OfAnEmptyNameAreNotThoseOfEveryAdapter) {
  const auto outcome = workplace_.tool({"show", "ports", "--adapter", ""});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("--adapter: an empty name names no adapter"));
}

TEST_F(Ports, ALinkIsPrintedAndWritten) {
  EXPECT_EQ(link({"17:00.0"}), "0 up   100 Gbit/s   0   0");
  EXPECT_EQ(link({"17:00.0", "--set", "status=down", "speed=0"}), "");
  EXPECT_EQ(link({"17:00.0", "--port", "0"}), "0 down         0   0");
  EXPECT_EQ(link({"17:00.0", "--set", "tx=30"}), "");
  EXPECT_EQ(link({"0x170000"}), "0 down        30   0");
  EXPECT_EQ(link({"17:00.1"}), "0 up   100 Gbit/s   0   0");
}

TEST_F(Ports, ALinkOfSeveralNeedsItsPort) {
  add_second_port();
  const auto outcome = workplace_.tool({"link", "17:00.0"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("see --port"));
  EXPECT_EQ(link({"17:00.0", "--port", "1"}), "1 down         0   0");
  EXPECT_EQ(link({"17:00.0", "--port", "1", "--set", "status=7"}), "");
  EXPECT_EQ(link({"17:00.0", "--port", "1"}), "1 state 7         0   0");
}

// The library logs an error for each port that it passes on its way.
TEST_F(Ports, ALinkIsPrintedWhateverIsLogged) {
  add_second_port();
  const auto logged =
      workplace_.tool({"link", "17:00.0", "--port", "1"}, {.environment = {{"ZYMDB_LOG", "stderr"}}});
  EXPECT_EQ(logged.status, 0) << logged;
  EXPECT_THAT(logged.err, HasSubstr("Find a physical port"));
  EXPECT_THAT(logged.out, HasSubstr("1 down"));
}

TEST_F(Ports, ALinkThatIsNotThereIsAFailure) {
  for (const Words& command : {Words{"link", "17:00.0", "--port", "5"}, Words{"link", "00:1f.0"},
                               Words{"link", "17:00.0", "--port", "5", "--set", "tx=1"}}) {
    const auto outcome = workplace_.tool(command);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("the inventory has no state of"));
  }
}

TEST_F(Ports, WhatALinkCannotBeSetToIsWrongUsageAndWritesNothing) {
  for (const char* change : {"status", "status=", "status=sideways", "speed=fast", "tx=-1", "rx=1%",
                             "color=red", "=1", "speed=4294967296"}) {
    const auto outcome = workplace_.tool({"link", "17:00.0", "--set", "speed=1", change});
    EXPECT_EQ(outcome.status, 2) << change;
    EXPECT_THAT(outcome.err, HasSubstr("--set")) << change;
  }
  EXPECT_EQ(link({"17:00.0"}), "0 up   100 Gbit/s   0   0");
}

}  // namespace
}  // namespace zymdb::test
