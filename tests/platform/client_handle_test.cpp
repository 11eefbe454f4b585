// Handles: opened, closed, lost and found again.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <thread>

#include "platform/client_fixture.h"

namespace {

using testing::HasSubstr;

class HandleTest : public ClientTest {
 protected:
  std::string database() const { return folder() / "inventory.db"; }
};

TEST_F(HandleTest, TheSharedHandleIsTheSameForEveryThread) {
  _zym_db_handle_t* const mine = handle();
  _zym_db_handle_t* other = nullptr;
  std::thread([&] { other = get_dmdb_handle(); }).join();
  EXPECT_EQ(other, mine);
}

TEST_F(HandleTest, AClosedSharedHandleIsOpenedAnewWhereTheEnvironmentSays) {
  given("PCIs", {{"FunKey", 1}});
  ASSERT_EQ(zym_db_close(handle()), 0);
  setenv("ZYMDB_INVENTORY", ("sqlite:" + (folder() / "second.db").string()).c_str(), 1);
  EXPECT_EQ(count("PCIs", "1"), 0);
  ASSERT_EQ(zym_db_close(handle()), 0);
  setenv("ZYMDB_INVENTORY", database().c_str(), 1);
  EXPECT_EQ(count("PCIs", "1"), 1);
}

TEST_F(HandleTest, AClosedHandleAnswersThatThereIsNoDatabase) {
  _zym_db_handle_t* const closed = handle();
  ASSERT_EQ(zym_db_close(closed), 0);
  zym_db_result_t* rows = nullptr;
  EXPECT_EQ(zym_db_query(closed, "PCIs", nullptr, 0, nullptr, nullptr, 0, 0, &rows), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zym_db_begin(closed), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zym_db_close(closed), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zym_db_close(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(HandleTest, AResultOutlivesItsHandle) {
  given("PCIs", {{"FunKey", 1}});
  const Rows rows = query("PCIs", {"FunKey"});
  ASSERT_EQ(zym_db_close(handle()), 0);
  EXPECT_EQ(first(rows), "1");
}

TEST_F(HandleTest, ClosingUnderAThreadInATransactionForgetsWhatItWrote) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  given("PCIs", {{"FunKey", 1}});
  std::thread([] { EXPECT_EQ(zym_db_close(get_dmdb_handle()), 0); }).join();
  EXPECT_EQ(zym_db_commit(handle()), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(count("PCIs", "1"), 0);
}

TEST_F(HandleTest, ThePropertyDatabaseIsOfItsOwn) {
  _zym_db_handle_t* const properties = zym_db_open("localhost", "root", "", "propertiesdb", 0);
  ASSERT_NE(properties, nullptr);
  EXPECT_NE(properties, handle());
  zym_db_result_t* rows = nullptr;
  EXPECT_EQ(zym_db_query(properties, "PCIs", nullptr, 0, nullptr, nullptr, 0, 0, &rows), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(zym_db_query(properties, "propertiesDCTbl", nullptr, 0, nullptr, nullptr, 0, 0, &rows), 0);
  zym_db_free_result(rows);
  EXPECT_TRUE(std::filesystem::exists(folder() / "inventory-properties.db"));
  EXPECT_EQ(zym_db_close(properties), 0);
}

TEST_F(HandleTest, UnknownHostsAndDatabasesAreNotOpened) {
  EXPECT_EQ(zym_db_open("elsewhere", "root", "", "propertiesdb", 0), nullptr);
  EXPECT_EQ(zym_db_open("localhost", "root", "", "other", 0), nullptr);
  EXPECT_EQ(zym_db_open(nullptr, nullptr, nullptr, "propertiesdb", 0), nullptr);
  EXPECT_EQ(zym_db_open("localhost", nullptr, nullptr, nullptr, 0), nullptr);
}

TEST_F(HandleTest, EachFailingAttemptLeavesOneLineThatNamesTheCause) {
  ASSERT_EQ(zym_db_close(handle()), 0);
  const std::string missing = folder() / "missing" / "inventory.db";
  setenv("ZYMDB_INVENTORY", missing.c_str(), 1);
  const std::string log = log_of([] { EXPECT_EQ(get_dmdb_handle(), nullptr); });
  EXPECT_EQ(log,
            "zymdb error: cannot open the inventory database " + missing + ": No such file or directory\n");
  std::filesystem::create_directory(folder() / "missing");
  EXPECT_NE(get_dmdb_handle(), nullptr);
}

TEST_F(HandleTest, AFailedStatementLeavesOneLineWithTheStatement) {
  EXPECT_EQ(log_of([&] { count("PCIs", "FunKey=1 AND"); }),
            "zymdb error: query of PCIs where FunKey=1 AND failed: incomplete input (status 1)\n");
  EXPECT_EQ(log_of([&] { count("PCIs", "FunKey=1; x"); }),
            "zymdb error: query of PCIs where FunKey=1; x failed: text after the statement (status 1)\n");
  EXPECT_EQ(log_of([&] { count("NoTable", "1"); }),
            "zymdb error: query of NoTable where 1 failed: no such table (status 1)\n");
}

TEST_F(HandleTest, AReplacedFileIsNoticedBeforeTheNextWrite) {
  given("PCIs", {{"FunKey", 1}});
  std::filesystem::rename(database(), folder() / "old.db");
  EXPECT_EQ(given("PCIs", {{"FunKey", 2}}), 1);
  EXPECT_EQ(rows("PCIs", {"FunKey"}), "2\n");
}

TEST_F(HandleTest, AReplacedFileIsNoticedSoonByReaders) {
  given("PCIs", {{"FunKey", 1}});
  std::filesystem::remove(database());
  std::this_thread::sleep_for(std::chrono::milliseconds(400));
  EXPECT_EQ(count("PCIs", "1"), 0);
}

TEST_F(HandleTest, AFolderThatComesBackIsUsedAgain) {
  const auto aside = folder().string() + "-aside";
  std::filesystem::rename(folder(), aside);
  const Set values(zym_db_get_content_values(handle()));
  EXPECT_EQ(
      log_of([&] { EXPECT_EQ(zym_db_insert(handle(), "PCIs", values.get(), 0, nullptr), 44); }),
      "zymdb error: cannot open the inventory database " + database() + ": No such file or directory\n");
  std::filesystem::rename(aside, folder());
  EXPECT_EQ(zym_db_insert(handle(), "PCIs", values.get(), 0, nullptr), 0);
}

TEST_F(HandleTest, ADamagedFileIsAStatusUntilItIsReplaced) {
  for (int64_t key = 0; key < 200; ++key)
    given("PCIs", {{"FunKey", key}, {"SlotDesignation", std::string(100, 'x')}});
  ASSERT_EQ(zym_db_close(handle()), 0);
  {
    std::fstream file(database(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(4096);
    file << std::string(300000, 'g');
  }
  zym_db_result_t* rows = nullptr;
  EXPECT_THAT(log_of([&] {
                if (get_dmdb_handle() == nullptr) return;
                EXPECT_EQ(zym_db_query(handle(), "PCIs", nullptr, 0, nullptr, nullptr, 0, 0, &rows), 42);
              }),
              HasSubstr("malformed"));
  EXPECT_EQ(rows, nullptr);
  for (const char* name : {"inventory.db", "inventory.db-wal", "inventory.db-shm"}) {
    std::filesystem::remove(folder() / name);
  }
  EXPECT_EQ(count("PCIs", "1"), 0);
}

TEST_F(HandleTest, ManyHandlesLeaveNoDescriptorsBehind) {
  const auto descriptors = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
  };
  const auto open_and_close = [] {
    ASSERT_EQ(zym_db_close(zym_db_open("localhost", "root", "", "propertiesdb", 0)), 0);
  };
  open_and_close();  // makes the database
  open_and_close();  // leaves an idle connection
  const auto before = descriptors();
  for (int i = 0; i < 50; ++i) {
    open_and_close();
    std::thread([] { get_dmdb_handle(); }).join();
  }
  EXPECT_EQ(descriptors(), before);
}

}  // namespace
