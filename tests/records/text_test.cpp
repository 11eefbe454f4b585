// How places, identifiers and amounts are written for people.
#include "records/text.h"

#include <gtest/gtest.h>

namespace zymdb::records {
namespace {

TEST(PlaceText, NamesTheBoardASlotOrABay) {
  EXPECT_EQ(place_text(0, 0), "on board");
  EXPECT_EQ(place_text(0, 7), "on board");
  EXPECT_EQ(place_text(1, 3), "slot 3");
  EXPECT_EQ(place_text(2, 12), "bay 12");
  EXPECT_EQ(place_text(7, 1), "location 7 number 1");
}

TEST(IdText, IsFourDigitsEach) {
  EXPECT_EQ(id_text(0x15b3, 0xa2d6), "15b3:a2d6");
  EXPECT_EQ(id_text(1, 0), "0001:0000");
}

TEST(LinkStatusText, NamesTheStatesThatAreKnown) {
  EXPECT_EQ(link_status_text(0), "unknown");
  EXPECT_EQ(link_status_text(1), "up");
  EXPECT_EQ(link_status_text(2), "down");
  EXPECT_EQ(link_status_text(7), "state 7");
}

TEST(LinkSpeedText, IsInTheUnitThatSuitsIt) {
  const std::pair<uint64_t, const char*> speeds[] = {
      {10, "10 Mbit/s"},        {999, "999 Mbit/s"},     {1000, "1 Gbit/s"},     {2500, "2.5 Gbit/s"},
      {10005, "10.005 Gbit/s"}, {12050, "12.05 Gbit/s"}, {100000, "100 Gbit/s"}, {400000, "400 Gbit/s"}};
  for (const auto& [megabits, text] : speeds) EXPECT_EQ(link_speed_text(megabits), Value(text));
  EXPECT_FALSE(is_known(link_speed_text(0)));
}

TEST(SizeText, IsInGibibytesWhereItIsAWholeNumberOfThem) {
  EXPECT_EQ(size_text(65536), "64 GiB");
  EXPECT_EQ(size_text(1024), "1 GiB");
  EXPECT_EQ(size_text(129408), "129408 MiB");
  EXPECT_EQ(size_text(512), "512 MiB");
  EXPECT_EQ(size_text(0), "0 MiB");
}

}  // namespace
}  // namespace zymdb::records
