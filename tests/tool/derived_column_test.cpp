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
  EXPECT_THAT(column(workplace, kListings[0], "STATE"), ElementsAreArray(states));
}

TEST(ProcessorVoltage, IsInVoltsWhereTheCodeIsInTenths) {
  const Workplace workplace;
  insert_row(workplace, "Processor", {{"Voltage", 0x80u + 18}});
  insert_row(workplace, "Processor", {{"Voltage", 0x80u + 9}});
  insert_row(workplace, "Processor", {{"Voltage", 0x02u}});
  insert_row(workplace, "Processor", {{"Version", "without"}});
  EXPECT_THAT(column(workplace, kListings[0], "VOLTS"), ElementsAre("1.8 V", "0.9 V", "", ""));
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
  EXPECT_THAT(column(workplace, kListings[2], "LINK"), ElementsAre("x16 gen4", "x8/16 gen3/5"));
}

TEST(FunctionLink, ALinkThatNobodyHasSeenIsNotShown) {
  const Workplace workplace;
  insert_function(workplace, 0, {});
  insert_function(workplace, 1,
                  {{"LanesInUse", 0u}, {"MaxLanes", 8u}, {"PCIeType", 3u}, {"MaxPCIeType", 3u}});
  EXPECT_THAT(column(workplace, kListings[2], "LINK"), ElementsAre("", ""));
}

TEST(FunctionPlace, IsTheBoardASlotOrABay) {
  const Workplace workplace;
  insert_function(workplace, 0, {{"Location", 0u}});
  insert_function(workplace, 1, {{"Location", 1u}, {"SlotNo", 3u}});
  insert_function(workplace, 2, {{"Location", 2u}, {"SlotNo", 12u}});
  insert_function(workplace, 3, {{"Location", 7u}, {"SlotNo", 1u}});
  EXPECT_THAT(column(workplace, kListings[2], "PLACE"),
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
  EXPECT_THAT(column(workplace, kListings[2], "ID"), ElementsAre("15b3:a2d6", "8086:0001"));
  EXPECT_THAT(column(workplace, kListings[2], "SUBID"), ElementsAre("15b3:0061", ""));
  EXPECT_THAT(column(workplace, kListings[2], "BRIDGE"), ElementsAre("0001:02:03.4", ""));
  EXPECT_THAT(column(workplace, kListings[2], "ADDRESS"), ElementsAre("0000:00:00.2", "0000:00:00.3"));
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
