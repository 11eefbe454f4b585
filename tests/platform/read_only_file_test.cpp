// Files that may be read and not written, and those that may by now.
#include <sys/stat.h>

#include "platform/child_process.h"
#include "platform/media_fixture.h"

namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

// Permissions bind nobody but ordinary users.
int as_ordinary_user(const fs::path& folder, const std::function<int()>& body) {
  return ChildProcess([&] {
           constexpr unsigned kNobody = 65534;
           if (geteuid() == 0 && (chown(folder.c_str(), kNobody, kNobody) != 0 || setegid(kNobody) != 0 ||
                                  seteuid(kNobody) != 0))
             return 99;
           return body();
         })
      .wait();
}

TEST_F(MediaTest, AReadOnlyFileIsReadAndWrittenOnceItMayBe) {
  close_all();
  remove({"inventory.db"});
  const auto attempt = [&] {
    if (save(1) != 0 || zym_db_close(handle()) != 0) return 1;
    chmod(file().c_str(), 0440);
    int found = 0;
    const std::string log = log_of([&] {
      if (saved(found) != 0 || found != 1) found = -1;
      if (save(2) != kReadOnly) found = -2;
    });
    if (found != 1) return 10 - found;
    if (log.find(file() + ": attempt to write a readonly database") == log.npos) return 2;
    if (saved(found) != 0 || found != 1) return 3;
    chmod(file().c_str(), 0640);
    if (save(3) != 0 || saved(found) != 0 || found != 3) return 4;
    return 0;
  };
  EXPECT_EQ(as_ordinary_user(folder(), attempt), 0);
}

TEST_F(MediaTest, AReadOnlyFolderIsAStatusUntilItMayBeWritten) {
  close_all();
  remove({"inventory.db"});
  const auto attempt = [&] {
    if (save(1) != 0 || zym_db_close(handle()) != 0) return 1;
    chmod(file().c_str(), 0440);
    chmod(folder().c_str(), 0550);
    int status = 0;
    const std::string log = log_of([&] { status = save(2); });
    chmod(folder().c_str(), 0750);
    chmod(file().c_str(), 0640);
    if (status != ZYM_DB_STATUS_NO_DB) return 100 + status;
    if (log.find("cannot open the inventory database " + file() + ": ") == log.npos) return 2;
    int found = 0;
    if (save(3) != 0 || saved(found) != 0 || found != 3) return 3;
    return 0;
  };
  EXPECT_EQ(as_ordinary_user(folder(), attempt), 0);
}

}  // namespace
