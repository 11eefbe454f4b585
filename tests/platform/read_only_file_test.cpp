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

// A copy in a folder of somebody else: nothing may be made beside it, and nobody else can be writing it.
class CopyOfSomebodyElseTest : public MediaTest {
 protected:
  void forbid() const {
    chmod(file().c_str(), 0440);
    chmod(folder().c_str(), 0550);
  }
  void allow() const {
    chmod(folder().c_str(), 0750);
    chmod(file().c_str(), 0640);
  }
  int attempt(const std::function<int()>& body) {
    close_all();
    remove({"inventory.db"});
    return as_ordinary_user(folder(), [&] {
      const int result = save(1) != 0 || zym_db_close(handle()) != 0 ? 1 : body();
      allow();
      return result;
    });
  }
  // What is saved; -1 when it cannot be read.
  static int found() {
    int value = 0;
    return saved(value) == 0 ? value : -1;
  }
};

TEST_F(CopyOfSomebodyElseTest, IsReadAndWrittenOnceItMayBe) {
  EXPECT_EQ(attempt([&] {
              forbid();
              int status = 0;
              const std::string log = log_of([&] {
                if (found() == 1) status = save(2);
              });
              if (status != kReadOnly) return 100 + status;
              if (log.find(file() + ": attempt to write a readonly database") == log.npos) return 2;
              if (found() != 1) return 3;
              for (const char* name : {"inventory.db-wal", "inventory.db-shm"})
                if (std::filesystem::exists(file(name))) return 4;
              allow();
              return save(3) == 0 && found() == 3 ? 0 : 5;
            }),
            0);
}

TEST_F(CopyOfSomebodyElseTest, IsLeftForTheFileThatTakesItsPlace) {
  EXPECT_EQ(attempt([&] {
              fs::copy_file(file(), file("copy.db"));
              if (save(2) != 0 || zym_db_close(handle()) != 0) return 2;
              forbid();
              if (found() != 2) return 3;
              chmod(folder().c_str(), 0750);
              fs::rename(file("copy.db"), file());
              forbid();
              std::this_thread::sleep_for(kNoticed);
              int value = 0;
              const std::string log = log_of([&] { value = found(); });
              if (log.find(file() + " was replaced: opened anew") == log.npos) return 4;
              return value == 1 ? 0 : 5;
            }),
            0);
}

TEST_F(CopyOfSomebodyElseTest, IsReadAnewAfterSomebodyWroteIt) {
  EXPECT_EQ(
      attempt([&] {
        forbid();
        if (found() != 1) return 2;
        allow();
        if (ChildProcess([] { return save(2) != 0 || zym_db_close(handle()) != 0 ? 1 : 0; }).wait() != 0)
          return 3;
        forbid();
        std::this_thread::sleep_for(kNoticed);
        return found() == 2 ? 0 : 4;
      }),
      0);
}

TEST_F(CopyOfSomebodyElseTest, WithAWriteAheadLogIsNotWhole) {
  EXPECT_EQ(attempt([&] {
              write_file("not empty", "inventory.db-wal");
              forbid();
              chmod(file("inventory.db-wal").c_str(), 0440);
              std::string log;
              int status = 0;
              log = log_of([&] { status = read(); });
              if (status != ZYM_DB_STATUS_NO_DB) return 100 + status;
              return log.find("cannot open the inventory database " + file() + ": ") != log.npos ? 0 : 2;
            }),
            0);
}

TEST_F(CopyOfSomebodyElseTest, IsFoundWhateverItsNameHolds) {
  EXPECT_EQ(attempt([&] {
              fs::copy_file(file(), file("a%20b?c#d.db"));
              setenv("ZYMDB_INVENTORY", file("a%20b?c#d.db").c_str(), 1);
              forbid();
              chmod(file("a%20b?c#d.db").c_str(), 0440);
              return found() == 1 ? 0 : 2;
            }),
            0);
}

}  // namespace
