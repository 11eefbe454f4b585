// What became of parts: added, removed, moved, replaced, changed.
#include "documents/difference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "documents/difference_json.h"
#include "documents/documents.h"

namespace zymdb::documents {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> lines(const std::vector<Module>& before, const std::vector<Module>& after,
                               const DifferenceOptions& options = {}) {
  std::vector<std::string> texts;
  for (const Change& change : difference(document(before), document(after), options))
    texts.push_back(text_of(change));
  return texts;
}

TEST(Difference, OfEqualInventoriesIsNone) {
  EXPECT_THAT(lines({{}, {.place = "A2", .serial = "s2"}}, {{}, {.place = "A2", .serial = "s2"}}), IsEmpty());
}

TEST(Difference, DoesNotHangOnTheOrderOfParts) {
  EXPECT_THAT(lines({{}, {.place = "A2", .serial = "s2"}}, {{.place = "A2", .serial = "s2"}, {}}), IsEmpty());
}

TEST(Difference, TellsOfPartsThatAreNewOrGone) {
  EXPECT_THAT(lines({}, {{}}), ElementsAre("added  modules  A1  m1 32 GiB (s1)"));
  EXPECT_THAT(lines({{}}, {}), ElementsAre("removed  modules  A1  m1 32 GiB (s1)"));
}

TEST(Difference, KnowsAPartInAnotherPlace) {
  EXPECT_THAT(lines({{}}, {{.place = "B1"}}), ElementsAre("moved  modules  A1 -> B1  m1 32 GiB (s1)"));
}

TEST(Difference, KnowsTwoPartsThatChangedPlaces) {
  EXPECT_THAT(
      lines({{}, {.place = "A2", .serial = "s2"}}, {{.serial = "s2"}, {.place = "A2"}}),
      ElementsAre("moved  modules  A1 -> A2  m1 32 GiB (s1)", "moved  modules  A2 -> A1  m1 32 GiB (s2)"));
}

TEST(Difference, TellsAnotherSerialNumberInTheSamePlace) {
  EXPECT_THAT(lines({{}}, {{.serial = "s2", .model = "m0"}}),
              ElementsAre("replaced  modules  A1  m1 32 GiB (s1) -> m0 32 GiB (s2)"));
}

TEST(Difference, TellsAnotherModelWhereNobodyKnowsSerialNumbers) {
  EXPECT_THAT(lines({{.serial = ""}}, {{.serial = "", .model = "m2"}}),
              ElementsAre("replaced  modules  A1  m1 32 GiB -> m2 32 GiB"));
}

TEST(Difference, KnowsAPartWithoutASerialNumberByItsModel) {
  EXPECT_THAT(lines({{.serial = ""}}, {{.place = "B1", .serial = ""}}),
              ElementsAre("moved  modules  A1 -> B1  m1 32 GiB"));
}

TEST(Difference, TakesASerialNumberThatIsKnownNowForTheSamePart) {
  EXPECT_THAT(lines({{.serial = ""}}, {{}}), ElementsAre("changed  modules  A1  SERIAL ? -> s1"));
}

TEST(Difference, TellsWhatChangedOfAPart) {
  EXPECT_THAT(lines({{}}, {{.health = "bad"}}), ElementsAre("changed  modules  A1  HEALTH ok -> bad"));
  EXPECT_THAT(lines({{}}, {{.health = ""}}), ElementsAre("changed  modules  A1  HEALTH ok -> ?"));
}

TEST(Difference, TellsDetailsWhereNothingElseChanged) {
  EXPECT_THAT(lines({{}}, {{.detail = "e"}}), ElementsAre("changed  modules  A1  DETAIL d -> e"));
  EXPECT_THAT(lines({{}}, {{.health = "bad", .detail = "e"}}),
              ElementsAre("changed  modules  A1  HEALTH ok -> bad"));
}

TEST(Difference, LeavesOutWhatChangesWhileNothingHappens) {
  EXPECT_THAT(lines({{}}, {{.load = 7}}), IsEmpty());
  EXPECT_THAT(lines({{}}, {{.load = 7}}, {.with_volatile = true}),
              ElementsAre("changed  modules  A1  LOAD 0 -> 7"));
}

TEST(Difference, NeverTellsOfRows) {
  EXPECT_THAT(lines({{}}, {{.row = 9}}, {.with_volatile = true}), IsEmpty());
}

// A board whose firmware says the same of every module.
TEST(Difference, DoesNotTrustASerialNumberThatSeveralPartsHave) {
  EXPECT_THAT(lines({{.serial = "0"}, {.place = "A2", .serial = "0"}},
                    {{.serial = "0"}, {.place = "A2", .serial = "0"}}),
              IsEmpty());
  EXPECT_THAT(lines({{.serial = "0"}, {.place = "A2", .serial = "0"}},
                    {{.serial = "0", .health = "bad"}, {.place = "A2", .serial = "0"}}),
              ElementsAre("changed  modules  A1  HEALTH ok -> bad"));
}

TEST(Difference, ComparesTwoMachinesPlaceByPlace) {
  const DifferenceOptions by_place{.by = MatchBy::kPlace};
  EXPECT_THAT(lines({{}}, {{.serial = "other"}}, by_place), IsEmpty());
  EXPECT_THAT(lines({{}}, {{.serial = "other", .model = "m2"}}, by_place),
              ElementsAre("replaced  modules  A1  m1 32 GiB (s1) -> m2 32 GiB (other)"));
  EXPECT_THAT(lines({{}}, {{.place = "B1"}}, by_place),
              ElementsAre("removed  modules  A1  m1 32 GiB (s1)", "added  modules  B1  m1 32 GiB (s1)"));
}

TEST(Difference, TakesAnEmptySocketForNoPart) {
  const Module empty{.serial = "", .model = "", .size = "empty"};
  EXPECT_THAT(lines({empty}, {{}}), ElementsAre("added  modules  A1  m1 32 GiB (s1)"));
  EXPECT_THAT(lines({{}}, {empty}), ElementsAre("removed  modules  A1  m1 32 GiB (s1)"));
  EXPECT_THAT(lines({empty}, {}), IsEmpty());
}

TEST(Difference, LeavesOutClassesThatOneOfTheTwoLacks) {
  Document none;
  EXPECT_THAT(difference(none, document({{}})), IsEmpty());
  EXPECT_THAT(difference(document({{}}), none), IsEmpty());
}

TEST(DifferenceJson, HasEveryFieldThatChanged) {
  const auto changes = difference(document({{}}), document({{.serial = "s2", .health = "", .detail = "e"}}));
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(
      to_json_line(changes.front()),
      R"~({"change":"replaced","class":"modules","place":"A1","description":"m1 32 GiB (s2)",)~"
      R"~("former_description":"m1 32 GiB (s1)","fields":[{"field":"Serial","before":"s1","after":"s2"},)~"
      R"({"field":"Health","before":"ok","after":null},{"field":"Detail","before":"d","after":"e"}]})");
  EXPECT_EQ(to_json(std::vector<Change>()), "{\n  \"format_version\": 1,\n  \"changes\": []\n}\n");
}

TEST(DifferenceJson, TellsFromWhereAPartMoved) {
  const auto changes = difference(document({{}}), document({{.place = "B1"}}));
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(
      to_json_line(changes.front()),
      R"~({"change":"moved","class":"modules","place":"B1","former_place":"A1","description":"m1 32 GiB (s1)",)~"
      R"~("fields":[{"field":"Place","before":"A1","after":"B1"}]})~");
}

TEST(DifferenceJson, TellsABaselineInOneLine) {
  const Event event{.generation = 3,
                    .time = 1700000000000,
                    .is_baseline = true,
                    .changes = difference(document({}), document({{}, {.place = "A2", .serial = "s2"}}))};
  EXPECT_EQ(to_json_lines(event),
            "{\"generation\":3,\"time\":\"2023-11-14 22:13:20\",\"change\":\"baseline\",\"parts\":2}\n");
}

}  // namespace
}  // namespace zymdb::documents
