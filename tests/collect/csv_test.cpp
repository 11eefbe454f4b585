#include "common/csv.h"

#include <gtest/gtest.h>

namespace zymdb {
namespace {

TEST(CsvField, QuotesWhatWouldEndIt) {
  EXPECT_EQ(csv_field("slot 1"), "slot 1");
  EXPECT_EQ(csv_field(""), "");
  EXPECT_EQ(csv_field("it's; a\ttab"), "it's; a\ttab");
  EXPECT_EQ(csv_field("a,b"), "\"a,b\"");
  EXPECT_EQ(csv_field("2\""), "\"2\"\"\"");
  EXPECT_EQ(csv_field("two\nlines"), "\"two\nlines\"");
  EXPECT_EQ(csv_field("old\rline"), "\"old\rline\"");
}

TEST(CsvRow, SeparatesFieldsByCommasAndEndsInBothCharacters) {
  EXPECT_EQ(csv_row({"PLACE", "CARD"}), "PLACE,CARD\r\n");
  EXPECT_EQ(csv_row({"slot 1", "", "a,b"}), "slot 1,,\"a,b\"\r\n");
}

TEST(CsvRow, IsNeverALineWithNothingOnIt) {
  EXPECT_EQ(csv_row({""}), "\"\"\r\n");
  EXPECT_EQ(csv_row({"", ""}), ",\r\n");
}

}  // namespace
}  // namespace zymdb
