// Conditions that were translated before: with other values they mean what a translation of their own says.
#include "client/dialect/known_conditions.h"

#include <gtest/gtest.h>

namespace zymdb::client {
namespace {

Catalog small_catalog() {
  Catalog catalog;
  for (const char* column : {"_id", "FunKey", "Slot2", "Type"}) catalog.add_column("Card", column);
  catalog.add_column("Card", "Name", true);
  for (const char* column : {"_id", "FunKey"}) catalog.add_column("Port", column);
  return catalog;
}

std::string described(const Translation& translation) {
  std::string text =
      translation.shape + "|" + std::to_string(translation.tail) + (translation.grouped ? "|grouped" : "|");
  for (const Argument& argument : translation.arguments) {
    text += "|" + std::to_string(static_cast<int>(argument.type)) + ":";
    if (argument.type == Argument::Type::kInteger) text += std::to_string(argument.integer);
    if (argument.type == Argument::Type::kReal) text += std::to_string(argument.real);
    text += argument.text;
  }
  return text;
}

class KnownConditionsTest : public testing::Test {
 protected:
  const Table& card() const { return *catalog_.table("Card"); }

  // As a statement does; the text outlives what is told of it.
  std::string translated(const std::string& text) {
    Translation out;
    was_known_ = known_.recall(catalog_, card(), text, out);
    if (was_known_) return described(out);
    if (translate_condition(catalog_, card(), text, out) != 0) return "refused: " + std::string(out.reason);
    known_.note(out);
    return described(out);
  }
  std::string translated_anew(const std::string& text) const {
    Translation out;
    if (translate_condition(catalog_, card(), text, out) != 0) return "refused: " + std::string(out.reason);
    return described(out);
  }
  bool is_known_after(const std::string& first, const std::string& then) {
    translated(first);
    translated(then);
    return was_known_;
  }

  Catalog catalog_ = small_catalog();
  KnownConditions known_;
  bool was_known_ = false;
};

TEST_F(KnownConditionsTest, MeanWhatTheyMeanAnew) {
  constexpr std::string_view kNumbers[] = {
      "0",     "7",    "42", "007", "0x1F",     "1.5",   "18446744073709551616", "999999999999999999", "1e5",
      "Slot2", "Name", "?",  "",    "'quoted'", "12abc", "9223372036854775808"};
  constexpr std::string_view kTexts[] = {"''", "'a'", "\"a\"", "'it''s'", "'x 12'", "\"'\"",
                                         "'",  "abc", "12",    "?",       "\x01",   "'\x02'"};
  constexpr std::string_view kTemplates[] = {"FunKey=#",
                                             "FunKey = #",
                                             "FunKey=# AND Name=@",
                                             "Name=#",
                                             "Name=@",
                                             "#=FunKey",
                                             "@=Name",
                                             "FunKey IN (#,#)",
                                             "FunKey=-#",
                                             "Slot2=# OR Slot2=#",
                                             "Name LIKE @",
                                             "FunKey=# ORDER BY Slot2 LIMIT #",
                                             "FunKey=# LIMIT 5",
                                             "(FunKey=#)",
                                             "Name=@ AND Name=#",
                                             "FunKey BETWEEN # AND #",
                                             "FunKey=#;",
                                             "#",
                                             "@#",
                                             "FunKey=# GROUP BY 1",
                                             "Name=# AND Type=@",
                                             "FunKey=# AND Name= ",
                                             "Name= AND FunKey=#",
                                             "length(Name)=#",
                                             "\x01=#",
                                             "FunKey=\x01",
                                             "FunKey=# AND Name=\x02",
                                             "FunKey=# -- #"};
  int known = 0;
  for (int round = 0; round < 2; ++round) {
    for (const std::string_view pattern : kTemplates) {
      for (const std::string_view number : kNumbers) {
        for (const std::string_view text : kTexts) {
          std::string condition;
          for (const char c : pattern) {
            if (c == '#')
              condition += number;
            else if (c == '@')
              condition += text;
            else
              condition += c;
          }
          ASSERT_EQ(translated(condition), translated_anew(condition)) << condition;
          known += was_known_;
        }
      }
    }
  }
  EXPECT_GT(known, 1000);
}

TEST_F(KnownConditionsTest, AreThoseWithOtherValuesOfTheSameKind) {
  EXPECT_TRUE(is_known_after("FunKey=1", "FunKey=123456"));
  EXPECT_TRUE(is_known_after("Name='a' AND FunKey=1", "Name='b c' AND FunKey=2"));
  EXPECT_TRUE(is_known_after("Name='a'", "Name=\"b\""));
  EXPECT_TRUE(is_known_after("Name=1", "Name=22"));
  EXPECT_TRUE(is_known_after("Type=? AND FunKey=1", "Type=? AND FunKey=2"));
}

TEST_F(KnownConditionsTest, AreNoneWhoseValuesAreNotAllArguments) {
  EXPECT_FALSE(is_known_after("FunKey=1 LIMIT 5", "FunKey=1 LIMIT 6"));
  EXPECT_FALSE(is_known_after("Name=one", "Name=two"));
  EXPECT_FALSE(is_known_after("FunKey=1.5", "FunKey=2.5"));
  EXPECT_FALSE(is_known_after("FunKey=007", "FunKey=008"));
  EXPECT_FALSE(is_known_after("Name='it''s'", "Name='it''s'"));
}

TEST_F(KnownConditionsTest, AreNoneThatWereRefused) {
  EXPECT_FALSE(is_known_after("FunKey=1)", "FunKey=2)"));
  EXPECT_EQ(translated("FunKey=2)"), translated_anew("FunKey=2)"));
}

TEST_F(KnownConditionsTest, BelongToTheirTableAndCatalog) {
  translated("FunKey=1");
  Translation out;
  EXPECT_TRUE(known_.recall(catalog_, card(), "FunKey=2", out));
  EXPECT_FALSE(known_.recall(catalog_, *catalog_.table("Port"), "FunKey=2", out));
  const Catalog other = small_catalog();
  EXPECT_FALSE(known_.recall(other, card(), "FunKey=2", out));
  EXPECT_TRUE(known_.recall(catalog_, card(), "FunKey=2", out));
}

TEST_F(KnownConditionsTest, DoNotKeepTheTextsOfTheirCallers) {
  translated(std::string("Name='gone'"));
  Translation out;
  const std::string text = "Name='here'";
  ASSERT_TRUE(known_.recall(catalog_, card(), text, out));
  EXPECT_EQ(out.arguments.at(0).text, "here");
}

}  // namespace
}  // namespace zymdb::client
