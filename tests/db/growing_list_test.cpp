#include "db/growing_list.h"

#include <gmock/gmock.h>

#include <cstdint>

namespace {

using zymdb::GrowingList;

TEST(GrowingList, IsEmptyAtFirst) {
  EXPECT_TRUE(GrowingList<uint32_t>().elements().empty());
}

TEST(GrowingList, HoldsWhatWasAppendedInItsOrder) {
  GrowingList<uint32_t> list;
  for (uint32_t i = 0; i < 1000; ++i) {
    ASSERT_TRUE(list.append(i * i));
    ASSERT_EQ(list.elements().size(), i + 1);
  }
  for (uint32_t i = 0; i < 1000; ++i) EXPECT_EQ(list.elements()[i], i * i);
}

// Memory runs out beyond 2 GiB in this program.
TEST(GrowingList, StaysAsItIsWithoutMemory) {
  struct Large {
    char bytes[160 << 20];
  };
  static const Large large{};
  GrowingList<Large> list;
  EXPECT_FALSE(list.append(large));
  EXPECT_TRUE(list.elements().empty());
}

}  // namespace
