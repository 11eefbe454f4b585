// Hostile text: a statement fails, or reaches the rows of its own table and nothing else.
#include <chrono>
#include <filesystem>
#include <span>

#include "platform/client_fixture.h"

namespace {

// Conditions that an attacker would put where a condition stands.
const std::vector<std::string>& hostile_conditions() {
  static const std::vector<std::string> conditions = {
      "1; DROP TABLE Firmwares",
      "1; DELETE FROM Firmwares; --",
      "1;;",
      "1 -- rest",
      "1 /* rest */",
      "1 UNION SELECT * FROM Firmwares",
      "1 UNION ALL SELECT FirmwareName FROM Firmwares",
      "1 EXCEPT SELECT 1",
      "1) UNION SELECT 1 FROM Firmwares WHERE (1",
      "1) OR (1",
      "(1",
      "1)",
      "FunKey IN (SELECT name FROM sqlite_master)",
      "FunKey IN (SELECT name FROM sqlite_schema)",
      "FunKey IN (SELECT seq FROM sqlite_sequence)",
      "FunKey IN (SELECT name FROM pragma_table_info('PCIs'))",
      "FunKey IN (SELECT value FROM json_each('[1]'))",
      "FunKey IN (WITH RECURSIVE r(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM r) SELECT n FROM r)",
      "FunKey IN (DELETE FROM Firmwares RETURNING _id)",
      "FunKey IN (VALUES (1),(2))",
      "load_extension('/tmp/x.so')",
      "writefile('/tmp/zymdb-hostile', 'x')",
      "readfile('/etc/passwd') IS NULL",
      "fts3_tokenizer('x') IS NULL",
      "randomblob(1000000000) IS NULL",
      "zeroblob(1000000000) IS NULL",
      "hex(zeroblob(1000000000)) IS NULL",
      "printf('%1000000000d', 1) IS NULL",
      "replace(CardName,'x','y') IS NULL",
      "group_concat(FunKey) IS NULL",
      "sqlite_version() IS NULL",
      "ATTACH DATABASE '/tmp/zymdb-hostile.db' AS x",
      "1; ATTACH DATABASE '/tmp/zymdb-hostile.db' AS x",
      "PRAGMA writable_schema=ON",
      "1 RETURNING *",
      "1 WINDOW w AS ()",
      "1 INTO x",
      "rowid=1",
      "oid=1 OR _rowid_=1",
      "main.PCIs.FunKey=1",
      "FunKey=?1",
      "FunKey=:x",
      "FunKey=@x",
      "FunKey=$x",
      "[FunKey]=1",
      "`FunKey`=1",
      "FunKey=x'00'",
      "CAST(FunKey AS TEXT)=1",
      "CASE WHEN 1 THEN 1 END",
      "FunKey MATCH 1",
      "FunKey REGEXP '(a+)+'",
      "FunKey GLOB '****************************************a'",
      "SlotDesignation LIKE '" + std::string(100000, '%') + "a'",
      "SlotDesignation LIKE '" + std::string(4000, '%') + "a'",
      "SlotDesignation='" + std::string(1 << 20, 'a') + "'",
      "SlotDesignation=\xFF\xFE\xC0\x80",
      "SlotDesignation='\xFF\xFE\xC0\x80'",
      std::string(10000, '(') + "1" + std::string(10000, ')'),
      std::string(100000, '-') + "1",
      std::string(100000, '~') + "1",
      std::string(100000, '\''),
      std::string(100001, '"'),
      "ORDER BY 1",
      "GROUP BY",
      "1 GROUP BY 1 HAVING max(FunKey)",
      "1 ORDER BY (SELECT count(*) FROM Firmwares)",
      "1 LIMIT 1 OFFSET -1",
      "1 LIMIT (SELECT 1)",
      "'",
      "\"",
      "''",
      "'''",
      "?",
      "??",
      ",",
      "=",
      "AND",
      "SELECT",
      "FROM",
      "\\",
      "%",
      "\x01",
  };
  return conditions;
}

std::string long_list(int length) {
  std::string list = "FunKey IN (0";
  for (int i = 1; i < length; ++i) list += "," + std::to_string(i);
  return list + ")";
}

class ContainmentTest : public ClientTest {
 protected:
  ContainmentTest() {
    setenv("ZYMDB_LOG", "", 1);
    given("PCIs", {{"FunKey", 1}, {"SlotDesignation", "a"}});
    given("Firmwares", {{"FirmwareName", "precious"}});
    given("DPUEvents", {{"Slot", 1}});
    untouched_ = everything_but_pcis();
  }

  // All that no statement on "PCIs" may change: the other tables, the schema and the settings.
  std::string everything_but_pcis() {
    static constexpr const char* kEmbedded[] = {
        "SELECT * FROM sqlite_sequence", "SELECT type, name, sql FROM sqlite_schema",
        "PRAGMA user_version",           "PRAGMA application_id",
        "PRAGMA journal_mode",           "PRAGMA integrity_check"};
    static constexpr const char* kOfServer[] = {
        "SELECT * FROM zymdb_sequences", "SELECT Name, Kind, Version FROM zymdb_schemas",
        "SELECT TABLE_NAME, COLUMN_NAME, COLUMN_TYPE FROM information_schema.COLUMNS WHERE "
        "TABLE_SCHEMA=DATABASE() "
        "ORDER BY TABLE_NAME, ORDINAL_POSITION",
        "SELECT User, Host FROM mysql.global_priv ORDER BY User, Host"};
    std::string text = run_sql("SELECT * FROM Firmwares") + run_sql("SELECT * FROM DPUEvents");
    for (const char* sql : is_embedded() ? std::span<const char* const>(kEmbedded) : kOfServer)
      text += run_sql(sql);
    return text;
  }

  void expect_untouched(const std::string& text) {
    EXPECT_EQ(everything_but_pcis(), untouched_) << text.substr(0, 100);
    EXPECT_FALSE(std::filesystem::exists("/tmp/zymdb-hostile"));
    EXPECT_FALSE(std::filesystem::exists("/tmp/zymdb-hostile.db"));
  }

  std::string untouched_;
};

// A query of one column gives numbers of "PCIs" or fails.
TEST_F(ContainmentTest, AHostileConditionReadsItsOwnTableOnly) {
  for (const std::string& condition : hostile_conditions()) {
    const Rows rows = query("PCIs", {"FunKey"}, condition.c_str());
    if (rows == nullptr) {
      EXPECT_NE(status_, 0) << condition.substr(0, 100);
      continue;
    }
    while (zym_db_result_step(rows.get()) == ZYM_DB_STATUS_ROW) {
      unsigned int key = 0;
      EXPECT_EQ(zym_db_result_column_uint(rows.get(), 0, &key), 0) << condition.substr(0, 100);
      EXPECT_EQ(key, 1U) << condition.substr(0, 100);
    }
  }
}

TEST_F(ContainmentTest, AHostileConditionChangesItsOwnTableOnly) {
  const Set values(zym_db_get_content_values(handle()));
  zym_db_content_put_uint(values.get(), "BusNo", 9);
  for (const std::string& condition : hostile_conditions()) {
    zym_db_update(handle(), "PCIs", values.get(), condition.c_str(), nullptr, 0, nullptr);
    zym_db_delete(handle(), "PCIs", condition.c_str(), nullptr, 0, nullptr);
  }
  expect_untouched("all conditions");
}

TEST_F(ContainmentTest, HostileNamesNameNothing) {
  const Set values(zym_db_get_content_values(handle()));
  for (const std::string& text : hostile_conditions()) {
    const char* const name = text.c_str();
    zym_db_result_t* rows = nullptr;
    EXPECT_NE(zym_db_query(handle(), name, nullptr, 0, nullptr, nullptr, 0, 0, &rows), 0);
    EXPECT_NE(zym_db_query(handle(), "PCIs", &name, 1, nullptr, nullptr, 0, 0, &rows), 0)
        << text.substr(0, 100);
    EXPECT_NE(zym_db_delete(handle(), name, nullptr, nullptr, 0, nullptr), 0);
    zym_db_content_clear(values.get());
    zym_db_content_put_uint(values.get(), name, 1);
    EXPECT_NE(zym_db_insert(handle(), "PCIs", values.get(), 0, nullptr), 0);
    EXPECT_NE(zym_db_update(handle(), "PCIs", values.get(), "1", nullptr, 0, nullptr), 0);
    EXPECT_EQ(rows, nullptr);
  }
  for (const char* table :
       {"sqlite_master", "sqlite_schema", "sqlite_sequence", "pragma_table_info", "main.PCIs"}) {
    zym_db_result_t* rows = nullptr;
    EXPECT_NE(zym_db_query(handle(), table, nullptr, 0, nullptr, nullptr, 0, 0, &rows), 0) << table;
    EXPECT_NE(zym_db_delete(handle(), table, nullptr, nullptr, 0, nullptr), 0) << table;
  }
  expect_untouched("names");
}

TEST_F(ContainmentTest, HostileValuesAreStoredAsTheyAre) {
  const Set values(zym_db_get_content_values(handle()));
  for (const std::string& text : hostile_conditions()) {
    zym_db_content_put_text(values.get(), "SlotDesignation", text.c_str());
    int64_t id = 0;
    ASSERT_EQ(zym_db_insert(handle(), "PCIs", values.get(), 0, &id), 0) << text.substr(0, 100);
    const Rows rows = query("PCIs", {"SlotDesignation"}, "_id=?", {u32(static_cast<uint64_t>(id))});
    ASSERT_EQ(zym_db_result_step(rows.get()), ZYM_DB_STATUS_ROW);
    std::string stored(text.size() + 1, '\0');
    ASSERT_EQ(zym_db_result_column_text(rows.get(), 0, stored.data(), static_cast<int>(stored.size())), 0);
    EXPECT_STREQ(stored.c_str(), text.c_str());
  }
  expect_untouched("values");
}

TEST_F(ContainmentTest, HostileStatementsOnlyRead) {
  for (const std::string& text : hostile_conditions()) {
    for (const std::string& sql :
         {text, "select FunKey from PCIs where " + text, "select " + text + " from PCIs"}) {
      zym_db_result_t* rows = nullptr;
      zym_db_raw_query(handle(), sql.c_str(), static_cast<int>(sql.size()) + 1, &rows);
      Rows(rows).reset();
    }
  }
  expect_untouched("statements");
  EXPECT_EQ(rows("PCIs", {"FunKey"}), "1\n");
}

TEST_F(ContainmentTest, LongListsWorkOrAreTooLarge) {
  EXPECT_EQ(count("PCIs", long_list(20000)), 1);
  EXPECT_EQ(count("PCIs", long_list(200000)), -1);
  EXPECT_EQ(status_, 46);
}

TEST_F(ContainmentTest, AStatementThatWouldRunForAgesIsEnded) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  for (int i = 0; i < 2000; ++i) {
    given("PCIs", {{"FunKey", i}});
    given("PCISetting", {{"PfaKey", i}});
    given("SensorSlotMap", {{"HealthStatusId", i}});
  }
  ASSERT_EQ(zym_db_commit(handle()), 0);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(count("PCIs",
                  "(SELECT count(*) FROM PCISetting WHERE (SELECT count(*) FROM SensorSlotMap WHERE "
                  "HealthStatusId+PfaKey+FunKey>0)>PfaKey+FunKey)>FunKey"),
            -1);
  EXPECT_EQ(status_, 45);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  EXPECT_EQ(count("PCIs", "FunKey=5"), 1);
}

}  // namespace
