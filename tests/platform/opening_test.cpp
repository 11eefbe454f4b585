// What becomes of the file that a data source names.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "client/engine/sqlite/connection.h"
#include "client/status.h"
#include "platform/child_process.h"
#include "platform/engine_session.h"
#include "support/sql.h"
#include "support/temporary_folder.h"

namespace zymdb::client {
namespace {

using testing::Field;
using testing::HasSubstr;

std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class OpeningTest : public testing::Test {
 protected:
  OpenedSession open(const Schema& schema = kInventorySchema) {
    return open_session({folder_.file("inventory.db"), &schema}, writers_);
  }

  void run_sql(const std::string& sql) { run_sql_on(folder_.file("inventory.db"), sql); }

  // Every table, index and mark of the file.
  std::string schema_of(const char* name) {
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open(folder_.file(name).c_str(), &database), SQLITE_OK);
    std::string text;
    const auto add = [](void* out, int columns, char** values, char**) {
      for (int i = 0; i < columns; ++i)
        static_cast<std::string*>(out)->append(values[i] ? values[i] : "").append("\n");
      return 0;
    };
    for (const char* sql : {"PRAGMA application_id", "PRAGMA user_version", "PRAGMA journal_mode",
                            "SELECT name, sql FROM sqlite_schema ORDER BY name"}) {
      EXPECT_EQ(sqlite3_exec(database, sql, add, &text, nullptr), SQLITE_OK);
    }
    sqlite3_close(database);
    return text;
  }

  TemporaryFolder folder_;
  WriterQueue writers_;
};

TEST_F(OpeningTest, AMissingDatabaseIsCreatedWithItsTables) {
  const OpenedSession opened = open();
  ASSERT_NE(opened.session, nullptr) << opened.error;
  for (const char* table : {"Processor",
                            "Memory",
                            "PCIs",
                            "PCIAdapter",
                            "PCIMisc",
                            "VPDs",
                            "NCSIPackageID",
                            "PCIGPU",
                            "PCIGPUChip",
                            "PCINetwork",
                            "PCILogicalPort",
                            "PCIPhysicalPort",
                            "PCIPhysicalPortStat",
                            "PCIPhysicalPortCounter",
                            "Firmwares",
                            "PldmDeviceFirmware",
                            "EmbeddedDeviceFirmware",
                            "DPUEvents",
                            "PCISetting",
                            "AimDisks",
                            "NVMeDrives",
                            "SensorSlotMap"}) {
    const Table* found = opened.session->catalog().table(table);
    ASSERT_NE(found, nullptr) << table;
    EXPECT_EQ(found->columns().front().name, "_id") << table;
  }
}

TEST_F(OpeningTest, InternalTablesAreNotInTheCatalog) {
  const OpenedSession opened = open();
  ASSERT_NE(opened.session, nullptr);
  EXPECT_EQ(opened.session->catalog().table("sqlite_sequence"), nullptr);
  EXPECT_EQ(opened.session->catalog().table("sqlite_master"), nullptr);
}

TEST_F(OpeningTest, FilesAreKeptFromOthers) {
  const mode_t mask = umask(0);
  const OpenedSession opened = open();
  umask(mask);
  ASSERT_NE(opened.session, nullptr) << opened.error;
  for (const char* name : {"inventory.db", "inventory.db-wal", "inventory.db-shm"}) {
    struct stat status {};
    ASSERT_EQ(stat(folder_.file(name).c_str(), &status), 0) << name;
    EXPECT_EQ(status.st_mode & 0777U, 0640U) << name;
  }
}

TEST_F(OpeningTest, AZeroLengthFileIsANewDatabase) {
  std::ofstream(folder_.file("inventory.db")).close();
  EXPECT_NE(open().session, nullptr);
}

TEST_F(OpeningTest, AnInterruptedCreationIsTakenUp) {
  run_sql("PRAGMA journal_mode=WAL");
  ASSERT_GT(read_file(folder_.file("inventory.db")).size(), 0U);
  const OpenedSession opened = open();
  ASSERT_NE(opened.session, nullptr) << opened.error;
  EXPECT_NE(opened.session->catalog().table("PCIs"), nullptr);
}

TEST_F(OpeningTest, WhatIsNotOursIsRefusedAndLeftAsItWas) {
  struct Case {
    const char* content;  // SQL, or the file's bytes after "="
    int status;
    const char* reason;
  };
  const std::string garbage = "=" + std::string(5000, 'g');
  const Case cases[] = {
      {"CREATE TABLE other (x)", kStatusCorrupt, "not a database of this kind"},
      {"PRAGMA application_id=77; CREATE TABLE x (y)", kStatusCorrupt, "not a database of this kind"},
      {"PRAGMA user_version=1; CREATE TABLE x (y)", kStatusCorrupt, "not a database of this kind"},
      {"PRAGMA application_id=0x5A594D50; PRAGMA user_version=1", kStatusCorrupt,
       "not a database of this kind"},
      {"PRAGMA application_id=0x5A594D49; PRAGMA user_version=4", 1, "version 4 is newer"},
      {"=short", kStatusCorrupt, "not a database"},
      {garbage.c_str(), kStatusCorrupt, "not a database"},
  };
  for (const Case& each : cases) {
    std::filesystem::remove(folder_.file("inventory.db"));
    if (each.content[0] == '=') {
      std::ofstream(folder_.file("inventory.db")) << each.content + 1;
    } else {
      run_sql(each.content);
    }
    const std::string before = read_file(folder_.file("inventory.db"));
    const OpenedSession opened = open();
    EXPECT_EQ(opened.session, nullptr);
    EXPECT_EQ(opened.status, each.status) << opened.error;
    EXPECT_THAT(opened.error, HasSubstr(each.reason));
    EXPECT_EQ(read_file(folder_.file("inventory.db")), before) << opened.error;
  }
}

TEST_F(OpeningTest, AMissingFolderIsNamed) {
  const OpenedSession opened =
      open_session({folder_.file("missing/inventory.db"), &kInventorySchema}, writers_);
  EXPECT_EQ(opened.session, nullptr);
  EXPECT_EQ(opened.status, kStatusIo);
  EXPECT_EQ(opened.error, "cannot open the inventory database " + folder_.file("missing/inventory.db") +
                              ": No such file or directory");
}

TEST_F(OpeningTest, AFolderIsNoDatabase) {
  std::filesystem::create_directory(folder_.file("inventory.db"));
  EXPECT_THAT(open().error, HasSubstr("it is not a file"));
}

// Permissions do not bind the administrator, whom tests often run as.
int as_somebody_else(const std::function<int()>& body) {
  return ChildProcess([&] {
           if (geteuid() == 0 && (setegid(65534) != 0 || seteuid(65534) != 0)) return 99;
           return body();
         })
      .wait();
}

TEST_F(OpeningTest, AFileThatMayNotBeReadIsRefused) {
  { ASSERT_NE(open().session, nullptr); }
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(folder_.file("inventory.db").c_str(), geteuid() == 0 ? 0600 : 0), 0);
  EXPECT_EQ(as_somebody_else([&] {
              const OpenedSession opened = open();
              return opened.status == kStatusIo && opened.error.ends_with("Permission denied") ? 0 : 1;
            }),
            0);
}

TEST_F(OpeningTest, AFolderThatMayNotBeWrittenHoldsNoNewDatabase) {
  ASSERT_EQ(chmod(folder_.path().c_str(), 0555), 0);
  EXPECT_EQ(as_somebody_else([&] {
              const OpenedSession opened = open();
              return opened.status == kStatusIo && opened.error.ends_with("Permission denied") ? 0 : 1;
            }),
            0);
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
}

// A property database that lies where all inventories of a folder once had theirs.
class PredecessorTest : public OpeningTest {
 protected:
  OpenedSession open_properties() { return open_session(source_, writers_); }

  void make_predecessor() {
    const DataSource former{source_.predecessor, &kPropertiesSchema, &sqlite::kEngine};
    ASSERT_NE(open_session(former, writers_).session, nullptr);
    run("INSERT INTO propertiesDCTbl (propName) VALUES ('/kept')");
  }

  void run(const std::string& sql) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(source_.predecessor.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
  }

  // How many properties the session finds; -1 when it finds no table.
  static int64_t properties(const OpenedSession& opened) {
    Request request;
    request.table = "propertiesDCTbl";
    Statement statement;
    Result result;
    if (opened.session == nullptr || statement.compose(opened.session->catalog(), request) != 0 ||
        opened.session->query(statement, result) != 0)
      return -1;
    return result.row_count();
  }

  bool is_there(const std::string& path) const { return std::filesystem::exists(path); }

  const DataSource source_{folder_.file("inventory-properties.db"), &kPropertiesSchema, &sqlite::kEngine,
                           folder_.file("propertiesdb.db")};
};

TEST_F(PredecessorTest, MovesToItsPlaceWithWhatItHolds) {
  make_predecessor();
  EXPECT_EQ(properties(open_properties()), 1);
  EXPECT_FALSE(is_there(source_.predecessor));
  EXPECT_EQ(properties(open_properties()), 1);
}

TEST_F(PredecessorTest, BringsAlongWhatOnlyItsWriteAheadLogHolds) {
  make_predecessor();
  EXPECT_EQ(ChildProcess([&] {
              sqlite3* database = nullptr;
              sqlite3_open(source_.predecessor.c_str(), &database);
              return sqlite3_exec(database, "INSERT INTO propertiesDCTbl (propName) VALUES ('/late')",
                                  nullptr, nullptr, nullptr);
            }).wait(),
            0);
  ASSERT_GT(std::filesystem::file_size(source_.predecessor + "-wal"), 0U);
  EXPECT_EQ(properties(open_properties()), 2);
  for (const char* suffix : {"", "-wal", "-shm"})
    EXPECT_FALSE(is_there(source_.predecessor + suffix)) << suffix;
}

TEST_F(PredecessorTest, StaysWhereSomethingElseTookItsPlace) {
  make_predecessor();
  const DataSource alone{source_.address, &kPropertiesSchema};
  ASSERT_NE(open_session(alone, writers_).session, nullptr);
  EXPECT_EQ(properties(open_properties()), 0);
  EXPECT_TRUE(is_there(source_.predecessor));
}

TEST_F(PredecessorTest, OfAnotherKindStays) {
  run("CREATE TABLE other (x)");
  EXPECT_EQ(properties(open_properties()), 0);
  EXPECT_TRUE(is_there(source_.predecessor));
}

TEST_F(PredecessorTest, ThatIsNoDatabaseIsNamed) {
  std::ofstream(source_.predecessor) << std::string(5000, 'g');
  const OpenedSession opened = open_properties();
  EXPECT_EQ(opened.status, kStatusCorrupt);
  EXPECT_THAT(opened.error,
              HasSubstr(source_.address + ": " + source_.predecessor + " cannot take its place: "));
  EXPECT_FALSE(is_there(source_.address));
}

TEST_F(PredecessorTest, InAFolderThatMayNotBeWrittenIsNamed) {
  make_predecessor();
  ASSERT_EQ(chmod(folder_.path().c_str(), 0555), 0);
  ASSERT_EQ(chmod(source_.predecessor.c_str(), 0644), 0);
  EXPECT_EQ(
      as_somebody_else([&] {
        const OpenedSession opened = open_properties();
        return opened.error.find(source_.predecessor + " cannot take its place") != std::string::npos ? 0 : 1;
      }),
      0);
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
}

TEST_F(PredecessorTest, IsTakenOverOnceByManyProcesses) {
  for (int round = 0; round < 20; ++round) {
    std::filesystem::remove(source_.address);
    make_predecessor();
    const auto take_over = [&] { return properties(open_properties()) == 1 ? 0 : 1; };
    ChildProcess first(take_over);
    ChildProcess second(take_over);
    ChildProcess third(take_over);
    EXPECT_EQ(first.wait() + second.wait() + third.wait(), 0) << round;
    EXPECT_FALSE(is_there(source_.predecessor));
  }
}

class UpgradeTest : public OpeningTest {
 protected:
  static constexpr uint32_t kMark = 0x5A594D49;
};

TEST_F(UpgradeTest, AnOlderDatabaseIsTakenStepByStepToTheCurrentVersion) {
  const UpgradeStep steps[] = {{2, "ALTER TABLE a ADD COLUMN third"}, {1, "ALTER TABLE a ADD COLUMN second"}};
  const Schema current{"inventory", kMark, 3, "CREATE TABLE a (_id INTEGER PRIMARY KEY, second, third)",
                       steps};
  const Schema first{"inventory", kMark, 1, "CREATE TABLE a (_id INTEGER PRIMARY KEY)", {}};
  { ASSERT_NE(open(first).session, nullptr); }
  run_sql("INSERT INTO a VALUES (17)");
  {
    const OpenedSession opened = open(current);
    ASSERT_NE(opened.session, nullptr) << opened.error;
    EXPECT_THAT(opened.session->catalog().table("a")->columns(),
                testing::ElementsAre(Field(&Column::name, "_id"), Field(&Column::name, "second"),
                                     Field(&Column::name, "third")));
  }
  EXPECT_THAT(schema_of("inventory.db"), HasSubstr("\n3\nwal\n"));
  EXPECT_EQ(open(first).session, nullptr);
}

TEST_F(OpeningTest, TheEngineTellsTheColumnsOfATableWhoseStatementDoesNot) {
  const Schema odd{"inventory",
                   0x5A594D49,
                   1,
                   "CREATE TABLE a (_id INTEGER PRIMARY KEY, b text, c AS (b)); CREATE TABLE d (e TEXT)",
                   {}};
  const OpenedSession opened = open(odd);
  ASSERT_NE(opened.session, nullptr) << opened.error;
  ASSERT_THAT(opened.session->catalog().table("a")->columns(),
              testing::ElementsAre(Field(&Column::name, "_id"), Field(&Column::name, "b")));
  EXPECT_TRUE(opened.session->catalog().table("a")->column("b")->is_text);
  EXPECT_TRUE(opened.session->catalog().table("d")->column("e")->is_text);
}

TEST_F(UpgradeTest, AFailingStepLeavesTheOldVersion) {
  const UpgradeStep steps[] = {{1, "ALTER TABLE a ADD COLUMN second"},
                               {2, "ALTER TABLE missing ADD COLUMN x"}};
  const Schema current{"inventory", kMark, 3, "", steps};
  const Schema first{"inventory", kMark, 1, "CREATE TABLE a (_id INTEGER PRIMARY KEY)", {}};
  { ASSERT_NE(open(first).session, nullptr); }
  const std::string before = schema_of("inventory.db");
  const OpenedSession opened = open(current);
  EXPECT_EQ(opened.session, nullptr);
  EXPECT_THAT(opened.error, HasSubstr("no such table: missing"));
  EXPECT_EQ(schema_of("inventory.db"), before);
  EXPECT_NE(open(first).session, nullptr);
}

TEST_F(UpgradeTest, AVersionWithoutAStepIsRefused) {
  const Schema first{"inventory", kMark, 1, "CREATE TABLE a (_id INTEGER PRIMARY KEY)", {}};
  { ASSERT_NE(open(first).session, nullptr); }
  const Schema current{"inventory", kMark, 2, "", {}};
  EXPECT_THAT(open(current).error, HasSubstr("its version is too old"));
}

// The file is replaced as soon as it is open; the session must know which of them is its own.
class ReplacedOpeningTest : public OpeningTest {
 protected:
  ReplacedOpeningTest() {
    EXPECT_NE(open().session, nullptr);
    std::filesystem::copy_file(path(), folder_.file("copy.db"));
  }

  std::string path() const { return folder_.file("inventory.db"); }

  // Replaces it at the first so many attempts.
  void open_replacing(int times) {
    const sqlite::Failure failure = connection_.open({path(), &kInventorySchema}, [this, times] {
      if (++attempts_ > times) return;
      std::filesystem::copy_file(folder_.file("copy.db"), folder_.file("next.db"));
      std::filesystem::rename(folder_.file("next.db"), path());
    });
    EXPECT_EQ(failure.status, 0) << failure.reason;
  }
  uint64_t file() const { return sqlite::file_id(path()).inode; }

  sqlite::Connection connection_{Limits{}};
  int attempts_ = 0;
};

TEST_F(ReplacedOpeningTest, BeginsAnewWithTheFileThatIsThere) {
  open_replacing(3);
  EXPECT_EQ(attempts_, 4);
  EXPECT_EQ(connection_.watch().file(), file());
  EXPECT_TRUE(connection_.state(Look::kNow).is_usable());
}

TEST_F(ReplacedOpeningTest, EndsSomeTimeAndKnowsThatItsFileIsGone) {
  open_replacing(INT_MAX);
  EXPECT_EQ(attempts_, 20);
  EXPECT_NE(connection_.watch().file(), file());
  EXPECT_EQ(connection_.state(Look::kNow).kind, SessionState::Kind::kLost);
  EXPECT_STREQ(connection_.state(Look::kAtTimes).why, sqlite::kReplaced);
}

// The frozen schemas of former versions: whatever the current version becomes, such a file still opens, and
// is then the same as a new one.
class FormerVersionTest : public UpgradeTest, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override { make(); }

  void make() {
    const std::string version = std::to_string(GetParam());
    const std::string sql = read_file(ZYMDB_TEST_DATA "/inventory-v" + version + ".sql");
    EXPECT_FALSE(sql.empty());
    run_sql(sql + "PRAGMA application_id=0x5A594D49; PRAGMA user_version=" + version);
  }

  std::string rows(const std::string& sql) { return run_sql_on(folder_.file("inventory.db"), sql); }

  std::vector<std::string> lines(const std::string& sql) {
    std::istringstream text(rows(sql));
    std::vector<std::string> found;
    for (std::string line; std::getline(text, line);) found.push_back(line);
    return found;
  }

  std::vector<std::string> tables() {
    return lines("SELECT name FROM sqlite_schema WHERE type='table' ORDER BY name");
  }

  // The names of a table's columns, separated by ", ".
  std::string columns(const std::string& table) {
    return lines("SELECT group_concat(name, ', ') FROM pragma_table_info('" + table + "')").at(0);
  }

  // A row whose values all differ: "1, 'value 2', 'value 3'".
  void add_row(const std::string& table, int id) {
    const auto count = std::ranges::count(columns(table), ',');
    std::string values = std::to_string(id);
    for (int i = 1; i <= count; ++i) values += ", 'value " + std::to_string(i) + "'";
    run_sql("INSERT INTO " + table + " VALUES (" + values + ")");
  }
};

INSTANTIATE_TEST_SUITE_P(Versions, FormerVersionTest, testing::Values(1, 2),
                         testing::PrintToStringParamName());

// Databases of former versions keep the comments and the columns of spaces that the statements had.
std::string without_comments_and_spaces(const std::string& schema) {
  const auto without_comments = std::regex_replace(schema, std::regex("--[^\n]*"), "");
  return std::regex_replace(without_comments, std::regex("[ \n]+"), " ");
}

TEST_P(FormerVersionTest, BecomesTheSameAsANewOne) {
  { ASSERT_NE(open().session, nullptr); }
  {
    const OpenedSession fresh = open_session({folder_.file("fresh.db"), &kInventorySchema}, writers_);
    ASSERT_NE(fresh.session, nullptr);
  }
  EXPECT_EQ(without_comments_and_spaces(schema_of("inventory.db")),
            without_comments_and_spaces(schema_of("fresh.db")));
}

TEST_P(FormerVersionTest, KeepsEveryColumnOfEveryRow) {
  std::map<std::string, std::string> queries;
  for (const auto& table : tables()) {
    for (const int id : {3, 70000}) add_row(table, id);
    queries[table] = "SELECT " + columns(table) + " FROM " + table + " ORDER BY 1";
  }
  ASSERT_GE(queries.size(), 20u);
  std::map<std::string, std::string> before;
  for (const auto& [table, query] : queries) before[table] = rows(query);
  { ASSERT_NE(open().session, nullptr); }
  for (const auto& [table, query] : queries) EXPECT_EQ(rows(query), before[table]) << table;
  EXPECT_EQ(rows("PRAGMA integrity_check"), "ok\n");
}

TEST_P(FormerVersionTest, HasAHealthStatusForEachAdapter) {
  run_sql(
      "INSERT INTO PCIAdapter (_id, PCIKey, CardName, HealthStatus) VALUES (3, 1, 'first', 0), "
      "(70000, 2, 'second', 2), (5, 4294967295, NULL, 0);");
  if (GetParam() == 1) run_sql("UPDATE PCIAdapter SET HealthStatus=NULL WHERE HealthStatus=0");
  { ASSERT_NE(open().session, nullptr); }
  EXPECT_EQ(rows("SELECT _id, PCIKey, CardName, HealthStatus FROM PCIAdapter"),
            "3|1|first|0\n5|4294967295|NULL|0\n70000|2|second|2\n");
  run_sql("INSERT INTO PCIAdapter (PCIKey) VALUES (8)");
  EXPECT_EQ(rows("SELECT _id, HealthStatus FROM PCIAdapter WHERE PCIKey=8"), "70001|0\n");
}

TEST_P(FormerVersionTest, IsUpgradedOnceByProcessesThatOpenItTogether) {
  for (int round = 0; round < 10; ++round) {
    std::filesystem::remove(folder_.file("inventory.db"));
    make();
    run_sql("INSERT INTO PCIAdapter (PCIKey) VALUES (1), (2)");
    const auto upgrade = [&] { return open().session != nullptr ? 0 : 1; };
    ChildProcess first(upgrade);
    ChildProcess second(upgrade);
    EXPECT_EQ(first.wait(), 0) << round;
    EXPECT_EQ(second.wait(), 0) << round;
    EXPECT_EQ(rows("SELECT count(*), sum(HealthStatus) FROM PCIAdapter"), "2|0\n") << round;
    EXPECT_EQ(rows("PRAGMA user_version"), std::to_string(kInventorySchema.version) + "\n");
  }
}

TEST_P(FormerVersionTest, ThatMayNotBeWrittenIsRefusedAndLeftAsItWas) {
  ASSERT_EQ(chmod(folder_.path().c_str(), 0555), 0);
  ASSERT_EQ(chmod(folder_.file("inventory.db").c_str(), 0444), 0);
  EXPECT_EQ(as_somebody_else([&] {
              const OpenedSession opened = open();
              return opened.status == kStatusReadOnly && opened.error.ends_with("it cannot be written") ? 0
                                                                                                        : 1;
            }),
            0);
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  EXPECT_EQ(rows("PRAGMA user_version"), std::to_string(GetParam()) + "\n");
}

}  // namespace
}  // namespace zymdb::client
