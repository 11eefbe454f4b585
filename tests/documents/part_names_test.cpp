// Names that tell parts apart.
#include "documents/part_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "documents/documents.h"

namespace zymdb::documents {
namespace {

using testing::ElementsAre;

std::vector<std::string> names(const std::vector<Module>& modules) {
  return part_names(document(modules).classes.front());
}

TEST(PartNames, ArePlaces) {
  EXPECT_THAT(names({{.place = "A1"}, {.place = "A2"}}), ElementsAre("A1", "A2"));
}

TEST(PartNames, OfPartsInOnePlaceTellWhatTheyAreToo) {
  EXPECT_THAT(names({{.place = "A1", .serial = "s1"}, {.place = "A2"}, {.place = "A1", .serial = "s2"}}),
              ElementsAre("A1 m1 32 GiB (s1)", "A2", "A1 m1 32 GiB (s2)"));
}

TEST(PartNames, WithoutAPlaceAreWhatTheyAre) {
  EXPECT_THAT(names({{.place = "", .serial = "s1"}, {.place = "", .serial = "s2"}}),
              ElementsAre("m1 32 GiB (s1)", "m1 32 GiB (s2)"));
}

TEST(PartNames, OfPartsThatHaveAllInCommonAreNumbered) {
  EXPECT_THAT(names({{}, {}, {.place = "B1"}, {}}),
              ElementsAre("A1 m1 32 GiB (s1) #1", "A1 m1 32 GiB (s1) #2", "B1", "A1 m1 32 GiB (s1) #3"));
  const Module nothing{.place = "", .serial = "", .model = "", .size = ""};
  EXPECT_THAT(names({nothing, nothing}), ElementsAre("#1", "#2"));
  EXPECT_THAT(names({nothing}), ElementsAre("#1"));
}

TEST(PartNames, AreNeverTakenTwice) {
  const Module nothing{.place = "", .serial = "", .model = "", .size = ""};
  EXPECT_THAT(names({nothing, {.place = "#1"}, nothing}), ElementsAre("#2", "#1", "#3"));
  EXPECT_THAT(names({{.place = "A1 m1 32 GiB (s1)"}, {.serial = "s1"}, {.serial = "s2"}}),
              ElementsAre("A1 m1 32 GiB (s1)", "A1 m1 32 GiB (s1) #1", "A1 m1 32 GiB (s2)"));
}

// Two texts that are no UTF-8 may become one.
TEST(PartNames, AreUtf8AndStillApart) {
  EXPECT_THAT(names({{.place = "\xff"}, {.place = "\xfe"}, {.place = "\xc3\xbc"}}),
              ElementsAre("\xEF\xBF\xBD m1 32 GiB (s1) #1", "\xEF\xBF\xBD m1 32 GiB (s1) #2", "\xc3\xbc"));
}

}  // namespace
}  // namespace zymdb::documents
