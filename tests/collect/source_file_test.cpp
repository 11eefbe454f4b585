// Files that a recorded tree may hold where attributes should be: none keeps its reader waiting.
#include "common/source_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/temporary_folder.h"

namespace zymdb {
namespace {

namespace fs = std::filesystem;

class Attributes : public testing::Test {
 protected:
  std::string at(const char* name) const { return (folder_.path() / name).string(); }

  TemporaryFolder folder_;
};

TEST_F(Attributes, AreReadAsTheyAre) {
  EXPECT_EQ(read_attribute(folder_.write("vendor", "0x8086\n")), "0x8086\n");
  EXPECT_EQ(read_attribute(folder_.write("empty", "")), "");
  fs::create_symlink(at("vendor"), at("link"));
  EXPECT_EQ(read_number(at("link")), 0x8086U);
}

TEST_F(Attributes, ThatAreNoFilesAreNotRead) {
  ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
  fs::create_directory(at("folder"));
  fs::create_symlink("/dev/zero", at("endless"));
  fs::create_symlink(at("circle"), at("circle"));
  for (const char* name : {"pipe", "folder", "endless", "circle", "nothing"})
    EXPECT_FALSE(read_attribute(at(name))) << name;
}

TEST_F(Attributes, ThatAreTooLargeAreNotRead) {
  const auto path = folder_.write("sparse", "");
  fs::resize_file(path, uintmax_t{1} << 40);
  EXPECT_FALSE(read_attribute(path));
}

TEST_F(Attributes, OfFoldersThatAreNoneHaveNoEntries) {
  fs::create_symlink("/dev/zero", at("endless"));
  EXPECT_FALSE(folder_entries(at("endless")));
}

TEST_F(Attributes, AreNotSourcesWhichSayWhatIsWrong) {
  try {
    read_source(at("nothing"));
    FAIL() << "a file that is not there was read";
  } catch (const SourceError& error) {
    EXPECT_THAT(error.what(), testing::EndsWith("nothing: No such file or directory"));
  }
}

}  // namespace
}  // namespace zymdb
