// What the names of real boards tell of a module's place.
#include "collect/sources/smbios/memory_position.h"

#include <gtest/gtest.h>

#include <ostream>

namespace zymdb::collect {

static std::ostream& operator<<(std::ostream& out, const MemoryPosition& position) {
  const char* separator = "";
  for (const auto& number : {position.processor, position.controller, position.channel, position.module}) {
    out << separator << (number ? std::to_string(*number) : "?");
    separator = "/";
  }
  return out;
}

namespace {

constexpr auto kUnknown = std::nullopt;

struct Case {
  const char* locator;
  const char* bank;
  MemoryPosition position;
};

constexpr Case kCases[] = {
    {"CPU1_DIMM_A1", "CPU1 Channel 0", {1, kUnknown, 0, 1}},
    {"CPU0_C3D1", "NODE 1", {0, 1, 3, 1}},
    {"DIMM_P0_A0", "BANK 0", {0, kUnknown, 0, 0}},
    {"DIMM_P1_P1", "BANK 1", {1, kUnknown, 15, 1}},
    {"DIMM 0", "P0 CHANNEL K", {0, kUnknown, 10, 0}},
    {"P1-DIMMA2", "P0_Node1_Channel0_Dimm1", {0, 1, 0, 1}},
    {"CPU0_B1", "_Node0_Channel1_Dimm1", {0, 0, 1, 1}},
    {"Controller0-ChannelA-DIMM0", "BANK 0", {kUnknown, 0, 0, 0}},
    {"Controller1-ChannelB-DIMM1", "BANK 3", {kUnknown, 1, 1, 1}},
    {"ChannelB-DIMM1", "BANK 3", {kUnknown, kUnknown, 1, 1}},
    {"P1-DIMMA1", "", {1, kUnknown, 0, 1}},
    {"CPU1 iMC0 Ch2 DIMM1", "", {1, 0, 2, 1}},
    // A number of all modules of a processor is no place on a channel.
    {"Socket 0 DIMM 5", "Bank 5", {0, kUnknown, kUnknown, kUnknown}},
    {"PROC 1 DIMM 12", "", {1, kUnknown, kUnknown, kUnknown}},
    // What the system calls the memory of a processor is no controller.
    {"node0", "", {}},
    // Here the letter is the processor.
    {"A1", "Not Specified", {}},
    {"DIMM.Socket.B2", "", {}},
    {"", "", {}},
    {"...", "-", {}},
    {"CPU", "CHANNEL", {}},
    {"CPU99999999999999999999", "Channel 12345678901", {}},
};

TEST(MemoryPosition, IsWhatTheBoardsNamesState) {
  for (const auto& [locator, bank, position] : kCases) {
    EXPECT_EQ(memory_position(locator, bank), position) << locator << ", " << bank;
  }
}

TEST(MemoryPositions, NeverHaveTheSameNumbersTwice) {
  const MemoryPosition first{0, kUnknown, 0, 0};
  const MemoryPosition other{0, kUnknown, 1, 0};
  const MemoryPosition channel{0, kUnknown, 2, kUnknown};
  std::vector<MemoryPosition> positions{first, other, first, channel, channel, {}, {}};
  forget_shared_numbers(positions);
  const MemoryPosition left{0, kUnknown, kUnknown, kUnknown};
  EXPECT_EQ(positions, (std::vector<MemoryPosition>{left, other, left, channel, channel, {}, {}}))
      << "which of them the numbers are of, nobody can tell";
}

}  // namespace
}  // namespace zymdb::collect
