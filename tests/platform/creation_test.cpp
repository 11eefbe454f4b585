// Who makes databases, and what those find who may not.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <thread>

#include "controller/property_database.h"
#include "platform/client_fixture.h"

namespace {

namespace fs = std::filesystem;

class CreationTest : public ClientTest {
 protected:
  CreationTest() {
    zym_db_close(handle());
    setenv("ZYMDB_INVENTORY", inventory().c_str(), 1);
    zym_db_allow_creation(0);
  }
  ~CreationTest() override { zym_db_allow_creation(1); }

  std::string inventory() const { return folder() / "other.db"; }
  std::string properties() const { return folder() / "other-properties.db"; }
  static _zym_db_handle_t* open_properties() {
    return zym_db_open("localhost", "root", "", "propertiesdb", 0);
  }

  static void create() {
    zym_db_allow_creation(1);
    ASSERT_NE(get_dmdb_handle(), nullptr);
    ASSERT_EQ(zym_db_close(get_dmdb_handle()), 0);
    zym_db_allow_creation(0);
  }
  size_t files() const {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder()), fs::directory_iterator()));
  }
};

TEST_F(CreationTest, AMissingInventoryIsNamedAndNotMade) {
  const size_t before = files();
  const std::string log = log_of([] { EXPECT_EQ(get_dmdb_handle(), nullptr); });
  EXPECT_EQ(log, "zymdb error: cannot open the inventory database " + inventory() +
                     ": No such file or directory\n");
  EXPECT_EQ("zymdb error: " + std::string(zym_db_last_error(nullptr)) + "\n", log);
  EXPECT_EQ(files(), before);
}

TEST_F(CreationTest, AnEmptyInventoryIsNamedAndLeftEmpty) {
  std::ofstream(inventory()).close();
  const std::string log = log_of([] { EXPECT_EQ(get_dmdb_handle(), nullptr); });
  EXPECT_EQ(log, "zymdb error: cannot open the inventory database " + inventory() + ": it is empty\n");
  EXPECT_EQ(fs::file_size(inventory()), 0U);
  EXPECT_FALSE(fs::exists(inventory() + "-wal"));
}

TEST_F(CreationTest, AnInventoryThatIsThereIsReadAndWritten) {
  create();
  EXPECT_EQ(given("PCIs", {{"FunKey", 1}}), 1);
  EXPECT_EQ(count("PCIs", "1"), 1);
}

TEST_F(CreationTest, AnInventoryThatVanishesIsNotMadeAnew) {
  create();
  EXPECT_EQ(count("PCIs", "1"), 0);
  fs::remove(inventory());
  std::this_thread::sleep_for(std::chrono::milliseconds(400));
  EXPECT_EQ(count("PCIs", "1"), -1);
  EXPECT_EQ(status_, 44);
  EXPECT_FALSE(fs::exists(inventory()));
}

TEST_F(CreationTest, MissingOrEmptyPropertiesAreNone) {
  create();
  for (const bool is_empty_file : {false, true}) {
    if (is_empty_file) std::ofstream(properties()).close();
    unsigned value = 9;
    const std::string log =
        log_of([&] { EXPECT_EQ(propdb_get_dword("/a", &value), ZYM_DB_STATUS_NOT_FOUND); });
    EXPECT_EQ(log, "") << is_empty_file;
    EXPECT_EQ(value, 9U);
    EXPECT_EQ(fs::exists(properties()), is_empty_file);
    EXPECT_FALSE(fs::exists(properties() + "-wal"));
  }
  EXPECT_EQ(fs::file_size(properties()), 0U);
}

TEST_F(CreationTest, WhatIsWrittenToMissingPropertiesIsRefused) {
  create();
  _zym_db_handle_t* const handle = open_properties();
  ASSERT_NE(handle, nullptr);
  const Set values(zym_db_get_content_values(handle));
  zym_db_content_put_text(values.get(), "propName", "/a");
  EXPECT_EQ(zym_db_insert(handle, "propertiesDCTbl", values.get(), 0, nullptr), 41);
  EXPECT_EQ(zym_db_close(handle), 0);
  EXPECT_FALSE(fs::exists(properties()));
}

TEST_F(CreationTest, PropertiesThatAppearAreFoundByAHandleThatHadNone) {
  create();
  _zym_db_handle_t* const reader = open_properties();
  ASSERT_NE(reader, nullptr);
  zym_db_allow_creation(1);
  std::thread([] { given_property("/a", {"\5\0\0\0", 4}); }).join();
  zym_db_allow_creation(0);
  std::this_thread::sleep_for(std::chrono::milliseconds(400));
  zym_db_result_t* rows = nullptr;
  const std::string log = log_of([&] {
    EXPECT_EQ(zym_db_query(reader, "propertiesDCTbl", nullptr, 0, nullptr, nullptr, 0, 0, &rows), 0);
  });
  EXPECT_EQ(log, "");
  EXPECT_EQ(zym_db_result_row_count(rows), 1U);
  zym_db_free_result(rows);
  EXPECT_EQ(zym_db_close(reader), 0);
}

TEST_F(CreationTest, IsAllowedAgainInTheSameProcess) {
  EXPECT_EQ(get_dmdb_handle(), nullptr);
  zym_db_allow_creation(7);
  EXPECT_NE(get_dmdb_handle(), nullptr);
  EXPECT_TRUE(fs::exists(inventory()));
}

}  // namespace
