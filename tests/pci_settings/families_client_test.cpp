// The setting-id families: the exact calls, and the sense in which a read counts.
#include <gmock/gmock.h>

#include <cstring>

#include "support/parsing_marker.h"
#include "support/scripted_client.h"
#include "zymdb_pci_settings.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;

namespace {

constexpr int kFailure = 77;

class SettingFamilies : public scripted::ClientTest {
 protected:
  // As a client that answers the reads in `unread` with a failure and hands out the text all the same.
  std::string families(std::vector<Row> rows, std::vector<int> unread, const char* present = "") {
    client().failed_texts_arrive = true;
    for (const int row : unread) client().failures[{"text", row}] = kFailure;
    answer(std::move(rows));
    std::string ids(256, '\0');
    ids.replace(0, std::strlen(present), present);
    EXPECT_EQ(zymdb_get_pci_configID(7, ids.data()), ZYM_DB_STATUS_OK);
    return ids.c_str();
  }

  ParsingMarker marker_;
};

TEST_F(SettingFamilies, AreAskedForByFunction) {
  families({Row("A.x")}, {});
  EXPECT_THAT(client().calls, ElementsAre("query PCISetting [SettingID] where PfaKey=7", "row_count", "step",
                                          "text 0 size 128", "step", "free_result"));
}

TEST_F(SettingFamilies, AreThoseOfTheIdsReadWithANonzeroStatus) {
  EXPECT_EQ(families({Row("A.x"), Row("B.x"), Row("C.x")}, {1}), "B");
}

TEST_F(SettingFamilies, AreNoneWhereEveryReadSucceeds) {
  EXPECT_EQ(families({Row("A.x"), Row("B.x")}, {}), "");
}

TEST_F(SettingFamilies, FoldNeighboursOnly) {
  EXPECT_EQ(families({Row("A.x"), Row("A.y"), Row("B.z"), Row("A.w")}, {0, 1, 2, 3}), "A:B:A");
}

TEST_F(SettingFamilies, AreAppendedWithASeparatorBetweenThemOnly) {
  EXPECT_EQ(families({Row("A.x"), Row("B.y")}, {0, 1}, "kept"), "keptA:B");
}

TEST_F(SettingFamilies, EndAtTheFirstDotThatFollowsSomething) {
  EXPECT_EQ(families({Row("whole"), Row(".lead.x"), Row("..two..x"), Row("a.b.c")}, {0, 1, 2, 3}),
            "whole:lead:two:a");
}

TEST_F(SettingFamilies, OfIdsWithoutAnythingAddNothing) {
  EXPECT_EQ(families({Row("A.x"), Row(""), Row("..."), Row(nullptr), Row("A.y")}, {0, 1, 2, 3, 4}), "A");
}

TEST_F(SettingFamilies, AreCutAt127Characters) {
  const std::string longest(127, 'f');
  EXPECT_EQ(families({Row(longest + "tail.x"), Row(longest + ".y")}, {0, 1}), longest);
}

TEST_F(SettingFamilies, OfRowsBeyondTheRowCountAreNotRead) {
  client().failed_texts_arrive = true;
  for (const int row : {0, 1, 2}) client().failures[{"text", row}] = kFailure;
  answer(Answer{.rows = {Row("A.x"), Row("B.x"), Row("C.x")}, .row_count = 2});
  char ids[64] = "";
  EXPECT_EQ(zymdb_get_pci_configID(7, ids), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(ids, "A:B");
}

TEST_F(SettingFamilies, StandAsReadWhenAStepFails) {
  client().failed_texts_arrive = true;
  client().failures[{"text", 0}] = kFailure;
  answer(Answer{.rows = {Row("A.x")}, .end = kFailure, .row_count = 3});
  char ids[64] = "";
  EXPECT_EQ(zymdb_get_pci_configID(7, ids), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(ids, "A");
}

TEST_F(SettingFamilies, OfAFailedQueryAreItsStatus) {
  char ids[64] = "kept";
  for (const auto& [failing, status] :
       {std::pair{Answer::failing(kFailure), kFailure}, std::pair{Answer::failing(kFailure, true), kFailure},
        std::pair{Answer::without_result(), int{ZYM_DB_STATUS_OK}}}) {
    answer(failing);
    EXPECT_EQ(zymdb_get_pci_configID(7, ids), status);
    EXPECT_STREQ(ids, "kept");
  }
}

}  // namespace
