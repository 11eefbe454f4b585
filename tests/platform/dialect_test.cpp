// Filter text in, the engine's text and values out.
#include "client/dialect/dialect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/status.h"

namespace zymdb::client {
namespace {

using testing::ElementsAre;
using testing::Field;

Catalog small_catalog() {
  Catalog catalog;
  for (const char* column : {"_id", "FunKey", "CardName", "Type", "Status"})
    catalog.add_column("Card", column);
  catalog.add_column("Card", "SoftwareID", true);
  catalog.add_column("Card", "Info", true);
  for (const char* column : {"_id", "PfaKey"}) catalog.add_column("Setting", column);
  catalog.add_column("Setting", "SettingID", true);
  return catalog;
}

class DialectTest : public testing::Test {
 protected:
  int translate(std::string_view text) {
    return translate_condition(catalog_, *catalog_.table("Card"), text, out_);
  }

  // "shape | value, value", with texts in brackets; the reason when it is refused.
  std::string translated(std::string_view text) {
    if (translate(text) != 0) return "refused: " + std::string(out_.reason);
    return described();
  }

  std::string selected(std::string_view text) {
    if (translate_select(catalog_, text, out_) != 0) return "refused: " + std::string(out_.reason);
    return described();
  }

  Catalog catalog_ = small_catalog();
  Translation out_;

 private:
  std::string described() const {
    std::string text = out_.shape;
    const char* separator = "| ";
    for (const Argument& argument : out_.arguments) {
      text += separator;
      if (argument.type == Argument::Type::kInteger) text += std::to_string(argument.integer);
      if (argument.type == Argument::Type::kReal) text += std::to_string(argument.real);
      if (argument.type == Argument::Type::kText) text.append("[").append(argument.text).append("]");
      if (argument.type == Argument::Type::kPlaceholder) text += "?";
      separator = ", ";
    }
    return text;
  }
};

TEST_F(DialectTest, ValuesLeaveTheShape) {
  EXPECT_EQ(translated("FunKey=7"), R"("FunKey" = ? | 7)");
  EXPECT_EQ(translated("CardName='a card'"), R"("CardName" = ? | [a card])");
  EXPECT_EQ(translated("FunKey=?"), R"("FunKey" = ? | ?)");
}

TEST_F(DialectTest, FiltersThatDifferInValuesAndSpacingShareAShape) {
  translate("FunKey=1 AND CardName=\"x\"");
  const std::string shape = out_.shape;
  translate("  FunKey = 22   and CardName='yy' ");
  EXPECT_EQ(out_.shape, shape);
}

TEST_F(DialectTest, TextInDoubleQuotesIsAValueEvenWhenItNamesAColumn) {
  EXPECT_EQ(translated("CardName=\"Type\""), R"("CardName" = ? | [Type])");
}

TEST_F(DialectTest, ADoubledQuoteInATextIsOneQuote) {
  EXPECT_EQ(translated("CardName='it''s' AND CardName=\"a \"\"b\"\"\""),
            R"("CardName" = ? AND "CardName" = ? | [it's], [a "b"])");
  EXPECT_EQ(translated("CardName='\"'"), R"("CardName" = ? | ["])");
}

TEST_F(DialectTest, ABareWordThatNamesNothingIsAText) {
  struct Case {
    const char* word;
    const char* value;
  };
  const Case cases[] = {
      {"15B3A2D4", "[15B3A2D4]"},
      {"00012345", "[00012345]"},
      {"15E30001", "[15E30001]"},
      {"DEADBEEF", "[DEADBEEF]"},
      {"NoColumn", "[NoColumn]"},
      {"0xZZ", "[0xZZ]"},
      {"12345678901234567890", "[12345678901234567890]"},
      {"count", "[count]"},
      {"\xC3\xA4\xFF", "[\xC3\xA4\xFF]"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(translated("CardName!=" + std::string(each.word)),
              std::string(R"("CardName" != ? | )") + each.value);
  }
}

TEST_F(DialectTest, ABareWordOrNumberComparedWithATextColumnIsATextAsItStands) {
  struct Case {
    const char* text;
    const char* expected;
  };
  const Case cases[] = {
      {"SoftwareID!=0x1F", R"("SoftwareID" != ? | [0x1F])"},
      {"SoftwareID!=0X1f", R"("SoftwareID" != ? | [0X1f])"},
      {"SoftwareID=00012345", R"("SoftwareID" = ? | [00012345])"},
      {"SoftwareID!=15E30001", R"("SoftwareID" != ? | [15E30001])"},
      {"SoftwareID=12", R"("SoftwareID" = ? | [12])"},
      {"SoftwareID==1.50", R"("SoftwareID" == ? | [1.50])"},
      {"SoftwareID<>7", R"("SoftwareID" <> ? | [7])"},
      {"SoftwareID<7 OR SoftwareID>=0x8", R"("SoftwareID" < ? OR "SoftwareID" >= ? | [7], [0x8])"},
      {"softwareid = 12", R"("SoftwareID" = ? | [12])"},
      {"(SoftwareID=12)", R"(( "SoftwareID" = ? ) | [12])"},
      {"FunKey=12 AND SoftwareID=12 AND Type=12",
       R"("FunKey" = ? AND "SoftwareID" = ? AND "Type" = ? | 12, [12], 12)"},
      {"0x1F!=SoftwareID", R"(? != "SoftwareID" | [0x1F])"},
      {"12=SoftwareID AND 12=FunKey", R"(? = "SoftwareID" AND ? = "FunKey" | [12], 12)"},
      {"(12=SoftwareID)", R"(( ? = "SoftwareID" ) | [12])"},
      {"SoftwareID IN (0x1F, 12, DEAD, 'x')",
       R"("SoftwareID" IN ( ? , ? , ? , ? ) | [0x1F], [12], [DEAD], [x])"},
      {"SoftwareID NOT IN (1,2) AND FunKey IN (1,2)",
       R"("SoftwareID" NOT IN ( ? , ? ) AND "FunKey" IN ( ? , ? ) | [1], [2], 1, 2)"},
      {"SoftwareID IN (1) OR (FunKey=2 AND Type IN (3))",
       R"("SoftwareID" IN ( ? ) OR ( "FunKey" = ? AND "Type" IN ( ? ) ) | [1], 2, 3)"},
      {"SoftwareID LIKE 0x1 AND SoftwareID NOT LIKE 12",
       R"("SoftwareID" LIKE ? AND "SoftwareID" NOT LIKE ? | [0x1], [12])"},
      {"SoftwareID IS 1 OR SoftwareID IS NOT 0x2",
       R"("SoftwareID" IS ? OR "SoftwareID" IS NOT ? | [1], [0x2])"},
      {"SoftwareID BETWEEN 1 AND 0x2 AND FunKey=3",
       R"("SoftwareID" BETWEEN ? AND ? AND "FunKey" = ? | [1], [0x2], 3)"},
      {"SoftwareID NOT BETWEEN 1 AND 2", R"("SoftwareID" NOT BETWEEN ? AND ? | [1], [2])"},
      {"FunKey IN (SELECT PfaKey FROM Setting WHERE SettingID=0x1 AND PfaKey=0x1)",
       R"("FunKey" IN ( SELECT "PfaKey" FROM "Setting" WHERE "SettingID" = ? AND "PfaKey" = ? ) | [0x1], 1)"},
  };
  for (const Case& each : cases) EXPECT_EQ(translated(each.text), each.expected) << each.text;
}

TEST_F(DialectTest, ANumberInAnExpressionStaysANumber) {
  struct Case {
    const char* text;
    const char* expected;
  };
  const Case cases[] = {
      {"SoftwareID+1=0x10", R"("SoftwareID" + ? = ? | 1, 16)"},
      {"1+SoftwareID=0x10", R"(? + "SoftwareID" = ? | 1, 16)"},
      {"SoftwareID=0x10+1", R"("SoftwareID" = ? + ? | 16, 1)"},
      {"1+0x10=SoftwareID", R"(? + ? = "SoftwareID" | 1, 16)"},
      {"0x10=SoftwareID+1", R"(? = "SoftwareID" + ? | 16, 1)"},
      {"length(SoftwareID)=0x10", R"(length ( "SoftwareID" ) = ? | 16)"},
      {"SoftwareID=-5", R"("SoftwareID" = - ? | 5)"},
      {"SoftwareID=? AND FunKey=5", R"("SoftwareID" = ? AND "FunKey" = ? | ?, 5)"},
      {"SoftwareID=Info AND Info=FunKey", R"("SoftwareID" = "Info" AND "Info" = "FunKey" )"},
      {"SoftwareID IN (SELECT 1, SettingID FROM Setting WHERE 1)",
       R"("SoftwareID" IN ( SELECT ? , "SettingID" FROM "Setting" WHERE ? ) | 1, 1)"},
      {"SoftwareID IN ((1+2), 3)", R"("SoftwareID" IN ( ( ? + ? ) , ? ) | 1, 2, [3])"},
      {"SoftwareID IS NULL AND 5", R"("SoftwareID" IS NULL AND ? | 5)"},
      {"SoftwareID='x' ORDER BY 2 LIMIT 3", R"("SoftwareID" = ? ORDER BY 2 LIMIT 3 | [x])"},
  };
  for (const Case& each : cases) EXPECT_EQ(translated(each.text), each.expected) << each.text;
}

TEST_F(DialectTest, NothingComparedWithATextColumnIsTheEmptyText) {
  struct Case {
    const char* text;
    const char* expected;
  };
  const Case cases[] = {
      {"SoftwareID!=", R"("SoftwareID" != ? | [])"},
      {"SoftwareID= ", R"("SoftwareID" = ? | [])"},
      {"SoftwareID!=;", R"("SoftwareID" != ? | [])"},
      {"FunKey=1 OR SoftwareID!=", R"("FunKey" = ? OR "SoftwareID" != ? | 1, [])"},
      {"(FunKey=1 OR SoftwareID<>) AND Type=2",
       R"(( "FunKey" = ? OR "SoftwareID" <> ? ) AND "Type" = ? | 1, [], 2)"},
      {"SoftwareID!= AND Info= OR Type=2", R"("SoftwareID" != ? AND "Info" = ? OR "Type" = ? | [], [], 2)"},
      {"SoftwareID!= ORDER BY 1", R"("SoftwareID" != ? ORDER BY 1 | [])"},
      {"FunKey=", R"("FunKey" = )"},
      {"lower(Info)=", R"(lower ( "Info" ) = )"},
      {"Type+Info=", R"("Type" + "Info" = )"},
  };
  for (const Case& each : cases) EXPECT_EQ(translated(each.text), each.expected) << each.text;
}

TEST_F(DialectTest, ATextColumnsFiltersShareAShapeWhateverTheirValuesLookLike) {
  translate("SoftwareID!='x'");
  const std::string shape = out_.shape;
  for (const char* filter : {"SoftwareID!=x", "SoftwareID!=12", "SoftwareID!=0x1F", "SoftwareID!="}) {
    translate(filter);
    EXPECT_EQ(out_.shape, shape) << filter;
  }
}

TEST_F(DialectTest, NumbersAreDecimalHexadecimalOrFractions) {
  struct Case {
    const char* number;
    const char* value;
  };
  const Case cases[] = {
      {"0", "0"},          {"7", "7"},      {"9223372036854775807", "9223372036854775807"},
      {"0xFF", "255"},     {"0Xff", "255"}, {"0xFFFFFFFFFFFFFFFF", "-1"},
      {"1.5", "1.500000"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(translated("FunKey=" + std::string(each.number)),
              std::string(R"("FunKey" = ? | )") + each.value);
  }
}

TEST_F(DialectTest, ANegativeNumberIsAMinusAndANumber) {
  EXPECT_EQ(translated("FunKey=-5"), R"("FunKey" = - ? | 5)");
}

TEST_F(DialectTest, KeywordsAndNamesAreKnownInAnyCase) {
  EXPECT_EQ(translated("funkey=1 and CARDNAME like 'x' Or Status is not null"),
            R"("FunKey" = ? AND "CardName" LIKE ? OR "Status" IS NOT NULL | 1, [x])");
}

TEST_F(DialectTest, NumbersAfterGroupOrderAndLimitStay) {
  EXPECT_EQ(translated("1 GROUP BY FunKey"), R"(? GROUP BY "FunKey" | 1)");
  EXPECT_TRUE(out_.grouped);
  EXPECT_EQ(out_.tail, std::string::npos);
  EXPECT_EQ(translated("Type=2 ORDER BY 1 DESC LIMIT 5"), R"("Type" = ? ORDER BY 1 DESC LIMIT 5 | 2)");
  EXPECT_FALSE(out_.grouped);
  EXPECT_EQ(out_.shape.substr(out_.tail), "ORDER BY 1 DESC LIMIT 5 ");
  EXPECT_EQ(translated("1 GROUP BY FunKey HAVING count(*)>2"),
            R"(? GROUP BY "FunKey" HAVING count ( * ) > ? | 1, 2)");
}

TEST_F(DialectTest, ASubSelectBringsItsTablesColumns) {
  EXPECT_EQ(translated("FunKey NOT IN ( SELECT PfaKey FROM Setting) AND Type=3"),
            R"("FunKey" NOT IN ( SELECT "PfaKey" FROM "Setting" ) AND "Type" = ? | 3)");
  EXPECT_FALSE(out_.grouped);
  EXPECT_EQ(
      translated("FunKey IN (select PfaKey from Setting where PfaKey=1 group by 1) AND Type=PfaKeys"),
      R"("FunKey" IN ( SELECT "PfaKey" FROM "Setting" WHERE "PfaKey" = ? GROUP BY 1 ) AND "Type" = ? | 1, [PfaKeys])");
  EXPECT_FALSE(out_.grouped);
}

TEST_F(DialectTest, OperatorsKeepTheirLongestForm) {
  EXPECT_EQ(
      translated("FunKey&0xFF=0 AND Type<>1 AND Type<=2 AND Type>>1<<2!=3"),
      R"("FunKey" & ? = ? AND "Type" <> ? AND "Type" <= ? AND "Type" >> ? << ? != ? | 255, 0, 1, 2, 1, 2, 3)");
}

TEST_F(DialectTest, WhatIsNoConditionIsRefused) {
  struct Case {
    const char* text;
    const char* reason;
  };
  const Case cases[] = {
      {"", "an empty condition or statement"},
      {"   ", "an empty condition or statement"},
      {"CardName='x", "a quote is not closed"},
      {"CardName=\"x", "a quote is not closed"},
      {"CardName='it's'", "a quote is not closed"},
      {"Type=1; DELETE FROM Card", "text after the statement"},
      {"Type=1;;", "text after the statement"},
      {"Type=1 -- AND", "a comment"},
      {"Type=1 /* AND */", "a comment"},
      {"(Type=1", "a parenthesis is not closed"},
      {"Type=1)", "a parenthesis was never opened"},
      {"Type=1) OR (Type=2", "a parenthesis was never opened"},
      {"load_extension('x')", "an unknown function"},
      {"Type=:a", "an unexpected character"},
      {"Type=@a", "an unexpected character"},
      {"Type=$a", "an unexpected character"},
      {"Type=#", "an unexpected character"},
      {"[Type]=1", "an unexpected character"},
      {"`Type`=1", "an unexpected character"},
      {"Card.Type=1", "an unexpected character"},
      {"Type=1.5e3", "a malformed number"},
      {"FunKey IN (SELECT PfaKey FROM sqlite_master)", "no such table after FROM"},
      {"FunKey IN (SELECT PfaKey FROM)", "no such table after FROM"},
      {"FunKey IN (SELECT NoColumn FROM Setting)", "an unknown column"},
      {"1 ORDER BY NoColumn", "an unknown column"},
      {"FunKey IN (SELECT PfaKey FROM Setting x)", "an unknown table"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(translate(each.text), ZYM_DB_STATUS_ERROR) << each.text;
    EXPECT_EQ(out_.reason, each.reason) << each.text;
  }
}

TEST_F(DialectTest, AClosingSemicolonEndsTheText) {
  EXPECT_EQ(translated("Type=1; \n"), R"("Type" = ? | 1)");
}

TEST_F(DialectTest, NestingAndTheNumberOfValuesAreLimited) {
  const std::string open(10000, '(');
  const std::string close(10000, ')');
  EXPECT_EQ(translate(open + "1" + close), kStatusTooLarge);
  EXPECT_EQ(translate(open.substr(0, 50) + "1" + close.substr(0, 50)), 0);
  std::string list = "FunKey IN (1";
  for (int i = 0; i < 40000; ++i) list += ",1";
  EXPECT_EQ(translate(list + ")"), kStatusTooLarge);
}

TEST_F(DialectTest, ALongTextIsOneValue) {
  const std::string text(1 << 20, 'x');
  const std::string filter = "CardName='" + text + "'";
  ASSERT_EQ(translate(filter), 0);
  ASSERT_EQ(out_.arguments.size(), 1U);
  EXPECT_EQ(out_.arguments[0].text, text);
  EXPECT_EQ(out_.shape, "\"CardName\" = ? ");
}

TEST_F(DialectTest, AStatementIsASelect) {
  EXPECT_EQ(selected("select FunKey from Card where Type=3 group by FunKey;"),
            R"(SELECT "FunKey" FROM "Card" WHERE "Type" = ? GROUP BY "FunKey" | 3)");
  EXPECT_EQ(selected("delete from Card"), "refused: not a SELECT");
  EXPECT_EQ(selected("PRAGMA user_version"), "refused: not a SELECT");
  EXPECT_EQ(selected(""), "refused: not a SELECT");
  EXPECT_EQ(selected("select sql from sqlite_master"), "refused: no such table after FROM");
  EXPECT_EQ(selected("select NoColumn from Card"), "refused: an unknown column");
}

class ColumnEntryTest : public DialectTest {
 protected:
  bool parse(const char* text) {
    entry_ = {};
    return parse_column(*catalog_.table("Card"), text, entry_);
  }
  ColumnEntry entry_;
};

TEST_F(ColumnEntryTest, ColumnsFunctionsAndDistinctAreUnderstood) {
  struct Case {
    const char* text;
    const char* sql;
    const char* name;
    bool aggregate;
  };
  const Case cases[] = {
      {"FunKey", "\"FunKey\"", "FunKey", false},
      {"DISTINCT FunKey", "DISTINCT \"FunKey\"", "FunKey", false},
      {"count(*)", "count(*)", "count(*)", true},
      {"COUNT(*)", "count(*)", "COUNT(*)", true},
      {"MIN(_id)", "min(\"_id\")", "MIN(_id)", true},
      {"sum( Type )", "sum(\"Type\")", "sum( Type )", true},
      {"count(distinct Type)", "count(DISTINCT \"Type\")", "count(distinct Type)", true},
      {"lower(CardName)", "lower(\"CardName\")", "lower(CardName)", false},
  };
  for (const Case& each : cases) {
    ASSERT_TRUE(parse(each.text)) << each.text;
    EXPECT_EQ(entry_.sql, each.sql);
    EXPECT_EQ(entry_.name, each.name);
    EXPECT_EQ(entry_.aggregate, each.aggregate) << each.text;
  }
}

TEST_F(ColumnEntryTest, EverythingElseIsRefused) {
  for (const char* text : {"",           "NoColumn",   "*",          "FunKey, Type",  "FunKey FROM Card",
                           "(SELECT 1)", "'text'",     "1",          "randomblob(9)", "sum(NoColumn)",
                           "sum(Type",   "sum Type)",  "sum()",      "sum(Type) x",   "FunKey;",
                           "FunKey--",   "\"FunKey\"", "count(*)+1", "DISTINCT",      "max(1)"}) {
    EXPECT_FALSE(parse(text)) << text;
  }
}

TEST(CatalogTest, NamesAreFoundInAnyCaseAndSpelledAsInTheSchema) {
  const Catalog catalog = small_catalog();
  ASSERT_NE(catalog.table("cARD"), nullptr);
  EXPECT_EQ(catalog.table("cARD")->name(), "Card");
  EXPECT_EQ(catalog.table("Card")->column("FUNKEY")->name, "FunKey");
  EXPECT_EQ(catalog.table("Card")->column("FunKe"), nullptr);
  EXPECT_EQ(catalog.table("Cards"), nullptr);
  EXPECT_THAT(catalog.table("Setting")->columns(),
              ElementsAre(Field(&Column::name, "_id"), Field(&Column::name, "PfaKey"),
                          Field(&Column::name, "SettingID")));
}

}  // namespace
}  // namespace zymdb::client
