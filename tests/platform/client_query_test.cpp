// Reads through the client's interface, on a real database.
#include <gmock/gmock.h>

#include "platform/client_fixture.h"

namespace {

using QueryTest = ClientTest;

TEST_F(QueryTest, RowsComeWithTheirColumnsInTheOrderAskedFor) {
  given("PCIs", {{"FunKey", 7}, {"SlotDesignation", "Slot 1"}});
  given("PCIs", {{"FunKey", 8}, {"SlotDesignation", nullptr}});
  EXPECT_EQ(rows("PCIs", {"SlotDesignation", "FunKey"}), "Slot 1|7\nNULL|8\n");
}

TEST_F(QueryTest, AllColumnsAreReadByName) {
  given("Memory", {{"SlotNo", 7}, {"Manufacturer", "Maker"}, {"Capacity", 4000000000}});
  const Rows found = query("Memory", {}, "SlotNo=?", {{2, 0, 1, 0x10007}});
  ASSERT_EQ(status_, 0);
  ASSERT_EQ(zym_db_result_step(found.get()), ZYM_DB_STATUS_ROW);
  unsigned int slot = 0;
  uint64_t capacity = 0;
  char maker[4];
  EXPECT_EQ(extract_uint_column_from_result(found.get(), "SlotNo", &slot), 0);
  EXPECT_EQ(extract_uint64_column_from_result(found.get(), "Capacity", &capacity), 0);
  EXPECT_EQ(extract_str_column_from_result(found.get(), "Manufacturer", maker, sizeof maker), 0);
  EXPECT_EQ(slot, 7U);
  EXPECT_EQ(capacity, 4000000000U);
  EXPECT_STREQ(maker, "Mak");
  EXPECT_EQ(extract_uint_column_from_result(found.get(), "NoColumn", &slot), 1);
  EXPECT_EQ(extract_uint_column_from_result(found.get(), "TotalWidth", &slot), 1);
  EXPECT_EQ(slot, 7U);
}

TEST_F(QueryTest, AResultBeyondWhatTheEnvironmentAllowsIsTooLarge) {
  given("DPUEvents", {{"Message", std::string(3000, 'x')}});
  ASSERT_EQ(zym_db_close(handle()), 0);
  setenv("ZYMDB_RESULT_KIB", "1", 1);
  query("DPUEvents", {"Message"});
  unsetenv("ZYMDB_RESULT_KIB");
  EXPECT_EQ(status_, 46);
  EXPECT_EQ(count("DPUEvents", "Slot=1"), 0);
}

TEST_F(QueryTest, AResultThatIsTooLargeLeavesWorkingReadsBehind) {
  for (int i = 0; i < 3; ++i) given("DPUEvents", {{"Message", std::string(400, 'x')}});
  ASSERT_EQ(zym_db_close(handle()), 0);
  setenv("ZYMDB_RESULT_KIB", "1", 1);
  query("DPUEvents", {"Message"});
  EXPECT_EQ(status_, 46);
  EXPECT_NE(query("DPUEvents", {"Message"}, "_id=1"), nullptr);
  EXPECT_EQ(status_, 0);
  unsetenv("ZYMDB_RESULT_KIB");
}

TEST_F(QueryTest, EveryKindOfValueComesAsItIs) {
  given("Memory", {{"SlotNo", 7}, {"Capacity", 4000000000}, {"Manufacturer", ""}, {"PartNo", "1.50"}});
  EXPECT_EQ(rows("Memory", {"SlotNo", "Capacity", "Manufacturer", "PartNo", "MemSize"}),
            "7|4000000000||1.50|NULL\n");
  const Rows found = query("Memory", {"MemSize"});
  ASSERT_EQ(zym_db_result_step(found.get()), ZYM_DB_STATUS_ROW);
  int size = 7;
  EXPECT_EQ(zym_db_result_column_int(found.get(), 0, &size), 1);
  EXPECT_EQ(size, 7);
}

TEST_F(QueryTest, WhatTheClientCallsForItselfIsNobodyElsesFunction) {
  given("Memory", {{"SlotNo", 7}});
  for (const char* where :
       {"gathered(SlotNo)=1", "SlotNo=7 AND gathered(SlotNo)", "1 HAVING gathered(SlotNo)"}) {
    EXPECT_EQ(query("Memory", {"_id"}, where), nullptr) << where;
    EXPECT_EQ(status_, 1) << where;
  }
  EXPECT_EQ(query("Memory", {"gathered(SlotNo)"}), nullptr);
  EXPECT_EQ(status_, 1);
}

TEST_F(QueryTest, AFractionIsReadAsText) {
  given("Memory", {{"SlotNo", 7}});
  given("Memory", {{"SlotNo", 8}});
  const Rows mean = query("Memory", {"avg(SlotNo)"});
  EXPECT_EQ(first(mean), "7.5");
}

TEST_F(QueryTest, MoreParametersThanPlaceholdersAreIgnored) {
  given("Memory", {{"SlotNo", 7}});
  EXPECT_NE(query("Memory", {"_id"}, "SlotNo=7", {u32(1), u32(2)}), nullptr);
}

TEST_F(QueryTest, APlaceholderWithoutAValueIsAnInvalidParameter) {
  EXPECT_EQ(query("Memory", {"_id"}, "SlotNo=?"), nullptr);
  EXPECT_EQ(status_, ZYM_DB_STATUS_INVALID_PARAM);
  zym_db_result_t* rows = nullptr;
  EXPECT_EQ(zym_db_query(handle(), "Memory", nullptr, 0, "SlotNo=?", nullptr, 1, 0, &rows),
            ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(rows, nullptr);
}

TEST_F(QueryTest, ANullParameterArrayCountsAsNone) {
  zym_db_result_t* rows = nullptr;
  EXPECT_EQ(zym_db_query(handle(), "Memory", nullptr, 0, "SlotNo=1", nullptr, 3, 0, &rows), 0);
  EXPECT_NE(rows, nullptr);
  zym_db_free_result(rows);
}

TEST_F(QueryTest, AFailedQueryLeavesTheResultPointer) {
  auto* const preset = reinterpret_cast<zym_db_result_t*>(0x10);
  zym_db_result_t* rows = preset;
  EXPECT_EQ(zym_db_query(handle(), "NoTable", nullptr, 0, nullptr, nullptr, 0, 0, &rows),
            ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(zym_db_query(handle(), "PCIs", nullptr, 0, "FunKey=", nullptr, 0, 0, &rows), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(zym_db_raw_query(handle(), "select nothing", 15, &rows), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(rows, preset);
}

// A column's type and a value's spelling need not agree.
TEST_F(QueryTest, NumbersAndTextsMatchAcrossTypes) {
  given("PCIAdapter", {{"PCIKey", 12}, {"ConnectorType", "12"}, {"CardName", "00012345"}});
  struct Case {
    const char* filter;
    int matches;
  };
  const Case cases[] = {
      {"PCIKey=12", 1},
      {"PCIKey='12'", 1},
      {"PCIKey=\"12\"", 1},
      {"PCIKey=0x0C", 1},
      {"ConnectorType=12", 1},
      {"ConnectorType='12'", 1},
      {"ConnectorType!=12", 0},
      {"ConnectorType=0x0C", 0},
      {"12=ConnectorType", 1},
      {"PCIKey IN ('12','13')", 1},
      {"ConnectorType IN (12,13)", 1},
      {"PCIKey>'9'", 1},
      {"PCIKey BETWEEN '9' AND 13", 1},
      {"CardName=00012345", 1},
      {"CardName=12345", 0},
      {"CardName='00012345'", 1},
      {"PCIKey=12.5", 0},
      {"(PCIKey+1)=13", 1},
      {"PCIKey&0x04=4", 1},
      {"PCIKey=-12", 0},
      {"PCIKey=12345678901234567890", 0},
  };
  for (const Case& each : cases) EXPECT_EQ(count("PCIAdapter", each.filter), each.matches) << each.filter;
}

TEST_F(QueryTest, ComparisonsTellLettersApartByCase) {
  given("PCIAdapter", {{"CardName", "Adapter X"}});
  EXPECT_EQ(count("PCIAdapter", "CardName='adapter x'"), 0);
  EXPECT_EQ(count("PCIAdapter", "CardName like 'adapter%'"), 0);
  EXPECT_EQ(count("PCIAdapter", "CardName LIKE 'Adapter%'"), 1);
  EXPECT_EQ(count("PCIAdapter", "CardName like '%'"), 1);
}

// A character is a byte, or one from C0 on with those from 80 to BF that follow it.
TEST_F(QueryTest, LengthCountsCharacters) {
  for (const char* text : {"abc",
                           "\xC3\xA9"
                           "1",
                           "\x80\x80"
                           "a",
                           "", "\xFF"})
    given("PCIs", {{"SlotDesignation", text}});
  EXPECT_EQ(rows("PCIs", {"_id"}, "length(SlotDesignation)=3"), "1\n3\n");
  EXPECT_EQ(rows("PCIs", {"_id"}, "length(SlotDesignation)=2"), "2\n");
  EXPECT_EQ(rows("PCIs", {"_id"}, "length(SlotDesignation)<2"), "4\n5\n");
}

// Counted from 1, or from the end backwards; a length less than 0 is of what stands before.
TEST_F(QueryTest, SubstrCutsCharactersWhereverItBegins) {
  given("PCIs", {{"SlotDesignation",
                  "a\xC3\xA9"
                  "bc"}});
  const std::pair<const char*, const char*> cuts[] = {{"1,2", "a\xC3\xA9"},
                                                      {"2,1", "\xC3\xA9"},
                                                      {"3", "bc"},
                                                      {"0,2", "a"},
                                                      {"-1", "c"},
                                                      {"-2,1", "b"},
                                                      {"-9,7", "a\xC3\xA9"},
                                                      {"3,-2", "a\xC3\xA9"},
                                                      {"2,-9", "a"},
                                                      {"0,-2", ""},
                                                      {"9,1", ""},
                                                      {"2,0", ""},
                                                      {"0",
                                                       "a\xC3\xA9"
                                                       "bc"}};
  for (const auto& [places, expected] : cuts) {
    const std::string where = std::string("substr(SlotDesignation,") + places + ")='" + expected + "'";
    EXPECT_EQ(count("PCIs", where), 1) << where;
  }
}

TEST_F(QueryTest, SubstrCutsTextsOfAnyLength) {
  const std::string text(100'000, 'x');
  given("PCIs", {{"SlotDesignation", (text + "\xC3\xA9").c_str()}});
  EXPECT_EQ(count("PCIs", "substr(SlotDesignation,-1)='\xC3\xA9'"), 1);
  EXPECT_EQ(count("PCIs", "length(substr(SlotDesignation,2))=100000"), 1);
  EXPECT_EQ(count("PCIs", "length(substr(SlotDesignation,1,2000000000))=100001"), 1);
}

TEST_F(QueryTest, TextInDoubleQuotesIsNeverAColumn) {
  given("PCISetting", {{"SettingID", "Type"}, {"Type", 5}});
  given("PCISetting", {{"SettingID", "5"}, {"Type", 5}});
  EXPECT_EQ(rows("PCISetting", {"SettingID"}, "SettingID=\"Type\""), "Type\n");
}

TEST_F(QueryTest, ABareWordIsAText) {
  given("PldmDeviceFirmware", {{"SoftwareID", "15B3A2D4"}});
  EXPECT_EQ(count("PldmDeviceFirmware", "SoftwareID!=15B3A2D4"), 0);
  EXPECT_EQ(count("PldmDeviceFirmware", "SoftwareID=15B3A2D4"), 1);
}

TEST_F(QueryTest, AnAggregateOverNoRowsReadsAsZero) {
  const Rows found = query("DPUEvents", {"COUNT(*)", "MIN(_id)", "MAX(_id)"}, "Slot=3");
  ASSERT_EQ(zym_db_result_row_count(found.get()), 1U);
  ASSERT_EQ(zym_db_result_step(found.get()), ZYM_DB_STATUS_ROW);
  for (int column = 0; column < 3; ++column) {
    unsigned int value = 9;
    EXPECT_EQ(zym_db_result_column_uint(found.get(), column, &value), 0);
    EXPECT_EQ(value, 0U);
  }
  int is_null = 0;
  EXPECT_EQ(zym_db_result_column_is_null(found.get(), 1, &is_null), 0);
  EXPECT_EQ(is_null, 1);
}

TEST_F(QueryTest, SumsAddTheMatchingRows) {
  given("PCINetwork", {{"PCIFuncKey", 1}, {"NumberofPhysicalPorts", 2}});
  given("PCINetwork", {{"PCIFuncKey", 1}, {"NumberofPhysicalPorts", 4}});
  given("PCINetwork", {{"PCIFuncKey", 2}, {"NumberofPhysicalPorts", 8}});
  EXPECT_EQ(first(query("PCINetwork", {"sum(NumberofPhysicalPorts)"}, "PCIFuncKey=1")), "6");
}

TEST_F(QueryTest, PlainColumnsBesideAnAggregateOverNoRowsGiveNoRow) {
  given("PCIAdapter", {{"PCIKey", 1}});
  EXPECT_EQ(zym_db_result_row_count(query("PCIAdapter", {"PCIKey", "count(*)"}, "PCIKey=2").get()), 0U);
  EXPECT_EQ(zym_db_result_row_count(query("PCIAdapter", {"PCIKey", "count(*)"}, "PCIKey=1").get()), 1U);
}

TEST_F(QueryTest, GroupsAreFoldedWithTheirCounts) {
  for (const int64_t key : {5, 7, 5, 5}) given("PCIAdapter", {{"PCIKey", key}});
  const Rows found = query("PCIAdapter", {"PCIKey", "count(*)"}, "1 GROUP BY PCIKey");
  ASSERT_EQ(zym_db_result_row_count(found.get()), 2U);
  std::string text;
  while (zym_db_result_step(found.get()) == ZYM_DB_STATUS_ROW) {
    unsigned int key = 0;
    unsigned int functions = 0;
    EXPECT_EQ(extract_uint_column_from_result(found.get(), "PCIKey", &key), 0);
    EXPECT_EQ(extract_uint_column_from_result(found.get(), "count(*)", &functions), 0);
    text += std::to_string(key) + "x" + std::to_string(functions) + " ";
  }
  EXPECT_EQ(text, "5x3 7x1 ");
}

TEST_F(QueryTest, DistinctFoldsEqualRows) {
  for (int i = 0; i < 3; ++i) given("PCIAdapter", {{"PCIKey", 1}, {"PCIFuncKey", 9}, {"AIMSupported", 1}});
  const Rows found = query("PCIAdapter", {"DISTINCT PCIFuncKey", "AIMSupported"}, "PCIKey=1");
  EXPECT_EQ(zym_db_result_row_count(found.get()), 1U);
  EXPECT_EQ(first(found), "9");
}

TEST_F(QueryTest, ASubSelectMayNameColumnsOfTheRowAroundIt) {
  for (const int64_t slot : {1, 2, 3}) given("PCIAdapter", {{"PCIKey", slot + 10}, {"SlotNo", slot}});
  given("PCIs", {{"FunKey", 11}, {"SlotNo", 1}});
  given("PCIs", {{"FunKey", 12}, {"SlotNo", 3}});
  EXPECT_EQ(rows("PCIAdapter", {"SlotNo"}, "SlotNo IN (SELECT SlotNo FROM PCIs WHERE FunKey=PCIKey)"), "1\n");
  EXPECT_EQ(rows("PCIAdapter", {"SlotNo"}, "SlotNo NOT IN (SELECT SlotNo FROM PCIs WHERE FunKey=PCIKey)"),
            "2\n3\n");
  EXPECT_EQ(rows("PCIAdapter", {"SlotNo"}, "EXISTS (SELECT _id FROM PCIs WHERE FunKey=PCIKey)"), "1\n2\n");
  EXPECT_EQ(rows("PCIAdapter", {"SlotNo"}, "SlotNo<(SELECT max(SlotNo) FROM PCIs WHERE FunKey=PCIKey)"),
            "2\n");
}

TEST_F(QueryTest, ARawStatementReads) {
  given("PCIs", {{"DevKey", 1}, {"HardwareId", 0x100}});
  given("PCIs", {{"DevKey", 1}, {"HardwareId", 0x101}});
  const char* const kSql[] = {
      "select DevKey from PCIs group by DevKey;",
      "select HardwareId from PCIs where DevKey=1 and HardwareId&0xFF=0;",
  };
  const char* const kFirst[] = {"1", "256"};
  for (int i = 0; i < 2; ++i) {
    zym_db_result_t* rows = nullptr;
    ASSERT_EQ(zym_db_raw_query(handle(), kSql[i], 160, &rows), 0);
    const Rows found(rows);
    EXPECT_EQ(zym_db_result_row_count(rows), 1U);
    EXPECT_EQ(first(found), kFirst[i]);
    unsigned int value = 0;
    EXPECT_EQ(extract_uint_column_from_result(rows, i == 0 ? "DevKey" : "HardwareId", &value), 0);
  }
}

TEST_F(QueryTest, ARawStatementMaySelectWhateverAnExpressionEndsIn) {
  given("PCIs", {{"BusNo", 7}});
  const struct {
    const char* expression;
    int status;
  } kCases[] = {{"BusNo+1", 0},
                {"'it''s' <> BusNo", 0},
                {"BusNo || 'x'", 0},
                {"?+BusNo", ZYM_DB_STATUS_INVALID_PARAM},
                {"BusNo=?", ZYM_DB_STATUS_INVALID_PARAM}};
  for (const auto& [expression, status] : kCases) {
    const std::string sql = std::string("select ") + expression + " from PCIs";
    zym_db_result_t* rows = nullptr;
    EXPECT_EQ(zym_db_raw_query(handle(), sql.c_str(), static_cast<int>(sql.size()) + 1, &rows), status)
        << expression;
    EXPECT_EQ(Rows(rows) != nullptr, status == 0) << expression;
  }
}

TEST_F(QueryTest, WhatIsReckonedBeyond64BitsIsAFraction) {
  given("PCIs", {{"FunKey", 4000000000}});
  const std::pair<const char*, const char*> sums[] = {{"FunKey*2", "8000000000"},
                                                      {"(FunKey*4)*FunKey", "6.4e+19"},
                                                      {"-(FunKey*4)*FunKey", "-6.4e+19"},
                                                      {"ifnull(SlotNo,(FunKey*4)*FunKey)", "6.4e+19"},
                                                      {"max((FunKey*4)*FunKey)", "6.4e+19"}};
  for (const auto& [sum, expected] : sums) {
    const std::string sql = std::string("SELECT ") + sum + " FROM PCIs";
    zym_db_result_t* rows = nullptr;
    ASSERT_EQ(zym_db_raw_query(handle(), sql.c_str(), static_cast<int>(sql.size()) + 1, &rows), 0) << sql;
    EXPECT_EQ(first(Rows(rows)), expected) << sql;
  }
}

TEST_F(QueryTest, APlaceInAnOrderIsThatOfAColumn) {
  given("PCIs", {{"SlotNo", 2}, {"SlotDesignation", "4"}});
  given("PCIs", {{"SlotNo", 1}, {"SlotDesignation", "12"}});
  const struct {
    const char* sql;
    int status;
    const char* first;
  } kCases[] = {{"SELECT BusNo,SlotNo FROM PCIs ORDER BY 2", 0, "1"},
                {"SELECT BusNo,SlotNo FROM PCIs ORDER BY 3", ZYM_DB_STATUS_ERROR, ""},
                {"SELECT BusNo,SlotNo FROM PCIs ORDER BY 0", ZYM_DB_STATUS_ERROR, ""},
                {"SELECT BusNo,SlotNo FROM PCIs ORDER BY -1", ZYM_DB_STATUS_ERROR, ""},
                {"SELECT BusNo,SlotNo FROM PCIs ORDER BY -(-2)", 0, "1"},
                {"SELECT BusNo,SlotNo FROM PCIs ORDER BY 0x02", 0, "1"},
                {"SELECT BusNo,SlotNo FROM PCIs ORDER BY SlotDesignation>0x03", 0, "1"},
                {"SELECT BusNo,SlotNo FROM PCIs GROUP BY 3", ZYM_DB_STATUS_ERROR, ""},
                {"SELECT DISTINCT 4,SlotNo FROM PCIs WHERE SlotNo=1", 0, "1"}};
  for (const auto& each : kCases) {
    zym_db_result_t* rows = nullptr;
    EXPECT_EQ(zym_db_raw_query(handle(), each.sql, 160, &rows), each.status) << each.sql;
    const Rows found(rows);
    if (each.status != 0) continue;
    int slot = 0;
    ASSERT_EQ(zym_db_result_step(rows), ZYM_DB_STATUS_ROW) << each.sql;
    EXPECT_EQ(zym_db_result_column_int(rows, 1, &slot), 0);
    EXPECT_EQ(std::to_string(slot), each.first) << each.sql;
  }
}

TEST_F(QueryTest, ARawStatementEndsWithItsBuffer) {
  zym_db_result_t* rows = nullptr;
  const char text[] = "select _id from PCIs and what follows in memory";
  EXPECT_EQ(zym_db_raw_query(handle(), text, 20, &rows), 0);
  Rows(rows).reset();
}

TEST_F(QueryTest, ARawStatementDoesNothingButRead) {
  given("PCIs", {{"DevKey", 1}});
  for (const char* sql :
       {"delete from PCIs;", "update PCIs set DevKey=2;", "insert into PCIs (DevKey) values (1);",
        "drop table PCIs;", "PRAGMA user_version=9;", "select 1; delete from PCIs;", "", ";"}) {
    zym_db_result_t* rows = nullptr;
    EXPECT_EQ(zym_db_raw_query(handle(), sql, 160, &rows), ZYM_DB_STATUS_ERROR) << sql;
    EXPECT_EQ(rows, nullptr);
  }
  EXPECT_EQ(rows("PCIs", {"DevKey"}), "1\n");
}

TEST_F(QueryTest, AResultStaysWhatItWasWhileTheTableChanges) {
  given("PCIs", {{"FunKey", 1}});
  const Rows found = query("PCIs", {"FunKey"});
  given("PCIs", {{"FunKey", 2}});
  zym_db_delete(handle(), "PCIs", nullptr, nullptr, 0, nullptr);
  EXPECT_EQ(zym_db_result_row_count(found.get()), 1U);
  EXPECT_EQ(first(found), "1");
}

TEST_F(QueryTest, ManyResultsAreOpenAtOnce) {
  for (int64_t key = 0; key < 10; ++key) given("PCIs", {{"FunKey", key}});
  std::vector<Rows> open;
  for (uint64_t key = 0; key < 10; ++key) open.push_back(query("PCIs", {"FunKey"}, "FunKey=?", {u32(key)}));
  for (int key = 0; key < 10; ++key) EXPECT_EQ(first(open[static_cast<size_t>(key)]), std::to_string(key));
}

TEST_F(QueryTest, MoreShapesThanAreKeptPreparedStillAnswer) {
  given("PCIs", {{"FunKey", 1}});
  for (int round = 0; round < 2; ++round) {
    std::string filter = "FunKey=1";
    for (int i = 0; i < 100; ++i) {
      EXPECT_EQ(count("PCIs", filter), 1);
      filter += " AND FunKey=1";
    }
  }
}

}  // namespace
