// The record helpers' exact calls, log lines and answers to every failure of the client.
#include <gmock/gmock.h>

#include "support/scripted_client.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class RecordHelpers : public scripted::ClientTest {
 protected:
  RecordHelpers() : handle_(get_dmdb_handle()), values_(zym_db_get_content_values(handle_)) {
    zym_db_content_put_uint(values_, "A", 1);
    client().calls.clear();
  }
  ~RecordHelpers() override { zym_db_free_content_values(values_); }

  _zym_db_handle_t* handle_;
  zym_db_content_values_t* values_;
};

TEST_F(RecordHelpers, FindAsksForTheIdAloneAndReadsTheFirstRow) {
  answer({Row(17), Row(18)});
  EXPECT_EQ(find_db_record(handle_, "PCIs", "FunKey=3"), 17);
  EXPECT_THAT(client().calls,
              ElementsAre("query PCIs [_id] where FunKey=3", "step", "int64 0", "free_result"));
}

TEST_F(RecordHelpers, FindKeepsSixtyFourBits) {
  answer({Row(int64_t{1} << 40)});
  EXPECT_EQ(find_db_record(handle_, "PCIs", "1"), int64_t{1} << 40);
}

TEST_F(RecordHelpers, FindWithoutAMatchIsZeroAndSilent) {
  answer(std::vector<Row>{});
  EXPECT_EQ(find_db_record(handle_, "PCIs", "FunKey=3"), 0);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, FindTakesAFailedStepForNoRow) {
  answer(Answer{.end = kFailure});
  EXPECT_EQ(find_db_record(handle_, "PCIs", "FunKey=3"), 0);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, FindOfAnUnreadableIdFailsSilently) {
  answer({Row(nullptr)});
  EXPECT_EQ(find_db_record(handle_, "PCIs", "FunKey=3"), -1);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, FindWithANullArgumentAsksNothing) {
  EXPECT_EQ(find_db_record(nullptr, "PCIs", "1"), -1);
  EXPECT_EQ(find_db_record(handle_, nullptr, "1"), -1);
  EXPECT_EQ(find_db_record(handle_, "PCIs", nullptr), -1);
  EXPECT_THAT(client().calls, IsEmpty());
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, FindLogsAFailedQueryInThreeLines) {
  for (const Answer& failing :
       {Answer::failing(kFailure), Answer::failing(kFailure, true), Answer::without_result()}) {
    client().log.clear();
    answer(failing);
    EXPECT_EQ(find_db_record(handle_, "PCIs", "FunKey=3"), -1);
    EXPECT_THAT(client().log,
                ElementsAre("error: Failed to find record:", "error: table=PCIs", "error: filter=FunKey=3"));
  }
}

TEST_F(RecordHelpers, InsertAnswersTheNewId) {
  client().inserted_id = 42;
  EXPECT_EQ(insert_db_record(handle_, "PCIs", values_), 42);
  EXPECT_THAT(client().statements, ElementsAre("insert PCIs {A=uint:1}"));
}

TEST_F(RecordHelpers, AFailedInsertIsLoggedWithTheClientsText) {
  client().failures[{"insert", 0}] = kFailure;
  EXPECT_EQ(insert_db_record(handle_, "PCIs", values_), -1);
  EXPECT_THAT(client().log, ElementsAre("error: Failed to insert record: the scripted failure"));
}

TEST_F(RecordHelpers, InsertWithANullArgumentAsksNothing) {
  EXPECT_EQ(insert_db_record(nullptr, "PCIs", values_), -1);
  EXPECT_EQ(insert_db_record(handle_, nullptr, values_), -1);
  EXPECT_EQ(insert_db_record(handle_, "PCIs", nullptr), -1);
  EXPECT_THAT(client().statements, IsEmpty());
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, UpdateAddressesTheLocatedRow) {
  answer({Row(17)});
  EXPECT_EQ(update_db_record(handle_, "PCIs", "FunKey=3", values_, nullptr), 17);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIs [_id] where FunKey=3", "update PCIs {A=uint:1} where _id=17"));
}

TEST_F(RecordHelpers, UpdateJoinsTheCallersFilter) {
  answer({Row(17)});
  EXPECT_EQ(update_db_record(handle_, "PCIs", "FunKey=3", values_, "Source=2"), 17);
  EXPECT_EQ(client().statements.back(), "update PCIs {A=uint:1} where _id=17 AND (Source=2)");
}

TEST_F(RecordHelpers, UpdateAddressesARowByTheLowWordOfItsId) {
  answer({Row((int64_t{1} << 32) + 5)});
  EXPECT_EQ(update_db_record(handle_, "PCIs", "FunKey=3", values_, nullptr), (int64_t{1} << 32) + 5);
  EXPECT_EQ(client().statements.back(), "update PCIs {A=uint:1} where _id=5");
}

TEST_F(RecordHelpers, UpdateFreesTheLookupBeforeItWrites) {
  answer({Row(17)});
  update_db_record(handle_, "PCIs", "FunKey=3", values_, nullptr);
  EXPECT_THAT(client().calls, ElementsAre("query PCIs [_id] where FunKey=3", "step", "int64 0", "free_result",
                                          "update PCIs {A=uint:1} where _id=17"));
}

TEST_F(RecordHelpers, UpdateWithNoMatchingRowWritesNothing) {
  answer(std::vector<Row>{});
  EXPECT_EQ(update_db_record(handle_, "PCIs", "FunKey=3", values_, "Source=2"), 0);
  EXPECT_EQ(client().statements.size(), 1u);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, UpdateWhoseLookupFailsWritesNothing) {
  answer(Answer::failing(kFailure));
  EXPECT_EQ(update_db_record(handle_, "PCIs", "FunKey=3", values_, nullptr), -1);
  EXPECT_EQ(client().statements.size(), 1u);
}

TEST_F(RecordHelpers, AFailedUpdateIsLoggedWithTheComposedFilter) {
  answer({Row(17)});
  client().failures[{"update", 0}] = kFailure;
  EXPECT_EQ(update_db_record(handle_, "PCIs", "FunKey=3", values_, "Source=2"), -1);
  EXPECT_THAT(client().log, ElementsAre("error: Failed to update record:", "error: table=PCIs",
                                        "error: filter=_id=17 AND (Source=2)"));
}

TEST_F(RecordHelpers, UpdateWithANullArgumentAsksNothing) {
  EXPECT_EQ(update_db_record(nullptr, "PCIs", "1", values_, nullptr), -1);
  EXPECT_EQ(update_db_record(handle_, nullptr, "1", values_, nullptr), -1);
  EXPECT_EQ(update_db_record(handle_, "PCIs", nullptr, values_, nullptr), -1);
  EXPECT_EQ(update_db_record(handle_, "PCIs", "1", nullptr, nullptr), -1);
  EXPECT_THAT(client().statements, IsEmpty());
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, InsertOrUpdateUpdatesTheRowThatIsThere) {
  answer({Row(17)});
  EXPECT_EQ(insert_or_update_db_record(handle_, "PCIs", "FunKey=3", values_, nullptr), 17);
  EXPECT_EQ(client().statements.back(), "update PCIs {A=uint:1} where _id=17");
}

TEST_F(RecordHelpers, InsertOrUpdateInsertsTheRowThatIsNot) {
  client().inserted_id = 5;
  answer(std::vector<Row>{});
  EXPECT_EQ(insert_or_update_db_record(handle_, "PCIs", "FunKey=3", values_, "Source=2"), 5);
  EXPECT_EQ(client().statements.back(), "insert PCIs {A=uint:1}");
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, InsertOrUpdateDoesNotInsertAfterAFailedLookup) {
  answer(Answer::failing(kFailure));
  EXPECT_EQ(insert_or_update_db_record(handle_, "PCIs", "FunKey=3", values_, "Source=2"), -1);
  EXPECT_EQ(client().statements.size(), 1u);
  EXPECT_THAT(client().log,
              ElementsAre("error: Failed to find record:", "error: table=PCIs", "error: filter=FunKey=3",
                          "error: insert/update record failed: table=PCIs, where=FunKey=3",
                          "error: insert/update record failed: filter=Source=2"));
}

TEST_F(RecordHelpers, InsertOrUpdateLogsTheCallersFilterNotTheComposedOne) {
  answer({Row(17)});
  client().failures[{"update", 0}] = kFailure;
  EXPECT_EQ(insert_or_update_db_record(handle_, "PCIs", "FunKey=3", values_, "Source=2"), -1);
  EXPECT_EQ(client().log.back(), "error: insert/update record failed: filter=Source=2");
}

TEST_F(RecordHelpers, InsertOrUpdateTakesAnInsertWithoutAnIdForAFailure) {
  client().inserted_id = 0;
  answer(std::vector<Row>{});
  EXPECT_EQ(insert_or_update_db_record(handle_, "PCIs", "FunKey=3", values_, nullptr), 0);
  EXPECT_EQ(client().log.front(), "error: insert/update record failed: table=PCIs, where=FunKey=3");
}

TEST_F(RecordHelpers, InsertOrUpdateReportsAFailedInsert) {
  client().failures[{"insert", 0}] = kFailure;
  answer(std::vector<Row>{});
  EXPECT_EQ(insert_or_update_db_record(handle_, "PCIs", "FunKey=3", values_, "Source=2"), -1);
  EXPECT_THAT(client().log, ElementsAre("error: Failed to insert record: the scripted failure",
                                        "error: insert/update record failed: table=PCIs, where=FunKey=3",
                                        "error: insert/update record failed: filter=Source=2"));
}

TEST_F(RecordHelpers, InsertOrUpdateWithANullArgumentIsSilent) {
  EXPECT_EQ(insert_or_update_db_record(nullptr, "PCIs", "1", values_, nullptr), -1);
  EXPECT_EQ(insert_or_update_db_record(handle_, nullptr, "1", values_, nullptr), -1);
  EXPECT_EQ(insert_or_update_db_record(handle_, "PCIs", nullptr, values_, nullptr), -1);
  EXPECT_EQ(insert_or_update_db_record(handle_, "PCIs", "1", nullptr, nullptr), -1);
  EXPECT_THAT(client().statements, IsEmpty());
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, DeletePassesFilterAndParametersOn) {
  const _zym_db_param_t params[] = {{3, 0, 1, 9}, {2, 0, 1, 4}};
  EXPECT_EQ(delete_db_record(handle_, "PCIs", "FunKey=? AND SlotNo=?", params, 2), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("delete PCIs where FunKey=? AND SlotNo=? with 3/0/1:9 2/0/1:4"));
}

TEST_F(RecordHelpers, DeleteThatRemovesRowsLogsInformation) {
  client().deleted_rows = 2;
  EXPECT_EQ(delete_db_record(handle_, "PCIs", "FunKey=3", nullptr, 0), ZYM_DB_STATUS_OK);
  EXPECT_EQ(delete_db_record(handle_, "PCIs", nullptr, nullptr, 0), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().log,
              ElementsAre("info: Delete from PCIs, FunKey=3\n", "info: Delete from PCIs, null\n"));
}

TEST_F(RecordHelpers, DeleteThatRemovesNothingLogsNothing) {
  EXPECT_EQ(delete_db_record(handle_, "PCIs", "FunKey=3", nullptr, 0), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(RecordHelpers, AFailedDeleteIsLoggedAndItsStatusReturned) {
  client().failures[{"delete", 0}] = kFailure;
  client().failures[{"delete", 1}] = kFailure;
  EXPECT_EQ(delete_db_record(handle_, "PCIs", "FunKey=3", nullptr, 0), kFailure);
  EXPECT_EQ(delete_db_record(handle_, "PCIs", nullptr, nullptr, 0), kFailure);
  EXPECT_THAT(client().log,
              ElementsAre("error: failed to delete db records", "error: table=PCIs, where=FunKey=3",
                          "error: failed to delete db records", "error: table=PCIs, where=null"));
}

TEST_F(RecordHelpers, DeleteWithoutHandleOrTableIsInvalid) {
  EXPECT_EQ(delete_db_record(nullptr, "PCIs", "1", nullptr, 0), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(delete_db_record(handle_, nullptr, "1", nullptr, 0), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(RecordHelpers, PutStoresAnEmptyTextAsNull) {
  unsigned char empty[] = "";
  unsigned char text[] = "x";
  client().calls.clear();
  EXPECT_EQ(put_text_value(values_, "B", empty), ZYM_DB_STATUS_OK);
  EXPECT_EQ(put_text_value(values_, "C", text), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().calls, ElementsAre("put B=null:", "put C=text:x"));
}

TEST_F(RecordHelpers, PutAnswersTheClientsStatus) {
  unsigned char empty[] = "";
  unsigned char text[] = "x";
  client().failures[{"put", 1}] = kFailure;
  client().failures[{"put", 2}] = kFailure + 1;
  EXPECT_EQ(put_text_value(values_, "B", empty), kFailure);
  EXPECT_EQ(put_text_value(values_, "C", text), kFailure + 1);
}

}  // namespace
