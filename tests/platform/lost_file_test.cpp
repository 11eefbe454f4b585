// Files that vanish or change under a database that is open, on two threads.
#include <atomic>

#include "platform/child_process.h"
#include "platform/media_fixture.h"

namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

class UnderneathTest : public MediaTest {
 protected:
  // Opens the database on this thread and on one more, which stays.
  UnderneathTest() : other_([this] { idle(); }) {
    while (!idles_) std::this_thread::yield();
    EXPECT_EQ(save(1), 0);
  }
  ~UnderneathTest() override {
    done_ = true;
    other_.join();
  }

  // The other thread's view.
  int value_of_other() {
    asked_ = true;
    while (asked_) std::this_thread::yield();
    return answer_;
  }

  static constexpr char kReplaced[] = " was replaced: opened anew\n";
  static constexpr char kRemoved[] = " was removed or emptied: opened anew\n";
  static constexpr char kLostWal[] = " lost its write-ahead log: opened anew\n";

  std::string warning(const char* what) const {
    return "zymdb warning: the inventory database " + file() + what;
  }

 private:
  void idle() {
    read();
    idles_ = true;
    while (!done_) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      if (!asked_) continue;
      answer_ = value();
      asked_ = false;
    }
  }

  std::atomic<bool> idles_{false};
  std::atomic<bool> asked_{false};
  std::atomic<bool> done_{false};
  std::atomic<int> answer_{0};
  std::thread other_;
};

TEST_F(UnderneathTest, AReplacedDatabaseIsTheOneThatIsWritten) {
  make_backup(5);
  ASSERT_EQ(save(6), 0);
  fs::rename(file("backup.db"), file());
  EXPECT_EQ(log_of([] { EXPECT_EQ(save(7), 0); }), warning(kReplaced));
  EXPECT_EQ(value(), 7);
  EXPECT_EQ(value_of_other(), 7);
  EXPECT_EQ(integrity_of(file()), "ok");
}

// Whether or not they would notice yet: two files cannot have a shared-memory file in common.
TEST_F(UnderneathTest, AThreadThatOpensTheReplacementEndsTheOthersSessions) {
  make_backup(5);
  ASSERT_EQ(save(6), 0);
  EXPECT_EQ(value_of_other(), 6);
  fs::rename(file("backup.db"), file());
  EXPECT_EQ(log_of([] { std::thread([] { EXPECT_EQ(value(), 5); }).join(); }), warning(kReplaced));
  EXPECT_EQ(log_of([this] {
              EXPECT_EQ(value(), 5);
              EXPECT_EQ(value_of_other(), 5);
            }),
            "");
  EXPECT_EQ(integrity_of(file()), "ok");
}

// The old write-ahead log still lies beside the new database, and would be applied to it.
TEST_F(UnderneathTest, NothingOfTheOldLogReachesTheReplacement) {
  make_backup(5);
  for (int row = 0; row < 50; ++row) given("PCIs", {{"BusNo", row}});
  ASSERT_GT(fs::file_size(file("inventory.db-wal")), 0U);
  fs::rename(file("backup.db"), file());
  std::this_thread::sleep_for(kNoticed);
  EXPECT_EQ(log_of([] { EXPECT_EQ(value(), 5); }), warning(kReplaced));
  EXPECT_EQ(count("PCIs", "1"), 0);
  close_all();
  EXPECT_EQ(count("PCIs", "1"), 0);
  EXPECT_EQ(integrity_of(file()), "ok");
}

TEST_F(UnderneathTest, ARemovedDatabaseBecomesANewOne) {
  remove({"inventory.db"});
  std::this_thread::sleep_for(kNoticed);
  EXPECT_EQ(log_of([] { EXPECT_EQ(save(2), 0); }), warning(kRemoved));
  EXPECT_EQ(value(), 2);
  EXPECT_EQ(value_of_other(), 2);
  EXPECT_EQ(integrity_of(file()), "ok");
}

TEST_F(UnderneathTest, AnEmptiedDatabaseBecomesANewOne) {
  given("PCIs", {{"BusNo", 1}});
  fs::resize_file(file(), 0);
  std::this_thread::sleep_for(kNoticed);
  EXPECT_EQ(log_of([] { EXPECT_EQ(save(2), 0); }), warning(kRemoved));
  EXPECT_EQ(count("PCIs", "1"), 0);
  EXPECT_EQ(value_of_other(), 2);
  EXPECT_EQ(integrity_of(file()), "ok");
}

TEST_F(UnderneathTest, ARemovedFolderIsAStatusUntilItIsMadeAgain) {
  fs::remove_all(folder());
  const std::string missing =
      "zymdb error: cannot open the inventory database " + file() + ": No such file or directory\n";
  EXPECT_THAT(log_of([] { EXPECT_EQ(save(2), kInputOutput); }), HasSubstr(missing));
  EXPECT_EQ(log_of([] { EXPECT_EQ(read(), kInputOutput); }), missing);
  fs::create_directory(folder());
  EXPECT_EQ(save(3), 0);
  EXPECT_EQ(value(), 3);
  EXPECT_EQ(value_of_other(), 3);
}

TEST_F(UnderneathTest, AFolderInThePlaceOfTheFileIsAStatusUntilItIsGone) {
  remove({"inventory.db"});
  fs::create_directory(file());
  const std::string log = log_of([] { EXPECT_EQ(save(2), kInputOutput); });
  EXPECT_THAT(log, HasSubstr("cannot open the inventory database " + file() + ": it is not a file"));
  fs::remove(file());
  EXPECT_EQ(save(3), 0);
  EXPECT_EQ(value(), 3);
}

// Only the write-ahead log holds the last writes: they must not go with its name.
TEST_F(UnderneathTest, WritesSurviveThatTheLogIsRemoved) {
  for (const auto& names : {std::vector<const char*>{"inventory.db-wal"},
                            {"inventory.db-shm"},
                            {"inventory.db-wal", "inventory.db-shm"}}) {
    for (int row = 0; row < 20; ++row) given("PCIs", {{"BusNo", row}});
    ASSERT_EQ(save(2), 0);
    for (const char* name : names) ASSERT_TRUE(fs::remove(file(name)));
    EXPECT_EQ(log_of([] { EXPECT_EQ(save(3), 0); }), warning(kLostWal));
    EXPECT_EQ(value_of_other(), 3);
    EXPECT_EQ(count("PCIs", "1"), 20);
    close_all();
    EXPECT_EQ(count("PCIs", "1"), 20);
    EXPECT_EQ(integrity_of(file()), "ok");
    ASSERT_EQ(zym_db_delete(handle(), "PCIs", "1", nullptr, 0, nullptr), 0);
    EXPECT_EQ(value_of_other(), 3);
  }
}

// The other way to put a database back: what the lost log holds belongs to the former content.
TEST_F(UnderneathTest, ADatabaseThatIsCopiedOverTheOldOneIsTakenAsItIs) {
  make_backup(5);
  for (int row = 0; row < 50; ++row) given("PCIs", {{"BusNo", row}});
  ASSERT_EQ(save(6), 0);
  fs::copy_file(file("backup.db"), file(), fs::copy_options::overwrite_existing);
  remove({"inventory.db-wal", "inventory.db-shm"});
  EXPECT_EQ(log_of([] { EXPECT_EQ(save(7), 0); }), warning(kLostWal));
  EXPECT_EQ(value_of_other(), 7);
  EXPECT_EQ(count("PCIs", "1"), 0);
  EXPECT_EQ(integrity_of(file()), "ok");
}

TEST_F(UnderneathTest, ATransactionOnALostDatabaseIsNotCommitted) {
  make_backup(5);
  for (const bool replaced : {true, false}) {
    ASSERT_EQ(zym_db_begin(handle()), 0);
    EXPECT_EQ(save(6), 0);
    if (replaced) {
      fs::rename(file("backup.db"), file());
    } else {
      remove({"inventory.db-wal"});
    }
    EXPECT_THAT(log_of([] { EXPECT_EQ(zym_db_commit(handle()), kInputOutput); }),
                HasSubstr(file() + (replaced ? " was replaced" : " lost its write-ahead log") +
                          " during the transaction"));
    EXPECT_EQ(value(), 5);
    EXPECT_EQ(integrity_of(file()), "ok");
  }
}

// Every session of the process ends each time, whatever its thread is doing.
TEST_F(MediaTest, ManyThreadsSurviveThatFilesAreReplacedUnderThem) {
  make_backup(5);
  std::atomic<bool> done{false};
  std::vector<std::thread> threads;
  const std::string log = log_of([&] {
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&, i] {
        while (!done) i % 2 == 0 ? save(i) : read();
      });
    }
    for (int round = 0; round < 20; ++round) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      fs::copy_file(file("backup.db"), file("copy.db"));
      fs::rename(file("copy.db"), file());
      remove({"inventory.db-wal", "inventory.db-shm"});
    }
    done = true;
    for (std::thread& thread : threads) thread.join();
  });
  EXPECT_THAT(log, HasSubstr(" was replaced: opened anew\n"));
  std::this_thread::sleep_for(kNoticed);
  EXPECT_EQ(save(9), 0);
  EXPECT_EQ(value(), 9);
  EXPECT_EQ(integrity_of(file()), "ok");
}

// Two processes have the database open; the one that notices first must not take the other's writes away.
TEST_F(UnderneathTest, ProcessesLoseNothingWhenTheLogIsRemovedUnderThem) {
  int go[2];
  int gone[2];
  ASSERT_EQ(pipe(go), 0);
  ASSERT_EQ(pipe(gone), 0);
  ChildProcess writer([&] {
    char byte = 0;
    for (int row = 0; row < 20; ++row) given("PCIs", {{"BusNo", row}});
    if (write(go[1], &byte, 1) != 1 || ::read(gone[0], &byte, 1) != 1) return 1;
    for (int row = 20; row < 40; ++row) given("PCIs", {{"BusNo", row}});
    return count("PCIs", "1") == 60 ? 0 : 2;
  });
  char byte = 0;
  ASSERT_EQ(::read(go[0], &byte, 1), 1);
  remove({"inventory.db-wal", "inventory.db-shm"});
  for (int row = 100; row < 120; ++row) given("PCIs", {{"BusNo", row}});
  EXPECT_EQ(count("PCIs", "1"), 40);
  ASSERT_EQ(write(gone[1], &byte, 1), 1);
  EXPECT_EQ(writer.wait(), 0);
  EXPECT_EQ(count("PCIs", "1"), 60);
  EXPECT_EQ(integrity_of(file()), "ok");
  for (const int descriptor : {go[0], go[1], gone[0], gone[1]}) close(descriptor);
}

}  // namespace
