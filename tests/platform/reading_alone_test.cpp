// Who may make no database makes no file beside one that nobody else has open, as long as he reads.
#include <unistd.h>

#include <future>

#include "controller/property_database.h"
#include "platform/child_process.h"
#include "platform/media_fixture.h"
#include "support/sql.h"
#include "zymdb_platform.h"

namespace {

namespace fs = std::filesystem;

class ReadingAloneTest : public MediaTest {
 protected:
  ReadingAloneTest() {
    EXPECT_EQ(save(1), 0);
    // This thread would keep its connection for a while.
    ChildProcess([] { return given_property("/a", {"\5\0\0\0", 4}), 0; }).wait();
    close_all();
    zym_db_allow_creation(0);
  }
  ~ReadingAloneTest() override { zym_db_allow_creation(1); }

  bool has_log() const {
    return fs::exists(file("inventory.db-wal")) || fs::exists(file("inventory.db-shm"));
  }

  // What happened to the folder and the files in it.
  std::string trace() const {
    std::string text = std::to_string(fs::last_write_time(folder()).time_since_epoch().count());
    for (const auto& entry : fs::directory_iterator(folder()))
      text += entry.path().string() + std::to_string(entry.last_write_time().time_since_epoch().count());
    return text;
  }

  // In another process, which ends as it should, or is killed.
  static int save_elsewhere(int number, bool dies = false) {
    return ChildProcess([=] {
             if (save(number) != 0) return 1;
             if (dies) raise(SIGKILL);
             return zym_db_close(handle());
           })
        .wait();
  }
};

TEST_F(ReadingAloneTest, LeavesTheFolderAsItIs) {
  const std::string before = trace();
  unsigned number = 0;
  uint64_t generation = 0;
  EXPECT_EQ(value(), 1);
  EXPECT_EQ(propdb_get_dword("/a", &number), 0);
  EXPECT_EQ(number, 5U);
  EXPECT_EQ(zym_db_generation(handle(), &generation), 0);
  EXPECT_EQ(generation, 1U);
  const TemporaryFolder elsewhere;
  EXPECT_EQ(zym_db_snapshot(handle(), elsewhere.file("copy.db").c_str(), &generation), 0);
  EXPECT_EQ(generation, 1U);
  EXPECT_FALSE(has_log());
  close_all();
  EXPECT_EQ(trace(), before);
}

TEST_F(ReadingAloneTest, IsNotForWhoMayMakeDatabases) {
  zym_db_allow_creation(1);
  EXPECT_EQ(value(), 1);
  EXPECT_TRUE(has_log());
}

TEST_F(ReadingAloneTest, EndsWithAWriteOfAnother) {
  EXPECT_EQ(value(), 1);
  for (int number = 2; number < 5; ++number) {
    EXPECT_EQ(save_elsewhere(number), 0);
    EXPECT_EQ(value(), number);
    EXPECT_TRUE(has_log());
  }
  uint64_t generation = 0;
  EXPECT_EQ(zym_db_generation(handle(), &generation), 0);
  EXPECT_EQ(generation, 4U);
}

TEST_F(ReadingAloneTest, GoesOnWithAReportThatChangesNothing) {
  const auto change_a_two = [](int to) {
    const Set values(zym_db_get_content_values(handle()));
    zym_db_content_put_uint(values.get(), "PackageID1", static_cast<unsigned>(to));
    const std::string where = "PackageID1=2";
    int64_t changed = 0;
    EXPECT_EQ(zym_db_update(handle(), "NCSIPackageID", values.get(), where.c_str(), nullptr, 0, &changed), 0);
    return changed;
  };
  EXPECT_EQ(change_a_two(3), 0);
  EXPECT_FALSE(has_log());
  EXPECT_EQ(save_elsewhere(2), 0);
  EXPECT_EQ(change_a_two(3), 1);
  EXPECT_EQ(value(), 3);
}

TEST_F(ReadingAloneTest, EndsWithAWriteOfItsOwn) {
  EXPECT_EQ(value(), 1);
  EXPECT_EQ(save(2), 0);
  EXPECT_EQ(value(), 2);
  EXPECT_TRUE(has_log());
  close_all();
  EXPECT_EQ(zym_db_begin(handle()), 0);
  EXPECT_EQ(save(3), 0);
  EXPECT_EQ(zym_db_rollback(handle()), 0);
  EXPECT_EQ(value(), 2);
}

TEST_F(ReadingAloneTest, DoesNotMissWhatAKilledWriterLeft) {
  EXPECT_EQ(save_elsewhere(2, true), -1);
  EXPECT_TRUE(has_log());
  EXPECT_EQ(value(), 2);
}

TEST_F(ReadingAloneTest, LeavesOneWholeFileBehindAWriterThatEndedBefore) {
  EXPECT_EQ(value(), 1);
  EXPECT_EQ(save_elsewhere(2), 0);
  EXPECT_TRUE(has_log());
  close_all();
  EXPECT_FALSE(has_log());
  EXPECT_EQ(value(), 2);
}

TEST_F(ReadingAloneTest, OfOneThreadEndsWithAWriteOfAnotherThread) {
  EXPECT_EQ(value(), 1);
  std::thread([] { EXPECT_EQ(save(2), 0); }).join();
  EXPECT_EQ(value(), 2);
  close_all();
  EXPECT_FALSE(has_log());
}

TEST_F(ReadingAloneTest, EndsForTheFileThatTakesItsPlace) {
  EXPECT_EQ(value(), 1);
  fs::copy_file(file(), file("copy.db"));
  EXPECT_EQ(save(2), 0);
  close_all();
  EXPECT_EQ(value(), 2);
  fs::rename(file("copy.db"), file());
  std::this_thread::sleep_for(kNoticed);
  const std::string log = log_of([] { EXPECT_EQ(value(), 1); });
  EXPECT_THAT(log, testing::HasSubstr(file() + " was replaced: opened anew"));
}

// Its writers change the file itself.
TEST_F(ReadingAloneTest, IsNotOfAFileWithoutAWriteAheadLog) {
  run_sql_on(file(), "PRAGMA journal_mode=DELETE");
  EXPECT_EQ(value(), 1);
  EXPECT_TRUE(has_log());
  EXPECT_EQ(save_elsewhere(2), 0);
  EXPECT_EQ(value(), 2);
}

TEST_F(ReadingAloneTest, IsNotInherited) {
  EXPECT_EQ(value(), 1);
  ChildProcess child([] { return save(2) == 0 && value() == 2 ? 0 : 1; });
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(value(), 2);
}

// A writer that comes, writes into the file and goes while a statement of another process runs.
class OvertakenTest : public ReadingAloneTest {
 protected:
  static constexpr unsigned kRows = 3000;

  void fill() {
    zym_db_allow_creation(1);
    run_sql_on(file(),
               "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<3000) "
               "INSERT INTO PCIs (FunKey, SlotDesignation, BusNo) SELECT i, printf('%0200d', i), 1 FROM n");
    close_all();
    zym_db_allow_creation(0);
  }

  // Half of the file has been read by then.
  static void write_meanwhile(const std::function<void()>& write) {
    writes = write;
    reads_to_come = 300;
    watch_reads();
  }

  static inline std::function<void()> writes;
  static inline int reads_to_come = 0;

  static ssize_t read_and_count(int descriptor, void* data, size_t size, off_t offset) {
    if (reads_to_come > 0 && --reads_to_come == 0) writes();
    return pread(descriptor, data, size, offset);
  }
  static void watch_reads() {
    sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
    files->xSetSystemCall(files, "pread64", reinterpret_cast<sqlite3_syscall_ptr>(read_and_count));
  }
  ~OvertakenTest() override {
    sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
    files->xSetSystemCall(files, "pread64", nullptr);
  }
};

TEST_F(OvertakenTest, AReadIsOfOneMoment) {
  fill();
  int start[2];
  ASSERT_EQ(pipe(start), 0);
  ChildProcess writer([&] {
    char byte = 0;
    if (::read(start[0], &byte, 1) != 1) return 1;
    run_sql_on(file(), "UPDATE PCIs SET BusNo=2; PRAGMA wal_checkpoint(TRUNCATE)");
    return 0;
  });
  bool has_written = false;
  write_meanwhile([&] {
    EXPECT_EQ(write(start[1], "", 1), 1);
    EXPECT_EQ(writer.wait(), 0);
    has_written = true;
  });
  const Rows all = query("PCIs", {"BusNo"}, "1 ORDER BY FunKey");
  EXPECT_TRUE(has_written);
  ASSERT_NE(all, nullptr);
  EXPECT_EQ(zym_db_result_row_count(all.get()), kRows);
  unsigned sum = 0;
  while (zym_db_result_step(all.get()) == ZYM_DB_STATUS_ROW) {
    unsigned bus = 0;
    EXPECT_EQ(zym_db_result_column_uint(all.get(), 0, &bus), 0);
    sum += bus;
  }
  EXPECT_EQ(sum, 2 * kRows);
}

}  // namespace
