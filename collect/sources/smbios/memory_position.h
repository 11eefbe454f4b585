// Where a memory module sits, as far as the board's names for its position tell.
#ifndef ZYMDB_COLLECT_SOURCES_SMBIOS_MEMORY_POSITION_H
#define ZYMDB_COLLECT_SOURCES_SMBIOS_MEMORY_POSITION_H

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace zymdb::collect {

// The numbers that the names state; boards begin to count at 0 or at 1. A channel's letter is its place in
// the alphabet, A being 0.
struct MemoryPosition {
  std::optional<uint32_t> processor;
  std::optional<uint32_t> controller;
  std::optional<uint32_t> channel;
  std::optional<uint32_t> module;  // on the channel

  auto operator<=>(const MemoryPosition&) const = default;
};

// Reads the names that boards use: "P0_Node0_Channel1_Dimm0", "CPU1_DIMM_A1", "CPU0_C3D1", "DIMM_P0_A0",
// "P0 CHANNEL A" with "DIMM 0", "Controller0-ChannelA-DIMM0", "PROC 1 DIMM 3". What the bank's name states
// counts before the module's.
//
// A letter with a number is a channel and a module only behind a processor: elsewhere some boards mean the
// processor by it. The number of a "DIMM" is the module's place only on a known channel, else it counts all
// modules. A "node" with channels is a memory controller: numbered within the processor on some boards, and
// across all on others.
MemoryPosition memory_position(std::string_view locator, std::string_view bank);

// Where several modules have the same numbers, the names leave something out that tells them apart: only the
// processor stays of them.
void forget_shared_numbers(std::vector<MemoryPosition>& positions);

}  // namespace zymdb::collect

#endif
