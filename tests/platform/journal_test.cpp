// Every transaction that changes the inventory is accounted for, in the same transaction.
#include <gmock/gmock.h>

#include <thread>

#include "platform/child_process.h"
#include "platform/journal_fixture.h"
#include "support/integrity.h"

namespace {

using testing::HasSubstr;

TEST_F(JournalTest, TheGenerationGrowsWithEachChange) {
  EXPECT_EQ(generation(), 0u);
  given("PCIs", {{"FunKey", 7}});
  EXPECT_EQ(generation(), 1u);
  EXPECT_EQ(update("PCIs", "FunKey=7", {{"BusNo", 3}}), 0);
  EXPECT_EQ(generation(), 2u);
  EXPECT_EQ(remove("PCIs", "FunKey=7"), 0);
  EXPECT_EQ(generation(), 3u);
}

TEST_F(JournalTest, TheGenerationStaysWhereNothingChanges) {
  given("PCIs", {{"FunKey", 7}, {"BusNo", 3}});
  EXPECT_EQ(update("PCIs", "FunKey=8", {{"BusNo", 4}}), 0);
  EXPECT_EQ(update("PCIs", "FunKey=7", {{"BusNo", 3}}), 0);
  EXPECT_EQ(remove("PCIs", "FunKey=8"), 0);
  EXPECT_NE(update("PCIs", "FunKey=", {{"BusNo", 4}}), 0);
  EXPECT_EQ(generation(), 1u);
}

TEST_F(JournalTest, ATransactionIsOneChange) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  given("PCIs", {{"FunKey", 7}});
  given("PCIs", {{"FunKey", 8}});
  EXPECT_EQ(generation(), 0u);
  ASSERT_EQ(zym_db_commit(handle()), 0);
  EXPECT_EQ(generation(), 1u);
}

TEST_F(JournalTest, WhatIsRolledBackLeavesNoTrace) {
  given("PCIs", {{"FunKey", 7}});
  ASSERT_EQ(zym_db_begin(handle()), 0);
  EXPECT_EQ(update("PCIs", "FunKey=7", {{"BusNo", 4}}), 0);
  ASSERT_EQ(zym_db_rollback(handle()), 0);
  EXPECT_EQ(generation(), 1u);
  EXPECT_EQ(update("PCIs", "FunKey=7", {{"DeviceNo", 5}}), 0);
  EXPECT_THAT(accounts(), HasSubstr("2|{\"PCIs\":{\"before\":{\"1\":{\"DeviceNo\":null}}}}\n"));
}

TEST_F(JournalTest, OtherThreadsAndProcessesCount) {
  EXPECT_EQ(generation(), 0u);
  std::thread([] { given("PCIs", {{"FunKey", 7}}); }).join();
  EXPECT_EQ(generation(), 1u);
  ChildProcess child([] {
    given("PCIs", {{"FunKey", 8}});
    return 0;
  });
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(generation(), 2u);
}

TEST_F(JournalTest, TheGenerationOutlivesTheProcesses) {
  given("PCIs", {{"FunKey", 7}});
  zym_db_close(handle());
  EXPECT_EQ(generation(), 1u);
}

TEST_F(JournalTest, AnAccountTellsWhatWasThereBefore) {
  given("AimDisks", {{"Location", "Bay 1"}, {"BayNo", 1}, {"SerialNo", "A1"}});
  EXPECT_EQ(update("AimDisks", "BayNo=1", {{"SerialNo", "B2"}, {"Model", "new"}}), 0);
  EXPECT_EQ(accounts(),
            "1|{\"AimDisks\":{\"added\":[[1,1]]}}\n"
            "2|{\"AimDisks\":{\"before\":{\"1\":{\"Model\":null,\"SerialNo\":\"A1\"}}}}\n");
}

TEST_F(JournalTest, ADeletedRowIsKeptWhole) {
  given("SensorSlotMap", {{"HardwareTypeId", 3}, {"SlotNo", 4}});
  EXPECT_EQ(remove("SensorSlotMap", "SlotNo=4"), 0);
  EXPECT_THAT(accounts(), HasSubstr("{\"SensorSlotMap\":{\"before\":{\"1\":{\"HardwareTypeId\":3,"
                                    "\"HealthStatusId\":null,\"SlotNo\":4,\"_id\":1}}}}"));
}

TEST_F(JournalTest, NewRowsAreToldInRanges) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  for (int i = 1; i <= 100; ++i) given("PCIs", {{"FunKey", i}});
  EXPECT_EQ(remove("PCIs", "FunKey=50"), 0);
  EXPECT_EQ(update("PCIs", "FunKey=60", {{"BusNo", 1}}), 0);
  ASSERT_EQ(zym_db_commit(handle()), 0);
  EXPECT_EQ(accounts(), "1|{\"PCIs\":{\"added\":[[1,49],[51,100]]}}\n");
}

TEST_F(JournalTest, ARowThatComesBackInTheSameTransactionHasItsFormerValues) {
  given("SensorSlotMap", {{"SlotNo", 4}});
  ASSERT_EQ(zym_db_begin(handle()), 0);
  EXPECT_EQ(update("SensorSlotMap", "_id=1", {{"SlotNo", 5}}), 0);
  EXPECT_EQ(remove("SensorSlotMap", "_id=1"), 0);
  given("SensorSlotMap", {{"SlotNo", 6}});
  ASSERT_EQ(zym_db_commit(handle()), 0);
  EXPECT_THAT(accounts(), HasSubstr("2|{\"SensorSlotMap\":{\"before\":{\"1\":{\"HardwareTypeId\":null,"
                                    "\"HealthStatusId\":null,\"SlotNo\":4,\"_id\":1}}}}"));
}

TEST_F(JournalTest, VolatileColumnsCountButAreNotKept) {
  given("AimDisks", {{"Temperature", 40}});
  EXPECT_EQ(update("AimDisks", "_id=1", {{"Temperature", 41}}), 0);
  EXPECT_EQ(generation(), 2u);
  EXPECT_EQ(accounts(), "1|{\"AimDisks\":{\"added\":[[1,1]]}}\n2|NULL\n");
  EXPECT_EQ(update("AimDisks", "_id=1", {{"Temperature", 42}}), 0);
  EXPECT_EQ(accounts(), "1|{\"AimDisks\":{\"added\":[[1,1]]}}\n3|NULL\n");
  EXPECT_EQ(update("AimDisks", "_id=1", {{"Temperature", 43}, {"Presence", 1}}), 0);
  EXPECT_THAT(accounts(), HasSubstr("3|NULL\n4|{\"AimDisks\":{\"before\":{\"1\":{\"Presence\":null}}}}\n"));
}

TEST_F(JournalTest, VolatileTablesCountButAreNotKept) {
  given("DPUEvents", {{"Slot", 1}});
  given("PCIPhysicalPortCounter", {{"TxBytes", 1}});
  EXPECT_EQ(accounts(), "2|NULL\n");
}

TEST_F(JournalTest, TextsOfAnyBytesAreKept) {
  given("AimDisks",
        {{"Model", "a \"quoted\\\" \x01 \xC3\xA9"}, {"FruNo", "\xFF\xFE"}, {"PartNo", "\xED\xA0\x80"}});
  EXPECT_EQ(update("AimDisks", "_id=1", {{"Model", "x"}, {"FruNo", "x"}, {"PartNo", "x"}}), 0);
  EXPECT_THAT(accounts(),
              HasSubstr("{\"FruNo\":{\"bytes\":\"fffe\"},\"Model\":\"a \\\"quoted\\\\\\\" \\u0001 "
                        "\xC3\xA9\",\"PartNo\":{\"bytes\":\"eda080\"}}"));
}

TEST_F(JournalTest, NobodyElseWritesTheJournal) {
  given("PCIs", {{"FunKey", 7}});
  const Set values = set_of({{"Changes", "{}"}});
  EXPECT_EQ(zym_db_insert(handle(), "Journal", values.get(), 0, nullptr), 47);
  EXPECT_EQ(zym_db_update(handle(), "journal", values.get(), "_id=1", nullptr, 0, nullptr), 47);
  EXPECT_EQ(remove("Journal", "_id=1"), 47);
  EXPECT_EQ(accounts(), "1|{\"PCIs\":{\"added\":[[1,1]]}}\n");
}

TEST_F(JournalTest, AChangeThatFailsIsNotAccountedFor) {
  given("PCIs", {{"FunKey", 7}});
  const Set values = set_of({{"_id", "no number"}});
  EXPECT_EQ(zym_db_insert(handle(), "PCIs", values.get(), 0, nullptr), 48);
  EXPECT_EQ(generation(), 1u);
}

TEST_F(JournalTest, WritersOfSeveralProcessesEachHaveTheirOwnGeneration) {
  const auto write = [] {
    for (int i = 0; i < 50; ++i) given("PCIs", {{"BusNo", i}});
    return 0;
  };
  ChildProcess first(write);
  ChildProcess second(write);
  EXPECT_EQ(first.wait(), 0);
  EXPECT_EQ(second.wait(), 0);
  EXPECT_EQ(generation(), 100u);
  EXPECT_EQ(count("Journal", "Changes IS NOT NULL"), 100);
}

TEST_F(JournalTest, APropertyDatabaseHasNoGeneration) {
  _zym_db_handle_t* const properties = zym_db_open("localhost", nullptr, nullptr, "propertiesdb", 0);
  ASSERT_NE(properties, nullptr);
  uint64_t number = 7;
  EXPECT_EQ(zym_db_generation(properties, &number), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(number, 7u);
  zym_db_close(properties);
}

TEST_F(JournalTest, NullPointersAreRefused) {
  uint64_t number = 0;
  EXPECT_EQ(zym_db_generation(nullptr, &number), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zym_db_generation(handle(), nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zym_db_snapshot(nullptr, "x", nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zym_db_snapshot(handle(), nullptr, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zym_db_rewind(nullptr, 0), ZYM_DB_STATUS_INVALID_PARAM);
}

// A setting of ZYMDB_HISTORY that ends with the test.
class HistoryBoundsTest : public JournalTest {
 protected:
  ~HistoryBoundsTest() override { unsetenv("ZYMDB_HISTORY"); }
  static void keep(const char* bounds) {
    zym_db_close(handle());
    setenv("ZYMDB_HISTORY", bounds, 1);
  }
};

TEST_F(HistoryBoundsTest, OffKeepsTheGenerationAlone) {
  keep("off");
  for (int i = 0; i < 5; ++i) given("PCIs", {{"FunKey", i}});
  EXPECT_EQ(generation(), 5u);
  EXPECT_EQ(accounts(), "5|NULL\n");
}

TEST_F(HistoryBoundsTest, TheOldestAccountsGoWhereTheyAreTooMany) {
  keep("1K");
  given("PCIs", {{"FunKey", 0}});
  for (int i = 1; i <= 200; ++i) EXPECT_EQ(update("PCIs", "_id=1", {{"FunKey", i}}), 0);
  EXPECT_EQ(generation(), 201u);
  const std::string size = run_sql("SELECT sum(length(Changes)) FROM Journal");
  EXPECT_LE(std::stoi(size), 1024);
  EXPECT_GE(std::stoi(size), 1024 / 8 * 6);
  EXPECT_EQ(run_sql("SELECT max(_id)-min(_id)+1=count(*) FROM Journal"), "1\n");
}

TEST_F(HistoryBoundsTest, OldAccountsGo) {
  keep("30d");
  for (int i = 1; i <= 4; ++i) given("PCIs", {{"FunKey", i}});
  run_sql("UPDATE Journal SET Time=Time-31*86400000 WHERE _id<3");
  given("PCIs", {{"FunKey", 5}});
  EXPECT_EQ(run_sql("SELECT min(_id), max(_id), count(*) FROM Journal"), "3|5|3\n");
}

TEST_F(HistoryBoundsTest, WhatIsNoBoundIsToldAndNothingIsOpened) {
  for (const char* bounds :
       {"many", "1", "0K", "-1M", "1M,", ",", "1M,2M,3M", "1G", "99999999999999999999M", "1 M"}) {
    keep(bounds);
    EXPECT_EQ(handle(), nullptr) << bounds;
    EXPECT_THAT(zym_db_last_error(nullptr), HasSubstr(std::string("ZYMDB_HISTORY=") + bounds)) << bounds;
  }
}

using SnapshotTest = JournalTest;

TEST_F(SnapshotTest, IsAnInventoryOfItsOwnInOneFile) {
  given("PCIs", {{"FunKey", 7}});
  const std::string copy = folder() / "copy.db";
  ASSERT_EQ(zym_db_snapshot(handle(), copy.c_str(), nullptr), 0);
  given("PCIs", {{"FunKey", 8}});
  EXPECT_FALSE(std::filesystem::exists(copy + "-wal"));
  EXPECT_EQ(found_in(copy, "PRAGMA journal_mode"), "delete\n");
  EXPECT_EQ(integrity_of(copy), "ok");
  open_instead(copy);
  EXPECT_EQ(rows("PCIs", {"FunKey"}), "7\n");
  EXPECT_EQ(generation(), 1u);
  given("PCIs", {{"FunKey", 9}});
  EXPECT_EQ(generation(), 2u);
}

TEST_F(SnapshotTest, LeavesAFileThatIsThereAlone) {
  const std::string copy = folder() / "copy.db";
  std::ofstream(copy) << "a file";
  EXPECT_EQ(zym_db_snapshot(handle(), copy.c_str(), nullptr), 44);
  EXPECT_THAT(zym_db_last_error(nullptr), HasSubstr(copy + ": File exists"));
  EXPECT_EQ(std::filesystem::file_size(copy), 6u);
}

TEST_F(SnapshotTest, TellsWhereNoneCanBeMade) {
  EXPECT_EQ(zym_db_snapshot(handle(), (folder() / "missing/copy.db").c_str(), nullptr), 44);
  EXPECT_THAT(zym_db_last_error(nullptr), HasSubstr("missing/copy.db: No such file"));
}

TEST_F(SnapshotTest, IsNoPartOfATransaction) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  EXPECT_EQ(zym_db_snapshot(handle(), (folder() / "copy.db").c_str(), nullptr), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(zym_db_rewind(handle(), 0), ZYM_DB_STATUS_ERROR);
  ASSERT_EQ(zym_db_rollback(handle()), 0);
}

// Each transaction adds a row to two tables.
TEST_F(SnapshotTest, IsOfOneMomentWhileTwoProcessesWrite) {
  const auto write = [] {
    for (int i = 0; i < 200; ++i) {
      if (zym_db_begin(handle()) != 0) return 1;
      given("PCIs", {{"FunKey", i}});
      given("PCIAdapter", {{"PCIKey", i}});
      if (zym_db_commit(handle()) != 0) return 2;
    }
    return 0;
  };
  ChildProcess first(write);
  ChildProcess second(write);
  for (int i = 0; i < 20; ++i) {
    const std::string copy = folder() / ("copy-" + std::to_string(i) + ".db");
    uint64_t number = 0;
    ASSERT_EQ(zym_db_snapshot(handle(), copy.c_str(), &number), 0);
    EXPECT_EQ(found_in(copy, "SELECT ifnull(max(_id), 0) FROM Journal"), std::to_string(number) + "\n");
    EXPECT_EQ(found_in(copy,
                       "SELECT (SELECT count(*) FROM PCIs)=(SELECT count(*) FROM PCIAdapter), "
                       "(SELECT count(*) FROM PCIs)=(SELECT ifnull(max(_id), 0) FROM Journal)"),
              "1|1\n");
  }
  EXPECT_EQ(first.wait(), 0);
  EXPECT_EQ(second.wait(), 0);
}

using RewindTest = JournalTest;

TEST_F(RewindTest, TakesBackWhatCameLater) {
  given("AimDisks", {{"SerialNo", "A1"}, {"Capacity", "5"}, {"Temperature", 40}});
  EXPECT_EQ(update("AimDisks", "_id=1", {{"SerialNo", "\xFF"}, {"Temperature", 50}}), 0);
  EXPECT_EQ(remove("AimDisks", "_id=1"), 0);
  given("AimDisks", {{"SerialNo", "C3"}});
  const auto state = [] { return rows("AimDisks", {"_id", "SerialNo", "Capacity", "Temperature"}); };
  ASSERT_EQ(zym_db_rewind(handle(), 3), 0);
  EXPECT_EQ(state(), "");
  ASSERT_EQ(zym_db_rewind(handle(), 2), 0);
  EXPECT_EQ(state(), "1|\xFF|5|50\n");
  ASSERT_EQ(zym_db_rewind(handle(), 1), 0);
  EXPECT_EQ(state(), "1|A1|5|50\n");
  ASSERT_EQ(zym_db_rewind(handle(), 0), 0);
  EXPECT_EQ(state(), "");
  EXPECT_EQ(generation(), 0u);
}

TEST_F(RewindTest, GivesBackEveryKindOfValue) {
  run_sql(
      "INSERT INTO Memory (Capacity, MemSize, DevLocator, BankLocator, Manufacturer) "
      "VALUES (9223372036854775807, 0.1, x'00ff', CAST(x'ff41' AS TEXT), '1e3')");
  const auto state = [&] {
    return run_sql(
        "SELECT typeof(Capacity), Capacity, typeof(MemSize), MemSize=0.1, "
        "typeof(DevLocator), hex(DevLocator), typeof(BankLocator), hex(BankLocator), "
        "typeof(Manufacturer), Manufacturer FROM Memory");
  };
  const std::string before = state();
  given("PCIs", {{"FunKey", 1}});
  EXPECT_EQ(remove("Memory", "_id=1"), 0);
  EXPECT_EQ(state(), "");
  ASSERT_EQ(zym_db_rewind(handle(), 1), 0);
  EXPECT_EQ(state(), before);
  EXPECT_EQ(before, "integer|9223372036854775807|real|1|blob|00FF|text|FF41|text|1e3\n");
}

TEST_F(RewindTest, ReachesAsFarAsTheJournal) {
  for (int i = 1; i <= 5; ++i) given("PCIs", {{"FunKey", i}});
  run_sql("DELETE FROM Journal WHERE _id<=2");
  EXPECT_EQ(zym_db_rewind(handle(), 1), ZYM_DB_STATUS_ERROR);
  EXPECT_THAT(zym_db_last_error(nullptr), HasSubstr("the journal reaches back to generation 2"));
  EXPECT_EQ(zym_db_rewind(handle(), 6), ZYM_DB_STATUS_ERROR);
  EXPECT_THAT(zym_db_last_error(nullptr), HasSubstr("the newest generation is 5"));
  EXPECT_EQ(count("PCIs", "1"), 5);
  EXPECT_EQ(zym_db_rewind(handle(), 2), 0);
  EXPECT_EQ(count("PCIs", "1"), 2);
}

TEST_F(RewindTest, AnAccountThatCannotBeReadChangesNothing) {
  struct Case {
    const char* account;
    const char* reason;
  };
  const Case cases[] = {
      {"{\"PCIs\":", "malformed JSON"},
      {"{\"Later\":{\"added\":[[1,2]]}}", "the journal tells of \"Later\", which this version does not know"},
      {"{\"PCIs\":{\"before\":{\"1\":{\"Later\":1}}}}", "the journal tells of \"PCIs.Later\""},
  };
  for (int i = 1; i <= 3; ++i) given("PCIs", {{"FunKey", i}});
  for (const Case& each : cases) {
    run_sql("UPDATE Journal SET Changes='" + std::string(each.account) + "' WHERE _id=2");
    EXPECT_EQ(zym_db_rewind(handle(), 0), ZYM_DB_STATUS_ERROR) << each.account;
    EXPECT_THAT(zym_db_last_error(nullptr), HasSubstr(each.reason));
    EXPECT_EQ(count("PCIs", "1"), 3);
    EXPECT_EQ(generation(), 3u);
  }
}

}  // namespace
