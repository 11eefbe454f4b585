// Listings searched and sorted.
#include "records/arrangement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zymdb::records {
namespace {

using testing::ElementsAre;

struct Part {
  uint32_t Number = 0;
  char Place[16] = "";
};

constexpr Field<Part> kFields[] = {
    ZYMDB_RECORD_FIELD(Part, Number, "NUMBER", "a number").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Part, Place, "PLACE", "where it is"),
};
constexpr size_t kNumber = 0, kPlace = 1;

RecordType parts() {
  return describe<Part>("parts", "Parts", kFields, [] {
    return std::vector<Part>{{10, "bay 10"}, {0, "bay 9"}, {9, "bay 1"}, {10, "bay 2"}};
  });
}

std::vector<std::string> places(const Arrangement& arrangement) {
  const auto sheet = list_arranged(parts(), arrangement, {kPlace});
  std::vector<std::string> texts;
  for (const auto& row : sheet.rows) {
    EXPECT_EQ(row.size(), 1u);
    texts.push_back(text_of(sheet.fields[0], row[0].value));
  }
  return texts;
}

TEST(Arrangement, OfNothingIsTheListing) {
  EXPECT_THAT(places({}), ElementsAre("bay 10", "bay 9", "bay 1", "bay 2"));
}

TEST(Arrangement, SortsNumbersAsNumbersAndWhatIsNotKnownLast) {
  EXPECT_THAT(places({.conditions = {}, .order = {{kNumber}}}),
              ElementsAre("bay 1", "bay 10", "bay 2", "bay 9"));
  EXPECT_THAT(places({.conditions = {}, .order = {{kNumber, true}}}),
              ElementsAre("bay 10", "bay 2", "bay 1", "bay 9"));
}

TEST(Arrangement, SortsNumbersInTextsAsNumbers) {
  EXPECT_THAT(places({.conditions = {}, .order = {{kPlace}}}),
              ElementsAre("bay 1", "bay 2", "bay 9", "bay 10"));
}

TEST(Arrangement, SortsByTheNextFieldWhereOneIsTheSame) {
  EXPECT_THAT(places({.conditions = {}, .order = {{kNumber, true}, {kPlace}}}),
              ElementsAre("bay 2", "bay 10", "bay 1", "bay 9"));
}

TEST(Arrangement, KeepsTheRowsThatMeetAllConditions) {
  const FieldCondition ten{kNumber, {Relation::kEqual, "10"}};
  const FieldCondition low{kPlace, {Relation::kLess, "bay 9"}};
  EXPECT_THAT(places({.conditions = {ten}, .order = {}}), ElementsAre("bay 10", "bay 2"));
  EXPECT_THAT(places({.conditions = {ten, low}, .order = {}}), ElementsAre("bay 2"));
}

TEST(Arrangement, HasTheColumnsThatAreWantedInTheirOrder) {
  const auto sheet =
      list_arranged(parts(), {.conditions = {}, .order = {{kPlace}}}, {kPlace, kNumber, kPlace});
  ASSERT_EQ(sheet.fields.size(), 3u);
  EXPECT_STREQ(sheet.fields[1].heading, "NUMBER");
  EXPECT_EQ(sheet.rows[0][1].value, Value(uint64_t{9}));
  EXPECT_EQ(sheet.rows[0][2].value, Value("bay 1"));
}

}  // namespace
}  // namespace zymdb::records
