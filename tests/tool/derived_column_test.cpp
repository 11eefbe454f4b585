// Columns that say in words what the record says in codes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(ProcessorState, IsWhatTheStatusCodeSays) {
  const std::pair<unsigned, const char*> kStates[] = {
      {0x41, "enabled"},
      {0x42, "disabled by user"},
      {0x43, "disabled by firmware"},
      {0x44, "idle"},
      {0x47, "other"},
      {0x40, "unknown"},
      {0x45, "unknown"},
      {0x01, "empty"},
      {0x00, ""},
  };
  const Workplace workplace;
  std::vector<std::string> states;
  for (const auto& [status, state] : kStates) {
    insert_row(workplace, "Processor", {{"Status", status}});
    states.emplace_back(state);
  }
  EXPECT_THAT(column(workplace, listing("processors"), "STATE"), ElementsAreArray(states));
}

TEST(ProcessorVoltage, IsInVoltsWhereTheCodeIsInTenths) {
  const Workplace workplace;
  insert_row(workplace, "Processor", {{"Voltage", 0x80u + 18}});
  insert_row(workplace, "Processor", {{"Voltage", 0x80u + 9}});
  insert_row(workplace, "Processor", {{"Voltage", 0x02u}});
  insert_row(workplace, "Processor", {{"Version", "without"}});
  EXPECT_THAT(column(workplace, listing("processors"), "VOLTS"), ElementsAre("1.8 V", "0.9 V", "", ""));
}

void insert_function(const Workplace& workplace, unsigned number, std::vector<ColumnValue> row) {
  row.insert(row.end(),
             {{"FunKey", number}, {"SegNo", 0u}, {"BusNo", 0u}, {"DeviceNo", 0u}, {"FunctionNo", number}});
  insert_row(workplace, "PCIs", row);
}

TEST(FunctionLink, IsShortWhereTheLinkIsAsGoodAsItGets) {
  const Workplace workplace;
  insert_function(workplace, 0,
                  {{"LanesInUse", 16u}, {"MaxLanes", 16u}, {"PCIeType", 4u}, {"MaxPCIeType", 4u}});
  insert_function(workplace, 1,
                  {{"LanesInUse", 8u}, {"MaxLanes", 16u}, {"PCIeType", 3u}, {"MaxPCIeType", 5u}});
  EXPECT_THAT(column(workplace, listing("functions"), "LINK"), ElementsAre("x16 gen4", "x8/16 gen3/5"));
}

// A root port and the card behind it, with their lanes in use, their most lanes, and the same of generations.
void insert_pair(const Workplace& workplace, const unsigned (&port)[4], const unsigned (&card)[4]) {
  constexpr unsigned kPort = 1, kCard = 2;
  insert_function(workplace, kPort,
                  {{"ClsCode", 0x060400u},
                   {"LanesInUse", port[0]},
                   {"MaxLanes", port[1]},
                   {"PCIeType", port[2]},
                   {"MaxPCIeType", port[3]}});
  insert_function(workplace, kCard,
                  {{"BridgeId", kPort},
                   {"LanesInUse", card[0]},
                   {"MaxLanes", card[1]},
                   {"PCIeType", card[2]},
                   {"MaxPCIeType", card[3]}});
}

// The links of a table in colour that are marked.
std::vector<std::string> marked_links(const Workplace& workplace) {
  constexpr std::string_view kWarning = "\033[33m";
  const auto outcome =
      workplace.tool({"show", "functions", "--columns", "LINK", "--color", "always", "--no-headings"});
  EXPECT_EQ(outcome.status, 0) << outcome;
  std::vector<std::string> marked;
  for (const auto& line : lines_of(outcome.out)) {
    if (const auto mark = line.find(kWarning); mark != std::string::npos)
      marked.push_back(
          stripped(line.substr(mark + kWarning.size(), line.rfind('\033') - mark - kWarning.size())));
  }
  return marked;
}

TEST(FunctionLink, OfASlowCardInAFastSlotIsNoWarning) {
  const Workplace workplace;
  insert_pair(workplace, {4, 16, 3, 5}, {4, 4, 3, 3});
  EXPECT_THAT(column(workplace, listing("functions"), "LINK"), ElementsAre("x4/16 gen3/5", "x4 gen3"));
  EXPECT_THAT(column(workplace, listing("functions"), "LINKSTATE"), ElementsAre("full", "full"));
  EXPECT_THAT(marked_links(workplace), testing::IsEmpty());
}

TEST(FunctionLink, ThatIsWorseThanBothEndsCanDoIsAWarning) {
  const Workplace workplace;
  insert_pair(workplace, {8, 16, 4, 4}, {8, 16, 4, 4});
  EXPECT_THAT(column(workplace, listing("functions"), "LINKSTATE"), ElementsAre("reduced", "reduced"));
  EXPECT_THAT(marked_links(workplace), ElementsAre("x8/16 gen4", "x8/16 gen4"));
}

TEST(FunctionLink, OfAnEmptyPortIsDownAndNoWarning) {
  const Workplace workplace;
  insert_function(
      workplace, 1,
      {{"ClsCode", 0x060400u}, {"LanesInUse", 0u}, {"MaxLanes", 16u}, {"PCIeType", 1u}, {"MaxPCIeType", 4u}});
  EXPECT_THAT(column(workplace, listing("functions"), "LINKSTATE"), ElementsAre("down"));
  EXPECT_THAT(marked_links(workplace), testing::IsEmpty());
}

TEST(FunctionLink, IsNeverReducedWhereNobodyKnowsIt) {
  const Workplace workplace;
  workplace.collect_example();
  size_t without = 0;
  for (const auto& function : records(workplace, listing("functions"))) {
    EXPECT_NE(function.at("LinkState"), "reduced") << function;
    EXPECT_EQ(function.at("LinkState").is_null(), function.at("MaxLanes") == 0) << function;
    without += function.at("MaxLanes") == 0 ? 1 : 0;
  }
  EXPECT_GT(without, 0u);
  EXPECT_THAT(marked_links(workplace), testing::IsEmpty());
}

TEST(FunctionLink, ALinkThatNobodyHasSeenIsNotShown) {
  const Workplace workplace;
  insert_function(workplace, 0, {});
  insert_function(workplace, 1,
                  {{"LanesInUse", 0u}, {"MaxLanes", 8u}, {"PCIeType", 3u}, {"MaxPCIeType", 3u}});
  EXPECT_THAT(column(workplace, listing("functions"), "LINK"), ElementsAre("", ""));
}

TEST(FunctionBridge, AtTheFirstAddressOfAllIsNoRoot) {
  const Workplace workplace;
  insert_function(workplace, 0, {});
  insert_function(workplace, 1, {{"BridgeId", 0u}});
  EXPECT_THAT(column(workplace, listing("functions"), "BRIDGE"), ElementsAre("", "0000:00:00.0"));
  EXPECT_THAT(column(workplace, listing("functions"), "BRIDGEID"), ElementsAre("", "0x00000000"));
  const auto rows = records(workplace, listing("functions"));
  EXPECT_TRUE(rows[0].at("Bridge").is_null());
  EXPECT_TRUE(rows[0].at("BridgeId").is_null());
  EXPECT_EQ(rows[1].at("Bridge"), "0000:00:00.0");
  EXPECT_EQ(rows[1].at("BridgeId"), 0);
}

TEST(FunctionPlace, IsTheBoardASlotOrABay) {
  const Workplace workplace;
  insert_function(workplace, 0, {{"Location", 0u}});
  insert_function(workplace, 1, {{"Location", 1u}, {"SlotNo", 3u}});
  insert_function(workplace, 2, {{"Location", 2u}, {"SlotNo", 12u}});
  insert_function(workplace, 3, {{"Location", 7u}, {"SlotNo", 1u}});
  EXPECT_THAT(column(workplace, listing("functions"), "PLACE"),
              ElementsAre("on board", "slot 3", "bay 12", "location 7 number 1"));
}

TEST(FunctionIds, AreShownAsTheirFieldsSay) {
  const Workplace workplace;
  insert_function(workplace, 2,
                  {{"VendorId", 0x15b3u},
                   {"DeviceId", 0xa2d6u},
                   {"SubVendorId", 0x15b3u},
                   {"SubDeviceId", 0x61u},
                   {"BridgeId", 0x01020304u}});
  insert_function(workplace, 3, {{"VendorId", 0x8086u}, {"DeviceId", 0x1u}});
  EXPECT_THAT(column(workplace, listing("functions"), "ID"), ElementsAre("15b3:a2d6", "8086:0001"));
  EXPECT_THAT(column(workplace, listing("functions"), "SUBID"), ElementsAre("15b3:0061", ""));
  EXPECT_THAT(column(workplace, listing("functions"), "BRIDGE"), ElementsAre("0001:02:03.4", ""));
  EXPECT_THAT(column(workplace, listing("functions"), "ADDRESS"),
              ElementsAre("0000:00:00.2", "0000:00:00.3"));
}

TEST(FunctionName, FallsBackToTheClassAndToNothing) {
  const Workplace workplace;
  const auto list = workplace.path("own.ids").string();
  write_file(list, "15b3  Maker\n\ta2d6  Data Processor\nC 02  Networking\n\t00  Wired\n");
  insert_function(workplace, 0, {{"VendorId", 0x15b3u}, {"DeviceId", 0xa2d6u}, {"ClsCode", 0x020000u}});
  insert_function(workplace, 1, {{"VendorId", 0x15b3u}, {"DeviceId", 0x0001u}, {"ClsCode", 0x020000u}});
  insert_function(workplace, 2, {{"VendorId", 0x0001u}, {"DeviceId", 0x0001u}, {"ClsCode", 0x028000u}});
  insert_function(workplace, 3, {{"VendorId", 0x0001u}, {"DeviceId", 0x0001u}, {"ClsCode", 0x010000u}});
  const auto table =
      workplace.tool({"show", "functions", "--no-headings", "--columns", "NAME", "--pci-ids", list}).out;
  std::vector<std::string> names;
  for (const auto& line : lines_of(table)) names.push_back(stripped(line));
  EXPECT_THAT(names, ElementsAre("Maker Data Processor", "Maker Wired", "Networking", ""));
}

}  // namespace
}  // namespace zymdb::test
