// Controllers and backplanes: exact calls, and what every failure answers.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_storage.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

std::string value(int byte) {
  return {'\4', static_cast<char>(byte)};
}

class Controllers : public scripted::ClientTest {
 protected:
  unsigned char output_ = 9;
};

constexpr char kPropertyQuery[] = "query propertiesDCTbl [propName,propValue] where ";

TEST_F(Controllers, TheMarvellTypeIsTheSecondByteOfItsProperty) {
  answer({Row("/x/mv/1/type", value(4)), Row("/y/mv/1/type", value(2))});
  EXPECT_EQ(zymdb_get_mvl_ctrl_type(&output_, 1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(output_, 4);
  EXPECT_EQ(client().calls.front(), "open propertiesdb of root:@localhost");
  EXPECT_THAT(client().calls, testing::Contains("blob 1"));
  EXPECT_EQ(client().calls.back(), "close");
}

TEST_F(Controllers, AnyIndexButZeroIsTheSecondMarvell) {
  for (const int index : {0, 1, 5, -1}) {
    answer(std::vector<Row>{});
    EXPECT_EQ(zymdb_get_mvl_ctrl_type(&output_, index), ZYM_DB_STATUS_OK);
    EXPECT_EQ(client().statements.back(),
              std::string(kPropertyQuery) +
                  (index == 0 ? "propName like \"%mv/0/type\"" : "propName like \"%mv/1/type\""));
  }
}

TEST_F(Controllers, AMissingMarvellTypeIsZero) {
  const std::pair<Answer, int> cases[] = {
      {Answer{}, 0},
      {Answer::of({Row("n", nullptr)}), 0},
      {Answer::of({Row("n", "")}), 0},
      {Answer::of({Row("n", "x")}), 0},
      {Answer{.end = kFailure}, 0},
      {Answer::without_result(), 0},
      {Answer::failing(kFailure), kFailure},
      {Answer::failing(kFailure, true), kFailure},
  };
  for (const auto& [each, status] : cases) {
    output_ = 9;
    answer(each);
    EXPECT_EQ(zymdb_get_mvl_ctrl_type(&output_, 0), status);
    EXPECT_EQ(output_, 0);
    EXPECT_EQ(client().calls.back(), "close");
  }
}

TEST_F(Controllers, WithoutPropertiesNothingIsTouched) {
  client().has_properties = false;
  unsigned char installed = 8;
  EXPECT_EQ(zymdb_get_mvl_ctrl_type(&output_, 0), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_bp_drive_count(&output_, &installed), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(output_, 9);
  EXPECT_EQ(installed, 8);
}

TEST_F(Controllers, TheSlotIsThatOfTheFirstFunction) {
  answer({Row(7), Row(8)});
  EXPECT_EQ(zymdb_get_ctrl_slot(37424, -1, &output_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(output_, 7);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIs [SlotNo] where DeviceId=37424 AND SubDeviceId=-1"));
  answer({Row(nullptr)});
  EXPECT_EQ(zymdb_get_ctrl_slot(1, 2, &output_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(output_, 255);
}

TEST_F(Controllers, WithoutAFunctionThereIsNoSlot) {
  const std::pair<Answer, int> cases[] = {
      {Answer{}, ZYM_DB_STATUS_DONE},
      {Answer{.end = kFailure}, kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer::failing(kFailure), kFailure},
  };
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(zymdb_get_ctrl_slot(1, 2, &output_), status);
    EXPECT_EQ(output_, 9);
  }
  EXPECT_EQ(zymdb_get_ctrl_slot(1, 2, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_ctrl_slot(1, 2, &output_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_ctrl_slot(1, 2, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(Controllers, OfTheServersOwnMarvellsTheSlotsAreListed) {
  answer({Row(5, 1), Row(255, 2), Row(nullptr, 3), Row(256, 4), Row(6, nullptr), Row(254, 5)});
  unsigned char slots[8] = {};
  EXPECT_EQ(zymdb_get_marvell_ctrl_slots(slots, 8, &output_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(output_, 3);
  EXPECT_THAT(slots, ElementsAre(5, 6, 254, 0, 0, 0, 0, 0));
  EXPECT_THAT(
      client().statements,
      ElementsAre("query PCIs [SlotNo,FunKey] where VendorId=6987 AND SubVendorId=" +
                  std::to_string(BOARD_SUBSYSTEM_VENDOR_ID) + " AND (DeviceId=37424 OR DeviceId=8769)"));
}

TEST_F(Controllers, NoMoreSlotsAreStoredThanThereIsRoomFor) {
  for (const unsigned room : {0u, 2u, 3u}) {
    unsigned char slots[4] = {9, 9, 9, 9};
    answer({Row(5, 1), Row(6, 2), Row(7, 3)});
    EXPECT_EQ(zymdb_get_marvell_ctrl_slots(slots, room, &output_), ZYM_DB_STATUS_OK);
    EXPECT_EQ(output_, room);
    EXPECT_EQ(slots[room], 9);
  }
}

TEST_F(Controllers, SlotsAreCountedInEightBits) {
  std::vector<Row> rows;
  for (int i = 0; i < 258; ++i) rows.push_back(Row(i % 255, i));
  answer(rows);
  unsigned char slots[300] = {9, 9, 9};
  EXPECT_EQ(zymdb_get_marvell_ctrl_slots(slots, 300, &output_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(output_, 2);
  EXPECT_EQ(slots[1], 1);
  EXPECT_EQ(slots[2], 9);
}

TEST_F(Controllers, AFailingCollectionListsNoSlot) {
  const std::pair<Answer, int> cases[] = {
      {Answer{}, 0},
      {Answer::without_result(), 0},
      {Answer::failing(kFailure), kFailure},
      {Answer::failing(kFailure, true), kFailure},
      {Answer{.rows = {Row(5, 1)}, .end = kFailure}, kFailure},
  };
  unsigned char slots[4] = {};
  for (const auto& [each, status] : cases) {
    output_ = 9;
    answer(each);
    EXPECT_EQ(zymdb_get_marvell_ctrl_slots(slots, 4, &output_), status);
    EXPECT_EQ(output_, 0);
  }
}

TEST_F(Controllers, AMissingDatabaseIsAMissingArgumentToTheSlots) {
  unsigned char slots[4] = {};
  EXPECT_EQ(zymdb_get_marvell_ctrl_slots(nullptr, 4, &output_), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_marvell_ctrl_slots(slots, 4, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_marvell_ctrl_slots(slots, 4, &output_), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(output_, 9);
}

TEST_F(Controllers, TheDrivesOfPresentBackplanesAreSummed) {
  answer({Row("/dc/votc/dm/drive/sep/1/presence", value(1)),
          Row("/dc/votc/dm/drive/sep/2/presence", value(0)),
          Row("/dc/votc/dm/drive/sep/3/presence", value(9))});
  answer({Row("n", value(8))});
  answer({Row("n", value(2))});
  answer({Row("n", value(16)), Row("n", value(100))});
  answer({Row("n", value(3))});
  unsigned char installed = 9;
  EXPECT_EQ(zymdb_get_bp_drive_count(&output_, &installed), ZYM_DB_STATUS_OK);
  EXPECT_EQ(output_, 24);
  EXPECT_EQ(installed, 5);
  const std::string query = kPropertyQuery;
  EXPECT_THAT(client().statements,
              ElementsAre(query + "propName LIKE '%sep%presence'",
                          query + "propName='/dc/votc/dm/drive/sep/1/max_drives'",
                          query + "propName='/dc/votc/dm/drive/sep/1/installed_drives'",
                          query + "propName='/dc/votc/dm/drive/sep/3/max_drives'",
                          query + "propName='/dc/votc/dm/drive/sep/3/installed_drives'"));
  EXPECT_THAT(client().log, ElementsAre("info: Sep[1]: max_drives=8, installed_drives=2.\n",
                                        "info: Sep[3]: max_drives=16, installed_drives=3.\n"));
  EXPECT_EQ(client().calls.back(), "close");
}

TEST_F(Controllers, MissingDriveCountsAreZero) {
  answer({Row("/dc/votc/dm/drive/sep/1/presence", value(1)), Row("short", value(1)), Row(nullptr, value(1)),
          Row("/dc/votc/dm/drive/sep/12/presence", value(1))});
  answer({Row("n", nullptr)});
  answer(Answer::failing(kFailure));
  answer(std::vector<Row>{});
  answer(Answer::without_result());
  answer(Answer{.end = kFailure});
  answer({Row("n", value(3))});
  answer({Row("n", "x")});
  answer({Row("n", "")});
  unsigned char installed = 9;
  EXPECT_EQ(zymdb_get_bp_drive_count(&output_, &installed), ZYM_DB_STATUS_OK);
  EXPECT_EQ(output_, 0);
  EXPECT_EQ(installed, 3);
  EXPECT_EQ(client().statements[3], std::string(kPropertyQuery) + "propName='shortmax_drives'");
  EXPECT_EQ(client().statements[5], std::string(kPropertyQuery) + "propName='max_drives'");
  // The number is read before the path is cut in the middle of it.
  EXPECT_EQ(client().statements[7],
            std::string(kPropertyQuery) + "propName='/dc/votc/dm/drive/sep/12max_drives'");
  EXPECT_EQ(client().log.back(), "info: Sep[12]: max_drives=0, installed_drives=0.\n");
}

TEST_F(Controllers, SumsOfDrivesWrap) {
  answer(
      {Row("/dc/votc/dm/drive/sep/1/presence", value(1)), Row("/dc/votc/dm/drive/sep/2/presence", value(1))});
  for (const int count : {200, 255, 100, 2}) answer({Row("n", value(count))});
  unsigned char installed = 9;
  EXPECT_EQ(zymdb_get_bp_drive_count(&output_, &installed), ZYM_DB_STATUS_OK);
  EXPECT_EQ(output_, 44);
  EXPECT_EQ(installed, 1);
}

TEST_F(Controllers, WithoutBackplanesThereAreNoDrives) {
  const std::pair<Answer, int> cases[] = {
      {Answer{}, 0},
      {Answer::without_result(), 0},
      {Answer::failing(kFailure), kFailure},
      {Answer{.end = kFailure}, 0},
  };
  for (const auto& [each, status] : cases) {
    unsigned char installed = 9;
    answer(each);
    EXPECT_EQ(zymdb_get_bp_drive_count(&output_, &installed), status);
    EXPECT_EQ(output_ + installed, 0);
  }
  EXPECT_THAT(client().log, IsEmpty());
}

}  // namespace
