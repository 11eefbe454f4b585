// What `show memory` says in words.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/listing_case.h"
#include "tool/rows.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;

const ListingCase& kMemory = listing("memory");

TEST(MemorySize, IsInGibibytesWhereItIsAWholeNumberOfThem) {
  const Workplace workplace;
  insert_row(workplace, "Memory", {{"MemSize", 65536u}, {"MemType", 26u}});
  insert_row(workplace, "Memory", {{"MemSize", 129408u}, {"MemType", 31u}});
  insert_row(workplace, "Memory", {{"MemType", 26u}});
  insert_row(workplace, "Memory", {{"MemSize", 0u}});
  EXPECT_THAT(column(workplace, kMemory, "SIZE"), ElementsAre("64 GiB", "129408 MiB", "", "empty"));
}

TEST(MemoryType, IsTheNameOfItsCode) {
  const Workplace workplace;
  for (const unsigned code : {0u, 2u, 24u, 26u, 31u, 34u, 36u, 37u, 255u})
    insert_row(workplace, "Memory", {{"MemType", code}});
  EXPECT_THAT(column(workplace, kMemory, "TYPE"),
              ElementsAre("", "", "DDR3", "DDR4", "persistent", "DDR5", "HBM3", "", ""));
}

TEST(MemoryHealth, IsShownWhereTheModuleSaysThatItsValuesAreValid) {
  const Workplace workplace;
  insert_row(workplace, "Memory", {{"InfoMask", 1u}, {"HealthStatus", 2u}, {"SecurityState", 6u}});
  insert_row(workplace, "Memory", {{"InfoMask", 1u}, {"HealthStatus", 3u}, {"SecurityState", 0x20u}});
  insert_row(workplace, "Memory", {{"InfoMask", 0u}, {"HealthStatus", 2u}});
  EXPECT_THAT(column(workplace, kMemory, "HEALTH"), ElementsAre("Critical", "others(0x3)", ""));
  EXPECT_THAT(column(workplace, kMemory, "SECURITY"), ElementsAre("Locked", "Not Supported", ""));
}

TEST(MemoryLocator, IsTheBoardsNameAloneWhereItIsTheOnlyOne) {
  const Workplace workplace;
  for (const char* name : {"DIMM A1", "DIMM A2"})
    insert_row(workplace, "Memory", {{"DevLocator", name}, {"BankLocator", "BANK 0"}});
  EXPECT_THAT(column(workplace, kMemory, "LOCATOR"), ElementsAre("DIMM A1", "DIMM A2"));
}

TEST(MemoryLocator, HasTheBankInFrontWhereSeveralPositionsHaveOneName) {
  const Workplace workplace;
  for (const char* bank : {"P0 CHANNEL A", "P0 CHANNEL B", ""})
    insert_row(workplace, "Memory", {{"DevLocator", "DIMM 0"}, {"BankLocator", bank}});
  insert_row(workplace, "Memory", {{"DevLocator", "DIMM 1"}, {"BankLocator", "P0 CHANNEL A"}});
  EXPECT_THAT(column(workplace, kMemory, "LOCATOR"),
              ElementsAre("P0 CHANNEL A DIMM 0", "P0 CHANNEL B DIMM 0", "DIMM 0", "DIMM 1"));
  EXPECT_THAT(column(workplace, kMemory, "DEVLOCATOR"), ElementsAre("DIMM 0", "DIMM 0", "DIMM 0", "DIMM 1"));
}

TEST(MemoryRows, ComeInTheOrderOfTheirSlots) {
  const Workplace workplace;
  for (const unsigned slot : {2u, 3u, 1u}) insert_row(workplace, "Memory", {{"SlotNo", slot}});
  EXPECT_THAT(column(workplace, kMemory, "SLOT"), ElementsAre("1", "2", "3"));
}

}  // namespace
}  // namespace zymdb::test
