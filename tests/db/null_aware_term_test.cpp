#include <gtest/gtest.h>

#include <string>

#include "zymdb_db.h"

namespace {

std::string term(const char* column, std::string value) {
  return get_sql_str(column, reinterpret_cast<unsigned char*>(value.data()));
}

TEST(NullAwareTerm, AValueDiffersFromNullAndFromEveryOtherText) {
  EXPECT_EQ(term("PendingValue", "1"), "(PendingValue IS NULL OR PendingValue!=\"1\")");
  EXPECT_EQ(term("SettingName", "X"), "(SettingName IS NULL OR SettingName!=\"X\")");
}

TEST(NullAwareTerm, TheEmptyValueDiffersFromWhateverIsStored) {
  EXPECT_EQ(term("SuppressIf", ""), "SuppressIf IS NOT NULL");
}

TEST(NullAwareTerm, WithoutAColumnTheTermBreaksOffWhereItsNameShouldStand) {
  EXPECT_EQ(term(nullptr, "1"), "(");
  EXPECT_EQ(term(nullptr, ""), "");
}

TEST(NullAwareTerm, ValuesAreNotEscaped) {
  EXPECT_EQ(term("A", "say \"x\""), "(A IS NULL OR A!=\"say \"x\"\")");
  EXPECT_EQ(term("A", "50%s"), "(A IS NULL OR A!=\"50%s\")");
}

TEST(NullAwareTerm, LongValuesAreKeptWhole) {
  const std::string value(100000, 'v');
  EXPECT_EQ(term("A", value), "(A IS NULL OR A!=\"" + value + "\")");
}

}  // namespace
