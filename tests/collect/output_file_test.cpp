// Files and folders are written whole, or not at all.
#include "common/output_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "common/source_file.h"
#include "support/temporary_folder.h"

namespace zymdb {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

class OutputFile : public testing::Test {
 protected:
  std::string at(const char* name) const { return folder_.file(name); }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_.path())) names.push_back(entry.path().filename());
    return names;
  }

  template <class Write>
  static std::string failure_of(Write write) {
    try {
      write();
    } catch (const SourceError& error) {
      return error.what();
    }
    return "written";
  }

  static mode_t mode_of(const std::string& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 0777;
  }

  TemporaryFolder folder_;
};

// A file may take so many bytes while it is there.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &former_);
    const rlimit limit{bytes, former_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN);
  }
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &former_); }

 private:
  rlimit former_{};
};

TEST_F(OutputFile, ThatIsNewIsWholeOrNotThere) {
  write_new_file(at("new"), "content");
  EXPECT_EQ(read_source(at("new")), "content");
  EXPECT_EQ(mode_of(at("new")) & 07, 0U);
  EXPECT_EQ(failure_of([&] { write_new_file(at("new"), "other"); }), at("new") + ": File exists");
  EXPECT_EQ(read_source(at("new")), "content");
  EXPECT_THROW(write_new_file("/dev/full/x", "other"), SourceError);
  const FileSizeLimit limit(3);
  EXPECT_EQ(failure_of([&] { write_new_file(at("cut"), "content"); }), at("cut") + ": File too large");
  EXPECT_THAT(names(), ElementsAre("new"));
}

TEST_F(OutputFile, TakesTheFormerOnesPlace) {
  replace_file(at("metrics"), "former");
  EXPECT_EQ(read_source(at("metrics")), "former");
  const int former = open(at("metrics").c_str(), O_RDONLY | O_CLOEXEC);
  replace_file(at("metrics"), "present and longer");
  EXPECT_EQ(read_source(at("metrics")), "present and longer");
  // Who had begun to read has all of the former file.
  char content[16] = {};
  EXPECT_EQ(read(former, content, sizeof content), 6);
  EXPECT_STREQ(content, "former");
  close(former);
  EXPECT_THAT(names(), ElementsAre("metrics"));
}

TEST_F(OutputFile, LeavesTheFormerOneWhereItCannotBeWritten) {
  replace_file(at("metrics"), "former");
  const FileSizeLimit limit(6);
  EXPECT_EQ(failure_of([&] { replace_file(at("metrics"), "present"); }), at("metrics") + ": File too large");
  EXPECT_EQ(read_source(at("metrics")), "former");
  EXPECT_THAT(names(), ElementsAre("metrics"));
}

TEST_F(OutputFile, MayBeReadByAllWhomTheUmaskLets) {
  const mode_t former = umask(022);
  replace_file(at("metrics"), "content");
  umask(former);
  EXPECT_EQ(mode_of(at("metrics")), 0644U);
}

TEST_F(OutputFile, BehindALinkIsReplacedAndTheLinkStays) {
  fs::create_directory(at("folder"));
  fs::create_symlink("folder/file", at("link"));
  for (const char* content : {"new", "newer"}) {
    replace_file(at("link"), content);
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_EQ(read_source(at("folder/file")), content);
  }
}

// Not with a device: if this failed, the machine would have lost it.
TEST_F(OutputFile, ThatIsNoFileIsWrittenInto) {
  ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
  const int reader = open(at("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  replace_file(at("pipe"), "content");
  EXPECT_TRUE(fs::is_fifo(at("pipe")));
  char content[16] = {};
  EXPECT_EQ(read(reader, content, sizeof content), 7);
  EXPECT_STREQ(content, "content");
  close(reader);
  EXPECT_EQ(failure_of([&] { replace_file(folder_.path(), "content"); }),
            folder_.path().string() + ": Is a directory");
}

TEST_F(OutputFile, IsNotHinderedByWhatAKilledProcessLeft) {
  write_new_file(at("metrics.") + std::to_string(getpid()), "half");
  replace_file(at("metrics"), "content");
  EXPECT_THAT(names(), ElementsAre("metrics"));
}

TEST_F(OutputFile, InAMissingFolderIsTold) {
  EXPECT_EQ(failure_of([&] { replace_file(at("none/file"), "x"); }),
            at("none/file") + ": No such file or directory");
}

TEST_F(OutputFile, OfANewFolderIsThereOnceAllOfThemAre) {
  {
    NewFolder folder(at("copy/"));
    folder.add_file("a/b", "content");
    folder.add_link("a/link", "b");
    folder.add_folder("empty");
    EXPECT_FALSE(fs::exists(at("copy")));
    folder.finish();
  }
  EXPECT_EQ(read_source(at("copy/a/link")), "content");
  EXPECT_TRUE(fs::is_empty(at("copy/empty")));
  EXPECT_THAT(names(), ElementsAre("copy"));
}

TEST_F(OutputFile, OfANewFolderGoesWithTheOthersWhereOneFails) {
  fs::create_directory(at("copy"));
  {
    NewFolder folder(at("copy"));
    folder.add_file("small", "abc");
    const FileSizeLimit limit(3);
    EXPECT_EQ(failure_of([&] { folder.add_file("large", "content"); }),
              at("copy/large") + ": File too large");
  }
  EXPECT_THAT(names(), ElementsAre("copy"));
  EXPECT_TRUE(fs::is_empty(at("copy")));
}

TEST_F(OutputFile, OfANewFolderNeverMeetsOthers) {
  folder_.write("mine/file", "x");
  EXPECT_EQ(failure_of([&] { NewFolder folder(at("mine")); }), at("mine") + ": is not an empty folder");
  EXPECT_THAT(failure_of([&] { NewFolder folder(at("none/copy")); }), HasSubstr("none/copy: No such file"));
  fs::create_directory(at("taken"));
  NewFolder folder(at("taken"));
  folder.add_file("a", "x");
  folder_.write("taken/file", "mine");
  EXPECT_THAT(failure_of([&] { folder.finish(); }), HasSubstr("taken: Directory not empty"));
  EXPECT_EQ(read_source(at("taken/file")), "mine");
}

}  // namespace
}  // namespace zymdb
