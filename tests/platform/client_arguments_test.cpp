// Misuse of the client's interface: answered, never a crash.
#include "platform/client_fixture.h"

namespace {

using ArgumentsTest = ClientTest;

constexpr int kInvalid = ZYM_DB_STATUS_INVALID_PARAM;

TEST_F(ArgumentsTest, StatementsNeedTheirHandleTableAndOutput) {
  zym_db_result_t* rows = nullptr;
  const Set values(zym_db_get_content_values(handle()));
  const char* const column = "_id";
  EXPECT_EQ(zym_db_query(nullptr, "PCIs", nullptr, 0, nullptr, nullptr, 0, 0, &rows), kInvalid);
  EXPECT_EQ(zym_db_query(handle(), nullptr, nullptr, 0, nullptr, nullptr, 0, 0, &rows), kInvalid);
  EXPECT_EQ(zym_db_query(handle(), "PCIs", nullptr, 0, nullptr, nullptr, 0, 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_query(handle(), "PCIs", nullptr, 1, nullptr, nullptr, 0, 0, &rows), kInvalid);
  EXPECT_EQ(zym_db_query(handle(), "PCIs", &column, -1, nullptr, nullptr, 0, 0, &rows), kInvalid);
  const char* const no_column = nullptr;
  EXPECT_EQ(zym_db_query(handle(), "PCIs", &no_column, 1, nullptr, nullptr, 0, 0, &rows), kInvalid);
  EXPECT_EQ(zym_db_raw_query(nullptr, "select _id from PCIs", 128, &rows), kInvalid);
  EXPECT_EQ(zym_db_raw_query(handle(), nullptr, 128, &rows), kInvalid);
  EXPECT_EQ(zym_db_raw_query(handle(), "select _id from PCIs", 0, &rows), kInvalid);
  EXPECT_EQ(zym_db_raw_query(handle(), "select _id from PCIs", 128, nullptr), kInvalid);
  EXPECT_EQ(zym_db_insert(nullptr, "PCIs", values.get(), 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_insert(handle(), nullptr, values.get(), 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_insert(handle(), "PCIs", nullptr, 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_update(nullptr, "PCIs", values.get(), nullptr, nullptr, 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_update(handle(), nullptr, values.get(), nullptr, nullptr, 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_update(handle(), "PCIs", nullptr, nullptr, nullptr, 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_delete(nullptr, "PCIs", nullptr, nullptr, 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_delete(handle(), nullptr, nullptr, nullptr, 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_begin(nullptr), kInvalid);
  EXPECT_EQ(zym_db_commit(nullptr), kInvalid);
  EXPECT_EQ(zym_db_rollback(nullptr), kInvalid);
  EXPECT_EQ(rows, nullptr);
}

TEST_F(ArgumentsTest, OutputsOfChangesMayBeNull) {
  const Set values(zym_db_get_content_values(handle()));
  zym_db_content_put_uint(values.get(), "FunKey", 1);
  EXPECT_EQ(zym_db_insert(handle(), "PCIs", values.get(), 0, nullptr), 0);
  EXPECT_EQ(zym_db_update(handle(), "PCIs", values.get(), "FunKey=1", nullptr, 0, nullptr), 0);
  EXPECT_EQ(zym_db_delete(handle(), "PCIs", "FunKey=1", nullptr, 0, nullptr), 0);
}

TEST_F(ArgumentsTest, ValueSetsNeedTheirSetColumnAndText) {
  const Set values(zym_db_get_content_values(handle()));
  EXPECT_EQ(zym_db_get_content_values(nullptr), nullptr);
  EXPECT_EQ(zym_db_content_clear(nullptr), kInvalid);
  EXPECT_EQ(zym_db_content_put_text(nullptr, "a", "b"), kInvalid);
  EXPECT_EQ(zym_db_content_put_text(values.get(), nullptr, "b"), kInvalid);
  EXPECT_EQ(zym_db_content_put_text(values.get(), "a", nullptr), kInvalid);
  EXPECT_EQ(zym_db_content_put_int(nullptr, "a", 1), kInvalid);
  EXPECT_EQ(zym_db_content_put_int(values.get(), nullptr, 1), kInvalid);
  EXPECT_EQ(zym_db_content_put_uint(nullptr, "a", 1), kInvalid);
  EXPECT_EQ(zym_db_content_put_uchar(nullptr, "a", 1), kInvalid);
  EXPECT_EQ(zym_db_content_put_short_uint(nullptr, "a", 1), kInvalid);
  EXPECT_EQ(zym_db_content_put_blob(nullptr, "a", "b", 1), kInvalid);
  EXPECT_EQ(zym_db_content_put_blob(values.get(), nullptr, "b", 1), kInvalid);
  EXPECT_EQ(zym_db_content_put_blob(values.get(), "a", nullptr, 1), kInvalid);
  EXPECT_EQ(zym_db_content_put_blob(values.get(), "a", "b", -1), kInvalid);
  EXPECT_EQ(zym_db_content_put_null(nullptr, "a"), kInvalid);
  EXPECT_EQ(zym_db_content_put_null(values.get(), nullptr), kInvalid);
  EXPECT_EQ(zym_db_free_content_values(nullptr), kInvalid);
}

TEST_F(ArgumentsTest, ResultsNeedTheirResultAndDestination) {
  given("PCIs", {{"FunKey", 1}});
  const Rows rows = query("PCIs", {"FunKey"});
  ASSERT_EQ(zym_db_result_step(rows.get()), ZYM_DB_STATUS_ROW);
  int number = 0;
  char text[8];
  EXPECT_EQ(zym_db_result_step(nullptr), kInvalid);
  EXPECT_EQ(zym_db_result_row_count(nullptr), 0U);
  EXPECT_EQ(zym_db_result_reset(nullptr), kInvalid);
  EXPECT_EQ(zym_db_result_column_int(nullptr, 0, &number), kInvalid);
  EXPECT_EQ(zym_db_result_column_int(rows.get(), 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_result_column_text(nullptr, 0, text, 8), kInvalid);
  EXPECT_EQ(zym_db_result_column_text(rows.get(), 0, nullptr, 8), kInvalid);
  EXPECT_EQ(zym_db_result_column_text(rows.get(), 0, text, 0), kInvalid);
  EXPECT_EQ(zym_db_result_column_text(rows.get(), 0, text, -1), kInvalid);
  EXPECT_EQ(zym_db_result_column_blob(nullptr, 0, text, 8), kInvalid);
  EXPECT_EQ(zym_db_result_column_blob(rows.get(), 0, nullptr, 8), kInvalid);
  EXPECT_EQ(zym_db_result_column_blob(rows.get(), 0, text, -1), kInvalid);
  EXPECT_EQ(zym_db_result_column_bytes(nullptr, 0, &number), kInvalid);
  EXPECT_EQ(zym_db_result_column_bytes(rows.get(), 0, nullptr), kInvalid);
  EXPECT_EQ(zym_db_result_column_is_null(nullptr, 0, &number), kInvalid);
  EXPECT_EQ(zym_db_result_column_is_null(rows.get(), 0, nullptr), kInvalid);
  EXPECT_EQ(extract_uint_column_from_result(rows.get(), nullptr, nullptr), kInvalid);
  EXPECT_EQ(extract_uint64_column_from_result(nullptr, "FunKey", nullptr), kInvalid);
  EXPECT_EQ(extract_str_column_from_result(rows.get(), "FunKey", text, 0), kInvalid);
  EXPECT_EQ(extract_str_column_from_result(rows.get(), nullptr, text, 8), kInvalid);
  EXPECT_EQ(zym_db_free_result(nullptr), kInvalid);
}

TEST_F(ArgumentsTest, EveryStatusHasAText) {
  for (const int status : {0, 1, 3, 4, 6, 9, 10, 11, 40, 41, 42, 43, 44, 45, 46, 47, 48}) {
    EXPECT_STRNE(zym_db_get_error_str(status), "unknown status") << status;
  }
  EXPECT_STREQ(zym_db_get_error_str(-1), "unknown status");
  EXPECT_STREQ(zym_db_get_error_str(12345), "unknown status");
}

}  // namespace
