// Where a memory module sits, as far as the board's names for its position tell.
#ifndef ZYMDB_COLLECT_SOURCES_SMBIOS_MEMORY_POSITION_H
#define ZYMDB_COLLECT_SOURCES_SMBIOS_MEMORY_POSITION_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace zymdb::collect {

// The numbers that the names state; boards begin to count at 0 or at 1. A channel's letter is its place in
// the alphabet, A being 0.
struct MemoryPosition {
  std::optional<uint32_t> processor;
  std::optional<uint32_t> controller;
  std::optional<uint32_t> channel;
  std::optional<uint32_t> module;  // on the channel

  bool operator==(const MemoryPosition&) const = default;
};

// Reads the names that boards use: "P0_Node0_Channel1_Dimm0", "CPU1_DIMM_A1", "CPU0_C3D1", "DIMM_P0_A0",
// "P0 CHANNEL A" with "DIMM 0", "PROC 1 DIMM 3". What the bank's name states counts before the module's.
//
// A letter with a number is a channel and a module only behind a processor: elsewhere some boards mean the
// processor by it. The number of a "DIMM" is the module's place only on a known channel, else it counts all
// modules. A "node" is a memory controller on some boards and a NUMA node on others, and so neither.
MemoryPosition memory_position(std::string_view locator, std::string_view bank);

}  // namespace zymdb::collect

#endif
