#include "collect/model/slots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace zymdb::collect {
namespace {

using testing::ElementsAre;

std::vector<uint16_t> numbers(std::vector<Slot> slots, const std::set<uint32_t>& taken = {}) {
  std::vector<Slot*> pointers;
  for (auto& slot : slots) pointers.push_back(&slot);
  number_slots(pointers, [&taken](uint32_t key) { return !taken.contains(key); });
  std::vector<uint16_t> result;
  for (const auto& slot : slots) result.push_back(slot.number.value());
  return result;
}

SmbiosSlot described(const char* designation, uint16_t id, uint8_t type = 0xB6) {
  return {.designation = designation, .type = type, .data_bus_width = 0x0D, .id = id, .address = {}};
}

TEST(DesignatedNumber, FollowsTheWordSlotOrBayElseIsTheOnlyOne) {
  const struct {
    const char* designation;
    std::optional<uint16_t> number;
  } kCases[] = {
      {"PCIe Slot 3", 3},
      {"CPU1 SLOT6 PCI-E 3.0 X16", 6},
      {"RISER_SLOT_1(PCIe x32) -2(PCIe x16)", 1},
      {"NVMe Bay 0", 0},
      {"Slot #12", 12},
      {"PCIE7", 7},
      {"Riser 2 PCIe x8", 2},
      {"MX4", 4},
      {"0-1", {}},
      {"CPU0_PE1_NVME0", {}},
      {"OCP_PRI_SLOT (PCIe x16)", {}},
      {"", {}},
      {"Mezzanine", {}},
      {"Slot 123456", {}},
      {"Slot 65535", 65535},
      {"Slot 65536", {}},
      {"6", 6},
  };
  for (const auto& test : kCases)
    EXPECT_EQ(designated_number(test.designation), test.number) << test.designation;
}

TEST(DriveBay, IsToldByTypeOrDesignation) {
  for (const uint8_t type : std::initializer_list<uint8_t>{0x1F, 0x20, 0x24, 0x25, 0xC5, 0xC6})
    EXPECT_TRUE(is_drive_bay(type, "")) << +type;
  for (const uint8_t type : std::initializer_list<uint8_t>{0x06, 0x17, 0x21, 0x26, 0xB6})
    EXPECT_FALSE(is_drive_bay(type, "")) << +type;
  for (const char* name :
       {"NVMe Bay 3", "BAY1", "CPU0_PE1_NVME0", "U.2 port 1", "Front E1.S 4", "Backplane 1"}) {
    EXPECT_TRUE(is_drive_bay({}, name)) << name;
  }
  for (const char* name : {"PCIe Slot 3", "S1 NVMe M.2 - Slot 1", "M2_1 NVMe", "Embayment", "CPU.2"}) {
    EXPECT_FALSE(is_drive_bay({}, name)) << name;
  }
}

TEST(DriveBay, IsAHardDisksSlotOfFourLanesButNoRiser) {
  constexpr uint8_t kFourLanes = 0x0A;
  constexpr uint8_t kEightLanes = 0x0B;
  EXPECT_TRUE(is_drive_bay(0xB6, "HDD#3", kFourLanes));
  EXPECT_FALSE(is_drive_bay(0xB6, "HDD#3", kEightLanes));
  EXPECT_FALSE(is_drive_bay(0xB6, "HDD#3"));
  EXPECT_FALSE(is_drive_bay(0xB6, "EDSFF Riser"));
  EXPECT_FALSE(is_drive_bay(0xC5, "EDSFF_Riser 1")) << "what it takes is a card that takes drives";
  EXPECT_TRUE(is_drive_bay(0xB6, "EDSFF 4"));
  EXPECT_TRUE(is_drive_bay(0xB6, "Riser 1 NVMe Bay 3"));
}

TEST(SlotNumbers, AreTheIdsBeforeTheDesignations) {
  EXPECT_THAT(numbers(slots_of({described("PCIe Slot 7", 2), described("PCIe Slot 8", 0)})),
              ElementsAre(2, 8));
}

TEST(SlotNumbers, AreNeverSharedAtOneLocation) {
  // Ids 1, 2, 1, 1 on risers whose designations repeat as well.
  EXPECT_THAT(numbers(slots_of({described("A SLOT1", 1), described("A SLOT2", 2), described("B SLOT1", 1),
                                described("C SLOT4", 1)})),
              ElementsAre(1, 2, 3, 4));
}

TEST(SlotNumbers, AreGivenToSlotsWithoutAny) {
  EXPECT_THAT(
      numbers(slots_of({described("Mezzanine", 0), described("PCIe Slot 1", 1), described("Riser", 0)})),
      ElementsAre(2, 1, 3));
}

TEST(SlotNumbers, OfSlotsAndBaysAreApart) {
  EXPECT_THAT(numbers(slots_of({described("PCIe Slot 1", 1), described("NVMe Bay 1", 0, 0x24)})),
              ElementsAre(1, 1));
}

TEST(SlotNumbers, MakeNoKeyThatADeviceOnTheBoardHas) {
  // Bay 0 would have the key of the device at 02:00, slot 256 that of 01:01.
  EXPECT_THAT(
      numbers(slots_of({described("NVMe Bay 0", 0, 0x24), described("PCIe Slot", 256)}), {0x20000, 0x10100}),
      ElementsAre(1, 1));
}

TEST(Slots, HaveNoAddressThatSeveralOfThemState) {
  auto first = described("PCIe Slot 1", 1);
  auto second = described("PCIe Slot 2", 2);
  first.address = second.address = PciAddress{0, 0x80, 1, 0};
  const auto slots = slots_of({first, second});
  EXPECT_TRUE(slots[0].addresses.empty());
  EXPECT_TRUE(slots[1].addresses.empty());
}

TEST(Slots, KeepNoUnknownCodes) {
  auto slot = described("PCIe Slot 1", 1, 0x02);
  slot.data_bus_width = 0x02;
  const auto slots = slots_of({slot});
  EXPECT_FALSE(slots[0].type);
  EXPECT_FALSE(slots[0].data_bus_width);
}

TEST(JoinSlots, GivesTheSystemsAddressToTheSlotOfThatNumber) {
  auto slots = slots_of({described("PCIe Slot 6", 6), described("PCIe Slot 7", 7)});
  join_slots(slots, slots_of({SysfsSlot{"6", {0, 0x3b, 0, 0}}, SysfsSlot{"9", {0, 0x5e, 0, 0}}}));
  ASSERT_EQ(slots.size(), 3U);
  ASSERT_EQ(slots[0].addresses.size(), 1U);
  EXPECT_FALSE(slots[0].addresses[0].names_function);
  EXPECT_TRUE(slots[1].addresses.empty());
  EXPECT_EQ(slots[2].designation, "9");
}

}  // namespace
}  // namespace zymdb::collect
