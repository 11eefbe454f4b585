// `show gpus` and `show cards`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/listing_case.h"
#include "tool/rows.h"
#include "zymdb_pci.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const ListingCase& kGpus = listing("gpus");
const ListingCase& kCards = listing("cards");

// Functions 0 and 1 on bus 1.
void insert_functions(const Workplace& workplace) {
  for (const unsigned function : {0u, 1u})
    insert_row(workplace, "PCIs",
               {{"FunKey", 0x010000 + function},
                {"BusNo", 1u},
                {"FunctionNo", function},
                {"SegNo", 0u},
                {"DeviceNo", 0u}});
}

TEST(Gpus, AreOneRowForEachChipOrFunction) {
  const Workplace workplace;
  insert_functions(workplace);
  insert_row(workplace, "PCIGPU", {{"PCIFuncKey", 0x010000u}, {"VideoMemorySize", "40960"}});
  for (const unsigned index : {1u, 0u})
    insert_row(workplace, "PCIGPUChip", {{"PCIFuncKey", 0x010000u}, {"GPUChipIndex", index}});
  insert_row(workplace, "PCIGPU", {{"PCIFuncKey", 0x010001u}, {"VideoMemorySize", "8 GB"}});
  EXPECT_THAT(column(workplace, kGpus, "FUNCTION"),
              ElementsAre("0000:01:00.0", "0000:01:00.0", "0000:01:00.1"));
  EXPECT_THAT(column(workplace, kGpus, "INDEX"), ElementsAre("0", "1", "0"));
  EXPECT_THAT(column(workplace, kGpus, "MEMORY"), ElementsAre("40 GiB", "40 GiB", "8 GB"));
}

TEST(Cards, AreThoseOfTheLibrary) {
  const Workplace workplace;
  const auto cards = records(workplace, kCards);
  ASSERT_THAT(cards, SizeIs(37));
  for (size_t i = 0; i < cards.size(); ++i) {
    EXPECT_EQ(cards[i].at("CardName"), hc_card_table[i].CardName);
    EXPECT_EQ(cards[i].at("DeviceId"), hc_card_table[i].DeviceId);
    // What the table leaves out is not known.
    const auto& power = cards[i].at("BoardPower");
    EXPECT_EQ(power, hc_card_table[i].BoardPower == 0 ? Json() : Json(hc_card_table[i].BoardPower));
  }
}

TEST(Cards, NeedNoInventory) {
  const auto outcome = run_tool({"show", "cards", "--inventory", "/nonexistent/inventory.db"});
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(lines_of(outcome.out), SizeIs(38));
}

std::vector<std::string> names_matching(const std::string& ids) {
  const auto outcome = run_tool({"show", "cards", "--no-headings", "--columns", "NAME", "--match", ids});
  EXPECT_EQ(outcome.status, 0) << outcome;
  std::vector<std::string> names;
  for (const auto& line : lines_of(outcome.out)) names.push_back(stripped(line));
  return names;
}

TEST(Cards, AreMatchedByTheirIds) {
  EXPECT_THAT(names_matching("10de:102d"), ElementsAre("Tesla K80"));
  EXPECT_THAT(names_matching("10DE:102D:10DE:106C"), ElementsAre("Tesla K80"));
  EXPECT_THAT(names_matching("10de:102d:10de:0001"), IsEmpty());
  EXPECT_THAT(names_matching("10de:13f2:10de:0001"), ElementsAre("Tesla M60")) << "no subsystem is known";
  EXPECT_THAT(names_matching("ffff:ffff"), IsEmpty());
}

TEST(Cards, IdsThatAreNoneAreWrongUsage) {
  for (const char* ids : {"", "10de", "10de:", ":102d", "10de:102d:10de", "10de:102d:10de:106c:1", "10de:zz",
                          "010de:102d", "10de:-1", "0x10de:0x102d"}) {
    const auto outcome = run_tool({"show", "cards", "--match", ids});
    EXPECT_EQ(outcome.status, 2) << ids << outcome;
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(lines_of(outcome.err), ElementsAre(HasSubstr("--match"))) << ids;
  }
}

}  // namespace
}  // namespace zymdb::test
