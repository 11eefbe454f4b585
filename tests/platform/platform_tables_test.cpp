#include "controller/platform_tables.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "support/temporary_folder.h"
#include "zymdb_db.h"

namespace {

class PlatformTablesTest : public testing::Test {
 protected:
  PlatformTablesTest() { unsetenv("ZYMDB_PLATFORM_TABLES"); }
  ~PlatformTablesTest() override { unsetenv("ZYMDB_PLATFORM_TABLES"); }

  void recorded(const std::string& content) {
    const std::string file = folder_.file("tables");
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

  TemporaryFolder folder_;
  ptables_platform_t platform_{};
};

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
  setenv("ZYMDB_PLATFORM_TABLES", folder_.file("missing").c_str(), 1);
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
