// Calls of the client as statements of the engine.
#include "client/dialect/statement.h"

#include <gtest/gtest.h>

namespace zymdb::client {
namespace {

class StatementTest : public testing::Test {
 protected:
  StatementTest() {
    for (const char* column : {"_id", "Key", "Name", "Count"}) catalog_.add_column("Card", column);
    request_.table = "Card";
  }

  void columns(std::vector<const char*> names) {
    columns_ = std::move(names);
    request_.columns = columns_;
  }

  std::string sql() {
    const int status = statement_.compose(catalog_, request_);
    std::string text;
    if (status != 0 || !statement_.sql(text)) return "refused: " + std::string(statement_.reason());
    return text;
  }

  std::string key() {
    EXPECT_EQ(statement_.compose(catalog_, request_), 0);
    return std::string(statement_.key());
  }

  Catalog catalog_;
  Request request_;
  std::vector<const char*> columns_;
  ContentValues values_;
  Statement statement_;
};

TEST_F(StatementTest, AQueryNamesItsColumnsOrAll) {
  columns({"Name", "Key"});
  EXPECT_EQ(sql(), R"(SELECT "Name", "Key" FROM "Card")");
  columns({});
  EXPECT_EQ(sql(), R"(SELECT "_id","Key","Name","Count" FROM "Card")");
}

TEST_F(StatementTest, NamesAndDefaultsAreWrittenAsTheEngineHasThem) {
  constexpr Flavour kOther = {'`', " () VALUES ()"};
  catalog_ = Catalog(kOther);
  catalog_.add_column("Card", "Name");
  catalog_.add_column("Card", "odd`name");
  columns({"Name", "max(Name)"});
  request_.where = "Name='x'";
  EXPECT_EQ(sql(), "SELECT `Name`, max(`Name`) FROM `Card` WHERE `Name` = ?  HAVING count(*)>0 ");
  columns({});
  request_.where = nullptr;
  EXPECT_EQ(sql(), "SELECT `Name`,`odd``name` FROM `Card`");
  request_.kind = Request::Kind::kInsert;
  request_.values = &values_;
  EXPECT_EQ(sql(), "INSERT INTO `Card` () VALUES ()");
}

constexpr Flavour kGathers = {.quote = '"', .default_row = " DEFAULT VALUES", .gathering = "gathered"};

TEST_F(StatementTest, PlainRowsGoToTheFunctionOfAnEngineThatHasOne) {
  catalog_ = Catalog(kGathers);
  for (const char* column : {"_id", "Name"}) catalog_.add_column("Card", column);
  columns({"Name", "_id"});
  // The second time the condition is one that is known.
  for (const char* where : {"Name='x'", "Name='y'"}) {
    request_.where = where;
    EXPECT_EQ(sql(), R"(SELECT gathered("Name", "_id") FROM "Card" WHERE "Name" = ? )");
    EXPECT_TRUE(statement_.is_gathered());
  }
  request_.where = "_id IN (SELECT _id FROM Card WHERE Name='x' ORDER BY _id LIMIT 1)";
  EXPECT_TRUE(sql().starts_with("SELECT gathered(")) << sql();
  columns({});
  request_.where = nullptr;
  EXPECT_EQ(sql(), R"(SELECT gathered("_id","Name") FROM "Card")");
}

TEST_F(StatementTest, RowsThatAreFoldedSortedOrCountedComeBack) {
  catalog_ = Catalog(kGathers);
  for (const char* column : {"_id", "Name"}) catalog_.add_column("Card", column);
  columns({"Name"});
  for (const char* where : {"1 ORDER BY Name", "1 LIMIT 1", "1 GROUP BY Name", "1 HAVING 1"}) {
    request_.where = where;
    for (int time = 0; time < 2; ++time) {
      EXPECT_TRUE(sql().starts_with(R"(SELECT "Name" FROM)")) << sql();
      EXPECT_FALSE(statement_.is_gathered());
    }
  }
  request_.where = nullptr;
  for (const char* column : {"DISTINCT Name", "count(*)", "lower(Name)"}) {
    columns({"_id", column});
    EXPECT_FALSE(sql().starts_with("SELECT gathered(")) << sql();
    EXPECT_FALSE(statement_.is_gathered());
  }
}

TEST_F(StatementTest, MoreColumnsThanAFunctionTakesComeBack) {
  catalog_ = Catalog(kGathers);
  for (int i = 0; i < 101; ++i) catalog_.add_column("Card", "Column" + std::to_string(i));
  EXPECT_TRUE(sql().starts_with(R"(SELECT "Column0",)"));
}

TEST_F(StatementTest, TheKeyIsThatOfTheNamesThatAreThereNow) {
  std::string name = "Name";
  columns({name.c_str()});
  const std::string before = key();
  name = "Key";
  columns({name.c_str()});
  EXPECT_NE(key(), before);
  name = "Name";
  columns({name.c_str()});
  EXPECT_EQ(key(), before);
  columns({"Name", ""});
  EXPECT_NE(key(), before);
}

TEST_F(StatementTest, PlainColumnsBesideAnAggregateComeOnlyWithRows) {
  columns({"Name", "count(*)"});
  request_.where = "Key=1";
  EXPECT_EQ(sql(), R"(SELECT "Name", count(*) FROM "Card" WHERE "Key" = ?  HAVING count(*)>0 )");
  request_.where = "Key=1 ORDER BY Name";
  EXPECT_EQ(sql(),
            R"(SELECT "Name", count(*) FROM "Card" WHERE "Key" = ?  HAVING count(*)>0 ORDER BY "Name" )");
  request_.where = "1 GROUP BY Key";
  EXPECT_EQ(sql(), R"(SELECT "Name", count(*) FROM "Card" WHERE ? GROUP BY "Key" )");
  columns({"count(*)"});
  request_.where = "Key=1";
  EXPECT_EQ(sql(), R"(SELECT count(*) FROM "Card" WHERE "Key" = ? )");
}

TEST_F(StatementTest, AnInsertTakesTheSetOrTheDefaults) {
  request_.kind = Request::Kind::kInsert;
  request_.values = &values_;
  EXPECT_EQ(sql(), R"(INSERT INTO "Card" DEFAULT VALUES)");
  values_.put_text("Name", "x");
  values_.put_integer("Key", 7);
  EXPECT_EQ(sql(), R"(INSERT INTO "Card" ("Name","Key") VALUES (?,?))");
}

TEST_F(StatementTest, AnUpdatePutsItsValuesBeforeThoseOfTheCondition) {
  request_.kind = Request::Kind::kUpdate;
  request_.values = &values_;
  request_.where = "Key=3";
  values_.put_integer("Count", 9);
  EXPECT_EQ(sql(), R"(UPDATE "Card" SET "Count"=? WHERE "Key" = ? )");
  ASSERT_EQ(statement_.arguments().size(), 2U);
  EXPECT_EQ(statement_.arguments()[0].integer, 9);
  EXPECT_EQ(statement_.arguments()[1].integer, 3);
}

TEST_F(StatementTest, AChangeThatWouldSeeItselfFindsAllOfItsRowsFirst) {
  constexpr Flavour kSeesItself = {
      .quote = '"', .default_row = " DEFAULT VALUES", .changes_see_themselves = true};
  catalog_ = Catalog(kSeesItself);
  for (const char* column : {"_id", "Key"}) catalog_.add_column("Card", column);
  request_.kind = Request::Kind::kDelete;
  request_.where = "Key=1 OR Key IN (SELECT Key FROM Card)";
  EXPECT_EQ(sql(), R"(DELETE FROM "Card" WHERE "_id" IN (SELECT "_id" FROM "Card" WHERE )"
                   R"("Key" = ? OR "Key" IN ( SELECT "Key" FROM "Card" ) ))");
  request_.where = "Key=1";
  EXPECT_EQ(sql(), R"(DELETE FROM "Card" WHERE "Key" = ? )");
}

TEST_F(StatementTest, TheProbeReadsWhatTheChangeWouldTouch) {
  request_.kind = Request::Kind::kUpdate;
  request_.values = &values_;
  request_.where = "Key=3";
  values_.put_integer("Count", 9);
  ASSERT_EQ(statement_.compose(catalog_, request_), 0);
  ASSERT_TRUE(statement_.has_probe());
  EXPECT_EQ(statement_.probe_sql(), R"(SELECT 1 FROM "Card" WHERE "Key" = ?  LIMIT 1)");
  ASSERT_EQ(statement_.probe_arguments().size(), 1U);
  EXPECT_EQ(statement_.probe_arguments()[0].integer, 3);
}

TEST_F(StatementTest, AChangeOfAllRowsHasNoProbe) {
  request_.kind = Request::Kind::kDelete;
  ASSERT_EQ(statement_.compose(catalog_, request_), 0);
  EXPECT_FALSE(statement_.has_probe());
  EXPECT_EQ(sql(), R"(DELETE FROM "Card")");
}

TEST_F(StatementTest, AChangeTakesNothingButACondition) {
  request_.kind = Request::Kind::kDelete;
  for (const char* where : {"1 ORDER BY Key", "1 LIMIT 1", "1 GROUP BY Key"}) {
    request_.where = where;
    EXPECT_EQ(sql(), "refused: a change takes a condition only") << where;
  }
}

TEST_F(StatementTest, EqualShapesHaveEqualKeysAndOthersDoNot) {
  columns({"Name"});
  request_.where = "Key=1";
  const std::string first = key();
  request_.where = "Key=2";
  EXPECT_EQ(key(), first);
  request_.where = "Key!=2";
  EXPECT_NE(key(), first);
  request_.where = "Key=2";
  columns({"Key"});
  EXPECT_NE(key(), first);
  request_.kind = Request::Kind::kDelete;
  columns({});
  EXPECT_NE(key(), first);
}

// Otherwise a name that there is not would run the statement of others.
TEST_F(StatementTest, NoNameStandsForSeveralInAKey) {
  columns({"Key", "Name"});
  request_.where = "Key=1";
  const std::string two = key();
  for (const char joint : {'\x01', '\x1f', ' ', ',', '"', '\xff'}) {
    const std::string name = std::string("Key") + joint + "Name";
    columns({name.c_str()});
    EXPECT_NE(key(), two) << name;
  }
}

TEST_F(StatementTest, UnknownNamesAreRefused) {
  columns({"NoColumn"});
  EXPECT_EQ(sql(), "refused: no such column");
  request_.table = "NoTable";
  EXPECT_EQ(sql(), "refused: no such table");
  request_.table = "Card";
  columns({});
  request_.kind = Request::Kind::kInsert;
  request_.values = &values_;
  values_.put_null("NoColumn");
  EXPECT_EQ(sql(), "refused: no such column");
}

TEST_F(StatementTest, ParametersTakeTheWidthOfTheirType) {
  request_.where = "Key=? AND Count=?";
  const _zym_db_param_t params[] = {{2, 0, 1, 0x12345}, {3, 0, 1, 0x100000007}, {3, 0, 1, 1}};
  request_.params = params;
  ASSERT_EQ(statement_.compose(catalog_, request_), 0);
  EXPECT_EQ(statement_.arguments()[0].integer, 0x2345);
  EXPECT_EQ(statement_.arguments()[1].integer, 7);
}

TEST_F(StatementTest, APlaceholderNeedsAParameterOfAKnownType) {
  request_.where = "Key=?";
  EXPECT_EQ(statement_.compose(catalog_, request_), ZYM_DB_STATUS_INVALID_PARAM);
  const _zym_db_param_t unknown{9, 0, 1, 1};
  request_.params = {&unknown, 1};
  EXPECT_EQ(statement_.compose(catalog_, request_), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST(ContentValuesTest, ALaterValueReplacesTheEarlierInItsPlace) {
  ContentValues values;
  values.put_text("Name", "first");
  values.put_integer("Key", 1);
  values.put_text("NAME", "second");
  ASSERT_EQ(values.size(), 2U);
  EXPECT_EQ(values.column(0), "Name");
  EXPECT_EQ(values.value(0).text, "second");
  values.put_null("Name");
  EXPECT_EQ(values.value(0).type, Argument::Type::kNull);
  values.clear();
  EXPECT_EQ(values.size(), 0U);
  values.put_integer("Count", 4);
  EXPECT_EQ(values.column(0), "Count");
  EXPECT_EQ(values.value(0).integer, 4);
}

}  // namespace
}  // namespace zymdb::client
