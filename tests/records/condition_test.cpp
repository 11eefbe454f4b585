// Values compared with what somebody wrote.
#include "records/condition.h"

#include <gtest/gtest.h>

namespace zymdb::records {
namespace {

constexpr FieldInfo kText = {.key = "Text", .heading = "TEXT", .meaning = "a text"};
constexpr FieldInfo kNumber = {
    .key = "Number", .heading = "NUMBER", .meaning = "a number", .kind = Kind::kNumber};
constexpr FieldInfo kHex = {
    .key = "Hex", .heading = "HEX", .meaning = "hexadecimal", .kind = Kind::kNumber, .hex_digits = 16};

// The condition as people write it.
Condition parsed(std::string_view text) {
  const auto relation = take_relation(text);
  return {relation.value_or(Relation::kEqual), std::string(text)};
}

bool fits(const FieldInfo& field, const Value& value, std::string_view condition) {
  return holds(field, value, parsed(condition));
}

TEST(TakeRelation, TakesTheLongestSign) {
  for (const char* sign : {"=", "!=", "<", "<=", ">", ">="}) {
    const std::string written = std::string(sign) + "1";
    std::string_view text = written;
    const auto relation = take_relation(text);
    ASSERT_TRUE(relation);
    EXPECT_EQ(sign_of(*relation), sign);
    EXPECT_EQ(text, "1");
  }
  std::string_view none = "1=";
  EXPECT_FALSE(take_relation(none));
  EXPECT_EQ(none, "1=");
}

TEST(Condition, ComparesNumbersAsNumbers) {
  const Value sixteen = uint64_t{16};
  for (const char* met : {"=16", "=0x10", "=016", "!=17", "<17", ">9", "<=16", ">=16", ">-1"})
    EXPECT_TRUE(fits(kNumber, sixteen, met)) << met;
  for (const char* unmet : {"=17", "!=16", "<16", ">16", "<=15", ">=17", "<-1"})
    EXPECT_FALSE(fits(kNumber, sixteen, unmet)) << unmet;
  EXPECT_TRUE(fits(kNumber, Value(int64_t{-5}), "<-4"));
  EXPECT_TRUE(fits(kNumber, Value(int64_t{-5}), ">-10"));
  EXPECT_TRUE(fits(kNumber, Value(UINT64_MAX), "=18446744073709551615"));
}

TEST(Condition, KnowsAWideIdentifierInBothOfItsForms) {
  EXPECT_TRUE(fits(kHex, Value(uint64_t{255}), "=0xff"));
  EXPECT_TRUE(fits(kHex, Value("0x00000000000000ff"), "=0xff"));
  EXPECT_TRUE(fits(kHex, Value("0x00000000000000ff"), "=255"));
}

TEST(Condition, ComparesTextsInAnyCaseAndWhole) {
  const Value text = "Bay 2";
  for (const char* met : {"=Bay 2", "=bay 2", "!=Bay 02", "!=Bay", "<bay 10", ">Bay 1", ">=bay 2", "<=BAY 2"})
    EXPECT_TRUE(fits(kText, text, met)) << met;
  for (const char* unmet : {"=Bay", "=Bay 02", "!=bay 2", "<Bay 2", ">Bay 2", ">Bay 10"})
    EXPECT_FALSE(fits(kText, text, unmet)) << unmet;
}

// As files can say it.
TEST(Condition, TakesWhatIsNotUtf8ForTheReplacementCharacter) {
  EXPECT_TRUE(fits(kText, Value("a\xff"), "=a\xEF\xBF\xBD"));
}

TEST(Condition, OfWhatIsNotKnownIsMetByTheEmptyTextAlone) {
  for (const FieldInfo& field : {kText, kNumber}) {
    EXPECT_TRUE(fits(field, Value(), "="));
    EXPECT_FALSE(fits(field, Value(), "!="));
    EXPECT_TRUE(fits(field, Value(), "!=1"));
    for (const char* unmet : {"=1", "<1", ">1", "<=1", ">=1", ">=", "<="})
      EXPECT_FALSE(fits(field, Value(), unmet)) << unmet;
  }
  EXPECT_FALSE(fits(kNumber, Value(uint64_t{0}), "="));
  EXPECT_TRUE(fits(kNumber, Value(uint64_t{0}), "!="));
}

TEST(Condition, OfANumberIsANumber) {
  EXPECT_TRUE(is_comparable(kNumber, parsed("<16")));
  EXPECT_TRUE(is_comparable(kNumber, parsed("=0x10")));
  EXPECT_TRUE(is_comparable(kNumber, parsed("=")));
  for (const char* none : {"=up", "<1.5", "=16 GiB", ">0x", "=0xfg", "=99999999999999999999", "=-", ">="})
    EXPECT_FALSE(is_comparable(kNumber, parsed(none))) << none;
  EXPECT_TRUE(is_comparable(kText, parsed(">=1.5")));
  EXPECT_FALSE(is_comparable(kText, parsed("<")));
}

}  // namespace
}  // namespace zymdb::records
