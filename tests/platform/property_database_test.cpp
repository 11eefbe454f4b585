#include "controller/property_database.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <future>
#include <thread>

#include "platform/child_process.h"
#include "platform/client_fixture.h"

namespace {

class PropertyDatabaseTest : public ClientTest {
 protected:
  // `value` in hexadecimal, as a blob.
  void property(const char* path, const std::string& value) {
    ASSERT_EQ(zym_db_close(zym_db_open("localhost", "root", "", "propertiesdb", 0)), 0);
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((folder() / "inventory-properties.db").c_str(), &database), SQLITE_OK);
    const std::string sql = "INSERT INTO propertiesDCTbl (propName, propValue) VALUES ('" +
                            std::string(path) + "', x'" + value + "')";
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
  }
};

TEST_F(PropertyDatabaseTest, TheValueFollowsTheFirstByteLeastSignificantByteFirst) {
  property("/a", "0478563412FF");
  unsigned int dword = 0;
  unsigned char byte = 0;
  EXPECT_EQ(propdb_get_dword("/a", &dword), 0);
  EXPECT_EQ(propdb_get_byte("/a", &byte), 0);
  EXPECT_EQ(dword, 0x12345678U);
  EXPECT_EQ(byte, 0x78U);
}

TEST_F(PropertyDatabaseTest, AShortValueIsFilledUpWithZeros) {
  property("/short", "0108");
  unsigned int dword = 9;
  EXPECT_EQ(propdb_get_dword("/short", &dword), 0);
  EXPECT_EQ(dword, 8U);
}

TEST_F(PropertyDatabaseTest, WhatIsMissingOrEmptyLeavesTheDestination) {
  property("/none", "");
  property("/type-only", "01");
  for (const char* path : {"/none", "/type-only", "/absent", "", "\" OR \"1\"=\"1", "' OR 1=1 --"}) {
    unsigned int dword = 9;
    unsigned char byte = 9;
    EXPECT_NE(propdb_get_dword(path, &dword), 0) << path;
    EXPECT_NE(propdb_get_byte(path, &byte), 0) << path;
    EXPECT_EQ(dword, 9U);
    EXPECT_EQ(byte, 9U);
  }
}

// Who waits for its turn to write may wait for a thread that reads properties meanwhile, as a collector does.
TEST_F(PropertyDatabaseTest, AreReadWithinATransactionThatAnotherThreadWaitsFor) {
  property("/a", "0108");
  ASSERT_EQ(zym_db_begin(handle()), 0);
  std::promise<void> is_open;
  std::thread other([&] {
    EXPECT_EQ(count("PCIs", "1"), 0);
    is_open.set_value();
    EXPECT_EQ(zym_db_begin(handle()), 0);
    EXPECT_EQ(zym_db_rollback(handle()), 0);
  });
  is_open.get_future().wait();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the other one waits by now
  std::thread([] {                                             // this one's connection may be there already
    unsigned number = 0;
    EXPECT_EQ(propdb_get_dword("/a", &number), 0);
  })
      .join();
  EXPECT_EQ(zym_db_commit(handle()), 0);
  other.join();
}

TEST_F(PropertyDatabaseTest, APathIsFoundWhateverItHolds) {
  property("/odd \"path\"; --", "0105");
  unsigned char byte = 0;
  EXPECT_EQ(propdb_get_byte("/odd \"path\"; --", &byte), 0);
  EXPECT_EQ(byte, 5U);
}

TEST_F(PropertyDatabaseTest, AValueIsWrittenWithItsZeroBytes) {
  given_property("/a", {"\0\1\0\2", 4});
  unsigned int dword = 0;
  EXPECT_EQ(propdb_get_dword("/a", &dword), 0);
  EXPECT_EQ(dword, 0x02000100U);
}

TEST_F(PropertyDatabaseTest, NullArgumentsAreInvalid) {
  unsigned int dword = 0;
  EXPECT_EQ(propdb_get_dword(nullptr, &dword), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(propdb_get_dword("/a", nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(propdb_get_byte("/a", nullptr), ZYM_DB_STATUS_INVALID_PARAM);
}

// Opening and closing costs most of a read where nobody else has the database open.
class IdlePropertyDatabaseTest : public PropertyDatabaseTest {
 protected:
  IdlePropertyDatabaseTest() {
    property("/a", "0408000000");
    zym_db_close(get_dmdb_handle());
  }

  static _zym_db_handle_t* open() { return zym_db_open("localhost", "root", "", "propertiesdb", 0); }
  static unsigned value() {
    unsigned number = 0;
    EXPECT_EQ(propdb_get_dword("/a", &number), 0);
    return number;
  }
  bool is_open() const {
    std::error_code gone;
    return std::ranges::any_of(std::filesystem::directory_iterator("/proc/self/fd"), [&](const auto& entry) {
      return std::filesystem::read_symlink(entry, gone) == folder() / "inventory-properties.db";
    });
  }

  static void set(_zym_db_handle_t* handle, const char (&bytes)[6]) {
    const Set values(zym_db_get_content_values(handle));
    ASSERT_EQ(zym_db_content_put_blob(values.get(), "propValue", bytes, 5), 0);
    ASSERT_EQ(zym_db_update(handle, "propertiesDCTbl", values.get(), "propName='/a'", nullptr, 0, nullptr),
              0);
  }
};

TEST_F(IdlePropertyDatabaseTest, StaysOpenForTheThreadThatReadItUntilTheThreadEnds) {
  std::thread([this] {
    EXPECT_EQ(value(), 8U);
    EXPECT_TRUE(is_open());
    EXPECT_EQ(value(), 8U);
  }).join();
  EXPECT_FALSE(is_open());
}

TEST_F(IdlePropertyDatabaseTest, IsClosedByTheThreadsNextCallWhenItWasIdleForASecond) {
  EXPECT_EQ(value(), 8U);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_TRUE(is_open());
  EXPECT_NE(get_dmdb_handle(), nullptr);
  EXPECT_FALSE(is_open());
  EXPECT_EQ(value(), 8U);
}

TEST_F(IdlePropertyDatabaseTest, IsReadWithoutAFileBesideIt) {
  const auto before = std::filesystem::last_write_time(folder());
  EXPECT_EQ(value(), 8U);
  EXPECT_TRUE(is_open());
  EXPECT_EQ(value(), 8U);
  EXPECT_EQ(std::filesystem::last_write_time(folder()), before);
}

TEST_F(IdlePropertyDatabaseTest, IsReadAnewAfterAnotherProcessWroteIt) {
  EXPECT_EQ(value(), 8U);
  EXPECT_EQ(ChildProcess([] {
              _zym_db_handle_t* const handle = open();
              set(handle, "\4\7\0\0\0");
              return zym_db_close(handle);
            }).wait(),
            0);
  EXPECT_EQ(value(), 7U);
}

TEST_F(IdlePropertyDatabaseTest, HasNoHandleMeanwhile) {
  _zym_db_handle_t* const handle = open();
  ASSERT_EQ(zym_db_close(handle), 0);
  ASSERT_TRUE(is_open());
  zym_db_result_t* rows = nullptr;
  EXPECT_EQ(zym_db_query(handle, "propertiesDCTbl", nullptr, 0, nullptr, nullptr, 0, 0, &rows),
            ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zym_db_begin(handle), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zym_db_close(handle), ZYM_DB_STATUS_NO_DB);
  std::thread([handle] { EXPECT_EQ(zym_db_close(handle), ZYM_DB_STATUS_NO_DB); }).join();
  EXPECT_EQ(value(), 8U);
}

TEST_F(IdlePropertyDatabaseTest, IsIdleOnceHoweverManyHandlesAreClosed) {
  _zym_db_handle_t* const first = open();
  _zym_db_handle_t* const second = open();
  EXPECT_NE(first, second);
  EXPECT_EQ(zym_db_close(first), 0);
  EXPECT_EQ(zym_db_close(second), 0);
  EXPECT_EQ(zym_db_close(first), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(value(), 8U);
}

TEST_F(IdlePropertyDatabaseTest, IsClosedAtOnceAfterAWriteSoThatTheFileIsWhole) {
  EXPECT_EQ(value(), 8U);
  _zym_db_handle_t* const handle = open();
  set(handle, "\4\7\0\0\0");
  EXPECT_EQ(zym_db_close(handle), 0);
  EXPECT_FALSE(is_open());
  EXPECT_EQ(value(), 7U);
}

TEST_F(IdlePropertyDatabaseTest, IsClosedAtOnceWithATransactionThatWasOpen) {
  _zym_db_handle_t* const handle = open();
  ASSERT_EQ(zym_db_begin(handle), 0);
  set(handle, "\4\7\0\0\0");
  EXPECT_EQ(zym_db_close(handle), 0);
  EXPECT_FALSE(is_open());
  EXPECT_EQ(value(), 8U);
}

TEST_F(IdlePropertyDatabaseTest, IsClosedAtOnceWhenTwoThreadsUsedIt) {
  _zym_db_handle_t* const handle = open();
  zym_db_result_t* rows = nullptr;
  const auto read = [&] {
    EXPECT_EQ(zym_db_query(handle, "propertiesDCTbl", nullptr, 0, nullptr, nullptr, 0, 0, &rows), 0);
    zym_db_free_result(rows);
  };
  std::promise<void> has_read;
  std::promise<void> has_closed;
  std::thread other([&] {
    read();
    has_read.set_value();
    has_closed.get_future().wait();
    EXPECT_EQ(zym_db_begin(handle), ZYM_DB_STATUS_NO_DB);
  });
  has_read.get_future().wait();
  EXPECT_EQ(zym_db_close(handle), 0);
  EXPECT_FALSE(is_open());
  has_closed.set_value();
  other.join();
}

TEST_F(IdlePropertyDatabaseTest, IsLeftForTheFileThatTookItsPlace) {
  EXPECT_EQ(value(), 8U);
  std::filesystem::copy_file(folder() / "inventory-properties.db", folder() / "new.db");
  std::filesystem::rename(folder() / "new.db", folder() / "inventory-properties.db");
  const std::string log = log_of([] { EXPECT_EQ(value(), 8U); });
  EXPECT_EQ(log, "");
  std::filesystem::remove(folder() / "inventory-properties.db");
  unsigned number = 0;
  EXPECT_EQ(propdb_get_dword("/a", &number), ZYM_DB_STATUS_NOT_FOUND);
}

TEST_F(IdlePropertyDatabaseTest, IsLeftForThatOfAnotherInventory) {
  EXPECT_EQ(value(), 8U);
  std::filesystem::create_directory(folder() / "other");
  setenv("ZYMDB_INVENTORY", (folder() / "other/inventory.db").c_str(), 1);
  unsigned number = 0;
  EXPECT_EQ(propdb_get_dword("/a", &number), ZYM_DB_STATUS_NOT_FOUND);
  setenv("ZYMDB_INVENTORY", (folder() / "inventory.db").c_str(), 1);
  EXPECT_EQ(value(), 8U);
}

TEST_F(IdlePropertyDatabaseTest, IsNotInheritedByAChild) {
  EXPECT_EQ(value(), 8U);
  ChildProcess child([this] {
    unsigned number = 0;
    if (propdb_get_dword("/a", &number) != 0 || number != 8) return 1;
    set(open(), "\4\7\0\0\0");
    return 0;
  });
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(value(), 7U);
}

TEST_F(PropertyDatabaseTest, WithoutAFolderThereAreNoProperties) {
  lose_database();
  unsigned int dword = 9;
  EXPECT_EQ(propdb_get_dword("/a", &dword), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(dword, 9U);
}

}  // namespace
