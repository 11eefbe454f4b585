#include "controller/platform_tables.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "support/inventory.h"
#include "zymdb_db.h"

namespace {

class PlatformTablesTest : public InventoryTest {
 protected:
  PlatformTablesTest() { unsetenv("ZYMDB_PLATFORM_TABLES"); }
  ~PlatformTablesTest() override { unsetenv("ZYMDB_PLATFORM_TABLES"); }

  void recorded(const std::string& content) {
    const std::string file = folder() / "tables";
    std::ofstream(file, std::ios::binary) << content;
    setenv("ZYMDB_PLATFORM_TABLES", file.c_str(), 1);
  }

  int look_up() {
    ptables_t tables{};
    platform_ = {};
    int status = ptables_from_ram(&tables);
    if (status == 0) status = ptables_lookup_platform_direct(&tables, &platform_);
    ptables_free(&tables);
    return status;
  }

  bool is_amd() {
    EXPECT_EQ(look_up(), 0);
    return ((platform_.word[2] >> 15) & 1U) != 0;
  }

  ptables_platform_t platform_{};
};

constexpr char kAmdRecord[] = "\0\0\0\0\0\0\0\0\0\x80\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0";

TEST_F(PlatformTablesTest, TheInventorysProcessorsComeFirst) {
  struct Case {
    const char* manufacturer;
    const char* version;
    bool amd;
  };
  const Case cases[] = {
      {"Advanced Micro Devices, Inc.", "a processor", true},
      {"AMD", "", true},
      {"Vendor", "AMD EPYC 7543 32-Core Processor", true},
      {"AuthenticAMD", "", true},
      {"Intel(R) Corporation", "Intel(R) Xeon(R) Platinum 8380", false},
      {"", "Neoverse-N1", false},
  };
  for (const Case& each : cases) {
    const int64_t id = given("Processor", {{"Manufacturer", each.manufacturer}, {"Version", each.version}});
    for (const std::string& record : {std::string(28, '\0'), std::string(kAmdRecord, 28)}) {
      recorded(record);
      EXPECT_EQ(is_amd(), each.amd) << each.manufacturer << each.version;
    }
    const std::string one = "_id=" + std::to_string(id);
    ASSERT_EQ(zym_db_delete(get_dmdb_handle(), "Processor", one.c_str(), nullptr, 0, nullptr), 0);
  }
}

TEST_F(PlatformTablesTest, OneProcessorTellsForAll) {
  given("Processor", {{"Manufacturer", nullptr}, {"Version", ""}});
  given("Processor", {{"Manufacturer", "AMD"}, {"Version", nullptr}});
  recorded(std::string(28, '\0'));
  EXPECT_TRUE(is_amd());
}

TEST_F(PlatformTablesTest, WithoutProcessorsTheRecordTells) {
  recorded(std::string(kAmdRecord, 28));
  EXPECT_TRUE(is_amd());
  recorded(std::string(28, '\0'));
  EXPECT_FALSE(is_amd());
}

TEST_F(PlatformTablesTest, WithoutAnInventoryTheRecordTells) {
  lose_database();
  recorded(std::string(kAmdRecord, 28));
  EXPECT_TRUE(is_amd());
}

TEST_F(PlatformTablesTest, ProcessorsThatCannotBeReadAreAFailure) {
  recorded(std::string(kAmdRecord, 28));
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open((folder() / "inventory.db").c_str(), &database), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(database, "DROP TABLE Processor", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(database);
  EXPECT_NE(look_up(), 0);
}

TEST_F(PlatformTablesTest, ThisMachineIsToldByItsProcessorsVendor) {
  ASSERT_EQ(look_up(), 0);
  std::ifstream cpuinfo("/proc/cpuinfo");
  const std::string text{std::istreambuf_iterator<char>(cpuinfo), {}};
  const bool amd = text.find("AuthenticAMD") != std::string::npos;
  EXPECT_EQ((platform_.word[2] >> 15) & 1U, amd ? 1U : 0U);
}

TEST_F(PlatformTablesTest, ARecordedEntryIsReadWordByWord) {
  std::string content;
  for (char word = 1; word <= 7; ++word) content += std::string{word, 0, '\x80', 0};
  recorded(content);
  ASSERT_EQ(look_up(), 0);
  for (uint32_t word = 0; word < 7; ++word) EXPECT_EQ(platform_.word[word], 0x800001U + word);
}

TEST_F(PlatformTablesTest, ARecordOfAnotherSizeIsRefused) {
  for (const size_t size : {size_t{0}, size_t{27}, size_t{29}}) {
    recorded(std::string(size, 'x'));
    EXPECT_NE(look_up(), 0) << size;
    EXPECT_EQ(platform_.word[2], 0U);
  }
  setenv("ZYMDB_PLATFORM_TABLES", (folder() / "missing").c_str(), 1);
  EXPECT_NE(look_up(), 0);
}

TEST_F(PlatformTablesTest, NullsAndEmptyTablesAreAnswered) {
  ptables_t empty{};
  EXPECT_EQ(ptables_from_ram(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(ptables_lookup_platform_direct(nullptr, &platform_), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(ptables_lookup_platform_direct(&empty, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(ptables_lookup_platform_direct(&empty, &platform_), ZYM_DB_STATUS_NOT_FOUND);
  ptables_free(&empty);
  ptables_free(nullptr);
}

}  // namespace
