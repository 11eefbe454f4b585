#include "client/result/result.h"

#include <gtest/gtest.h>

#include "zymdb_db.h"

namespace zymdb::client {
namespace {

class ResultTest : public testing::Test {
 protected:
  ResultTest() {
    start({"number", "text", "missing", "sum", "blob", "real"});
    result_.begin_row();
    result_.add_integer(0x1FFFFFFFF);
    result_.add_text("hello");
    result_.add_null();
    result_.add_empty_aggregate();
    result_.add_blob(std::string_view("\x01\x00\x08", 3));
    result_.add_real(1.5);
    result_.end_row();
  }

  void start(std::vector<std::string> names, size_t limit = 1 << 20) {
    result_.start(std::make_shared<const NamedColumns>(std::move(names)), limit);
  }

  std::string text(int column, size_t size = 64) {
    char buffer[64] = "untouched";
    const int status = result_.read_text(column, buffer, size);
    return std::to_string(status) + ":" + buffer;
  }

  Result result_;
};

TEST_F(ResultTest, NothingIsReadBeforeTheFirstAndAfterTheLastRow) {
  uint32_t number = 7;
  int flag = 7;
  EXPECT_EQ(result_.read_number(0, &number), 1);
  EXPECT_EQ(text(1), "1:");
  EXPECT_EQ(result_.read_is_null(0, &flag), 1);
  EXPECT_EQ(result_.step(), ZYM_DB_STATUS_ROW);
  EXPECT_EQ(result_.step(), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(result_.step(), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(result_.read_number(0, &number), 1);
  EXPECT_EQ(number, 7U);
  EXPECT_EQ(flag, 7);
}

TEST_F(ResultTest, AResetPutsTheCursorBeforeTheFirstRow) {
  result_.step();
  result_.step();
  result_.reset();
  EXPECT_EQ(result_.row_count(), 1U);
  EXPECT_EQ(result_.step(), ZYM_DB_STATUS_ROW);
  EXPECT_EQ(text(1), "0:hello");
}

TEST_F(ResultTest, NumbersKeepTheLowBitsOfTheWidthAskedFor) {
  result_.step();
  uint64_t wide = 0;
  uint32_t narrow = 0;
  uint8_t byte = 0;
  int32_t with_sign = 0;
  EXPECT_EQ(result_.read_number(0, &wide), 0);
  EXPECT_EQ(result_.read_number(0, &narrow), 0);
  EXPECT_EQ(result_.read_number(0, &byte), 0);
  EXPECT_EQ(result_.read_number(0, &with_sign), 0);
  EXPECT_EQ(wide, 0x1FFFFFFFFU);
  EXPECT_EQ(narrow, 0xFFFFFFFFU);
  EXPECT_EQ(byte, 0xFFU);
  EXPECT_EQ(with_sign, -1);
}

TEST_F(ResultTest, AnUnreadableNumberLeavesTheDestination) {
  result_.step();
  for (const int column : {-1, 1, 2, 4, 5, 6, 1000}) {
    uint32_t number = 99;
    EXPECT_EQ(result_.read_number(column, &number), 1) << column;
    EXPECT_EQ(number, 99U) << column;
  }
}

TEST_F(ResultTest, AnAggregateOverNothingReadsAsZeroAndIsNull) {
  result_.step();
  uint32_t number = 99;
  int is_null = 0;
  EXPECT_EQ(result_.read_number(3, &number), 0);
  EXPECT_EQ(number, 0U);
  EXPECT_EQ(result_.read_is_null(3, &is_null), 0);
  EXPECT_EQ(is_null, 1);
  EXPECT_EQ(text(3), "1:");
}

TEST_F(ResultTest, TextsAreCutToTheBufferAndNumbersWrittenOut) {
  result_.step();
  EXPECT_EQ(text(1), "0:hello");
  EXPECT_EQ(text(1, 5), "0:hell");
  EXPECT_EQ(text(1, 1), "0:");
  EXPECT_EQ(text(0), "0:8589934591");
  EXPECT_EQ(text(5), "0:1.5");
}

TEST_F(ResultTest, AnUnreadableTextIsEmpty) {
  result_.step();
  for (const int column : {-1, 2, 4, 6}) EXPECT_EQ(text(column), "1:") << column;
}

TEST_F(ResultTest, BlobsAndTextsAreCopiedAsBytes) {
  result_.step();
  char data[4] = {9, 9, 9, 9};
  EXPECT_EQ(result_.read_blob(4, data, sizeof data), 0);
  EXPECT_EQ(std::string(data, 4), std::string("\x01\x00\x08\x09", 4));
  EXPECT_EQ(result_.read_blob(4, data, 1), 0);
  EXPECT_EQ(result_.read_blob(1, data, 2), 0);
  EXPECT_EQ(std::string(data, 2), "he");
  EXPECT_EQ(result_.read_blob(0, data, 4), 1);
  EXPECT_EQ(result_.read_blob(2, data, 4), 1);
}

TEST_F(ResultTest, LengthsAreThoseOfTheBytesOrTheWrittenNumber) {
  result_.step();
  int length = -1;
  EXPECT_EQ(result_.read_bytes(2, &length), 1);
  EXPECT_EQ(length, -1);
  EXPECT_EQ(result_.read_bytes(1, &length), 0);
  EXPECT_EQ(length, 5);
  EXPECT_EQ(result_.read_bytes(4, &length), 0);
  EXPECT_EQ(length, 3);
  EXPECT_EQ(result_.read_bytes(0, &length), 0);
  EXPECT_EQ(length, 10);
}

TEST_F(ResultTest, AnEmptyTextIsNoNull) {
  start({"text"});
  result_.begin_row();
  result_.add_text("");
  result_.end_row();
  result_.step();
  int is_null = 1;
  int length = -1;
  EXPECT_EQ(text(0), "0:");
  EXPECT_EQ(result_.read_is_null(0, &is_null), 0);
  EXPECT_EQ(is_null, 0);
  EXPECT_EQ(result_.read_bytes(0, &length), 0);
  EXPECT_EQ(length, 0);
}

// Values that are held in every way there is, in rows that outgrow any first memory.
class ResultOfManyRows : public ResultTest {
 protected:
  static constexpr int kRows = 3000;
  static constexpr int kColumns = 8;

  ResultOfManyRows() {
    start({"narrow", "wide", "short", "long", "null", "sum", "blob", "real"}, 1 << 24);
    for (int row = 0; row < kRows; ++row) {
      result_.begin_row();
      result_.add_integer(-row);
      result_.add_integer(int64_t{INT32_MAX} + 1 + row);
      result_.add_text(std::string(static_cast<size_t>(row) % 128, 's'));
      result_.add_text(std::string(128 + static_cast<size_t>(row) % 300, 'l'));
      result_.add_null();
      result_.add_empty_aggregate();
      result_.add_blob(std::string(static_cast<size_t>(row) % 5, 'b'));
      result_.add_real(row + 0.5);
      result_.end_row();
    }
  }

  std::string whole_text(int column) const {
    char buffer[512];
    return std::to_string(result_.read_text(column, buffer, sizeof buffer)) + ":" + buffer;
  }

  void expect_column(int column, int row) const {
    const auto size = static_cast<size_t>(row);
    int64_t number = 0;
    int length = 0;
    int is_null = 0;
    switch (column) {
      case 0:
        ASSERT_EQ(result_.read_number(0, &number), 0);
        ASSERT_EQ(number, -row);
        break;
      case 1:
        ASSERT_EQ(result_.read_number(1, &number), 0);
        ASSERT_EQ(number, int64_t{INT32_MAX} + 1 + row);
        break;
      case 2:
        ASSERT_EQ(whole_text(2), "0:" + std::string(size % 128, 's'));
        break;
      case 3:
        ASSERT_EQ(whole_text(3), "0:" + std::string(128 + size % 300, 'l'));
        break;
      case 6:
        ASSERT_EQ(result_.read_bytes(6, &length), 0);
        ASSERT_EQ(length, row % 5);
        break;
      case 7:
        ASSERT_EQ(whole_text(7), "0:" + std::to_string(row) + ".5");
        break;
      default:
        ASSERT_EQ(result_.read_is_null(column, &is_null), 0);
        ASSERT_EQ(is_null, 1) << column;
    }
  }
};

TEST_F(ResultOfManyRows, HasEachInItsPlace) {
  EXPECT_EQ(result_.row_count(), static_cast<uint32_t>(kRows));
  for (int row = 0; row < kRows; ++row) {
    ASSERT_EQ(result_.step(), ZYM_DB_STATUS_ROW);
    for (int column = 0; column < kColumns; ++column) expect_column(column, row);
  }
  EXPECT_EQ(result_.step(), ZYM_DB_STATUS_DONE);
}

TEST_F(ResultOfManyRows, ReadsColumnsInAnyOrderAndMoreThanOnce) {
  for (int row = 0; row < kRows; ++row) {
    ASSERT_EQ(result_.step(), ZYM_DB_STATUS_ROW);
    for (int read = 0; read < 2 * kColumns; ++read) expect_column((row + 5 * read) % kColumns, row);
    if (row % 1000 != 7) continue;
    result_.reset();
    for (int again = 0; again <= row; ++again) ASSERT_EQ(result_.step(), ZYM_DB_STATUS_ROW);
    expect_column(3, row);
  }
}

TEST_F(ResultTest, TheLargestAndSmallestIntegersAreKept) {
  constexpr int64_t kIntegers[] = {INT64_MIN, INT32_MIN - int64_t{1}, INT32_MIN, -1, 0, 1,
                                   INT32_MAX, INT32_MAX + int64_t{1}, INT64_MAX};
  start({"number"});
  for (const int64_t integer : kIntegers) {
    result_.begin_row();
    result_.add_integer(integer);
    result_.end_row();
  }
  for (const int64_t integer : kIntegers) {
    int64_t number = 7;
    result_.step();
    EXPECT_EQ(result_.read_number(0, &number), 0);
    EXPECT_EQ(number, integer);
    EXPECT_EQ(text(0), "0:" + std::to_string(integer));
  }
}

TEST_F(ResultTest, ColumnsAreFoundByNameInAnyOrderAndCase) {
  EXPECT_EQ(result_.find("number"), 0);
  EXPECT_EQ(result_.find("text"), 1);
  EXPECT_EQ(result_.find("REAL"), 5);
  EXPECT_EQ(result_.find("number"), 0);
  EXPECT_EQ(result_.find("blob"), 4);
  EXPECT_EQ(result_.find("blob"), 4);
  EXPECT_EQ(result_.find("absent"), -1);
  EXPECT_EQ(result_.find(""), -1);
}

TEST_F(ResultTest, ColumnsAreFoundByNameWhateverWasAskedOfTheRowsBefore) {
  const std::vector<std::string> names = {"number", "text", "missing", "sum", "blob", "real"};
  const std::vector<std::vector<int>> rows = {{0, 1, 2, 3, 4, 5},
                                              {5, 0, 4, 1, 3, 2},
                                              {5, 0, 4, 1, 3, 2},
                                              {1},
                                              {4},
                                              {5},
                                              {2, 2, 2},
                                              {0, 1, 0, 1, 0, 1, 0, 1, 0, 1},
                                              {5, 0, 4, 1, 3, 2},
                                              {0, 1, 2, 3, 4, 5}};
  for (const std::vector<int>& row : rows) {
    result_.reset();
    ASSERT_EQ(result_.step(), ZYM_DB_STATUS_ROW);
    for (const int column : row) {
      EXPECT_EQ(result_.find(names[static_cast<size_t>(column)].c_str()), column);
      EXPECT_EQ(result_.find("no column"), -1);
    }
  }
}

TEST_F(ResultTest, AResultBeyondItsLimitIsRefused) {
  start({"text"}, 1000);
  EXPECT_TRUE(result_.begin_row());
  EXPECT_FALSE(result_.add_text(std::string(1001, 'x')));
  int rows = 0;
  for (start({"text"}, 1000); result_.begin_row(); ++rows) {
    if (!result_.add_text(std::string(90, 'x'))) break;
    result_.end_row();
  }
  EXPECT_GE(rows, 8);
  EXPECT_LE(rows, 11);
}

TEST_F(ResultTest, StartingAnewForgetsTheRows) {
  start({"other"});
  EXPECT_EQ(result_.row_count(), 0U);
  EXPECT_EQ(result_.step(), ZYM_DB_STATUS_DONE);
}

}  // namespace
}  // namespace zymdb::client
