#include "platform/property_database.h"

#include <sqlite3.h>

#include "platform/client_fixture.h"

namespace {

class PropertyDatabaseTest : public ClientTest {
 protected:
  // `value` in hexadecimal, as a blob.
  void property(const char* path, const std::string& value) {
    ASSERT_EQ(zym_db_close(zym_db_open("localhost", "root", "", "propertiesdb", 0)), 0);
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((folder() / "propertiesdb.db").c_str(), &database), SQLITE_OK);
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

TEST_F(PropertyDatabaseTest, WithoutAFolderThereAreNoProperties) {
  lose_database();
  unsigned int dword = 9;
  EXPECT_EQ(propdb_get_dword("/a", &dword), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(dword, 9U);
}

}  // namespace
