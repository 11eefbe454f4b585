#include "client/arena.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace zymdb::client {
namespace {

constexpr size_t kSizes[] = {1, 8, 24, 1000, 32 * 1024, 100'000, 3, 40'000, 31'000, 0, 2000};

// Fills each with a byte of its own.
std::vector<char*> fill(Arena& arena) {
  std::vector<char*> places;
  for (const size_t size : kSizes) {
    places.push_back(static_cast<char*>(arena.allocate(size)));
    std::memset(places.back(), static_cast<int>(places.size()), size);
  }
  return places;
}

void expect_filled(const std::vector<char*>& places) {
  for (size_t i = 0; i < places.size(); ++i)
    EXPECT_EQ(std::vector<char>(places[i], places[i] + kSizes[i]),
              std::vector<char>(kSizes[i], static_cast<char>(i + 1)))
        << i;
}

TEST(ArenaTest, WhatItGivesIsApartAndStaysWhereItIs) {
  Arena arena;
  expect_filled(fill(arena));
}

TEST(ArenaTest, WhatItGivesIsAlignedAsPointersAre) {
  Arena arena;
  for (const char* place : fill(arena)) EXPECT_EQ(reinterpret_cast<uintptr_t>(place) % alignof(void*), 0U);
}

TEST(ArenaTest, WhatIsClearedIsUsedAgain) {
  Arena arena;
  const std::vector<char*> first = fill(arena);
  const size_t capacity = arena.capacity();
  EXPECT_GE(arena.used(), 206'000U);
  EXPECT_GE(capacity, arena.used());
  for (int i = 0; i < 3; ++i) {
    arena.clear();
    EXPECT_EQ(arena.used(), 0U);
    EXPECT_EQ(fill(arena), first);
    expect_filled(first);
  }
  EXPECT_EQ(arena.capacity(), capacity);
}

TEST(ArenaTest, AnotherOrderOfSizesFindsRoomToo) {
  Arena arena;
  fill(arena);
  arena.clear();
  auto* const large = static_cast<char*>(arena.allocate(200'000));
  std::memset(large, 0x55, 200'000);
  expect_filled(fill(arena));
  EXPECT_EQ(std::vector<char>(large, large + 200'000), std::vector<char>(200'000, 0x55));
}

}  // namespace
}  // namespace zymdb::client
