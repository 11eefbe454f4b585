// Several processes, some of which die.
#include <atomic>
#include <thread>

#include "platform/child_process.h"
#include "platform/client_fixture.h"
#include "support/integrity.h"

namespace {

class ProcessesTest : public ClientTest {
 protected:
  static int insert(const char* table, const char* column, int value) {
    _zym_db_handle_t* const database = get_dmdb_handle();
    const Set values(zym_db_get_content_values(database));
    zym_db_content_put_int(values.get(), column, value);
    return zym_db_insert(database, table, values.get(), 0, nullptr);
  }

  static int insert_many(int thread, int rows) {
    for (int row = 0; row < rows; ++row) {
      if (insert("PCIs", "BusNo", thread * 1000 + row) != 0) return 1;
      zym_db_result_t* found = nullptr;
      if (zym_db_query(get_dmdb_handle(), "PCIs", nullptr, 0, "BusNo=1", nullptr, 0, 0, &found) != 0)
        return 2;
      zym_db_free_result(found);
    }
    return 0;
  }

  static int insert_in_threads(int first, int threads, int rows) {
    std::vector<std::thread> running;
    std::atomic<int> errors{0};
    for (int i = 0; i < threads; ++i) {
      running.emplace_back([&errors, thread = first + i, rows] { errors += insert_many(thread, rows) != 0; });
    }
    for (std::thread& thread : running) thread.join();
    return errors;
  }

  std::string integrity() const {
    if (is_embedded()) return integrity_of(folder() / "inventory.db");
    const std::string told = run_sql("CHECK TABLE PCIs, Journal EXTENDED");
    return told.find("error") == told.npos && told.find("status|OK") != told.npos ? "ok" : told;
  }
};

TEST_F(ProcessesTest, TwoProcessesOfFourThreadsLoseNoRow) {
  ChildProcess other([] { return insert_in_threads(4, 4, 25); });
  EXPECT_EQ(insert_in_threads(0, 4, 25), 0);
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(count("PCIs", "1"), 200);
}

TEST_F(ProcessesTest, TwoProcessesThatStartTogetherCreateOneDatabase) {
  zym_db_close(handle());
  for (int round = 0; round < 10; ++round) {
    setenv("ZYMDB_INVENTORY", (folder() / ("new-" + std::to_string(round) + ".db")).c_str(), 1);
    ChildProcess first([] { return insert("PCIs", "BusNo", 1); });
    ChildProcess second([] { return insert("PCIs", "BusNo", 2); });
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_EQ(count("PCIs", "1"), 2) << round;
    zym_db_close(handle());
  }
}

TEST_F(ProcessesTest, AForkedChildOpensItsOwnConnections) {
  given("PCIs", {{"BusNo", 1}});
  ChildProcess child([&] {
    if (count("PCIs", "1") != 1) return 1;
    return insert("PCIs", "BusNo", 2) == 0 && count("PCIs", "1") == 2 ? 0 : 2;
  });
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(count("PCIs", "1"), 2);
  EXPECT_EQ(insert("PCIs", "BusNo", 3), 0);
}

TEST_F(ProcessesTest, AChildForkedInATransactionLeavesItToTheParent) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  given("PCIs", {{"BusNo", 1}});
  ChildProcess child([&] {
    if (count("PCIs", "1") != 0) return 1;
    return zym_db_commit(get_dmdb_handle()) == ZYM_DB_STATUS_ERROR ? 0 : 2;
  });
  EXPECT_EQ(child.wait(), 0);
  given("PCIs", {{"BusNo", 2}});
  ASSERT_EQ(zym_db_commit(handle()), 0);
  EXPECT_EQ(count("PCIs", "1"), 2);
  EXPECT_EQ(integrity(), "ok");
}

// The child must hold locks of its own: otherwise the parent, closing, believes to be the last and takes the
// log away under the child.
TEST_F(ProcessesTest, WhatAChildWritesSurvivesThatItsParentCloses) {
  given("PCIs", {{"BusNo", 1}});
  int ready[2];
  int go[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(go), 0);
  ChildProcess child([&] {
    char byte = 0;
    if (count("PCIs", "1") != 1 || write(ready[1], &byte, 1) != 1 || read(go[0], &byte, 1) != 1) return 1;
    return insert("PCIs", "BusNo", 2);
  });
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  ASSERT_EQ(zym_db_close(handle()), 0);
  ASSERT_EQ(write(go[1], &byte, 1), 1);
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(count("PCIs", "1"), 2);
  for (const int descriptor : {ready[0], ready[1], go[0], go[1]}) close(descriptor);
}

// AddressSanitizer's allocator, unlike the C library's, does not survive a fork in the midst of another
// thread's allocation: with it, threads stand still between two operations while the process forks.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kForksBetweenOperations = true;
#else
constexpr bool kForksBetweenOperations = false;
#endif

TEST_F(ProcessesTest, ForkingUnderLoadHurtsNobody) {
  constexpr int kThreads = 3;
  std::atomic<bool> done{false};
  std::atomic<bool> is_forking{false};
  std::atomic<int> standing{0};
  std::atomic<int> errors{0};
  std::vector<std::thread> load;
  for (int i = 0; i < kThreads; ++i) {
    load.emplace_back([&, i] {
      while (!done) {
        errors += insert_many(i, 2) != 0;
        if (!is_forking) continue;
        ++standing;
        while (is_forking) std::this_thread::yield();
        --standing;
      }
    });
  }
  for (int round = 0; round < 10; ++round) {
    is_forking = kForksBetweenOperations;
    while (is_forking && standing < kThreads) std::this_thread::yield();
    ChildProcess child([] { return insert_many(9, 2); });
    is_forking = false;
    while (standing > 0) std::this_thread::yield();
    EXPECT_EQ(child.wait(), 0);
  }
  done = true;
  for (std::thread& thread : load) thread.join();
  EXPECT_EQ(errors, 0);
  EXPECT_EQ(count("PCIs", "BusNo>=9000"), 20);
  EXPECT_EQ(integrity(), "ok");
}

// Rows are numbered as they are written, and each number is told only after its write returned.
TEST_F(ProcessesTest, AWriteThatReturnedSurvivesAKill) {
  int64_t told = 0;
  for (int round = 0; round < 15; ++round) {
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    {
      ChildProcess writer([&] {
        for (;;) {
          const char byte = 1;
          if (insert("PCIs", "BusNo", 1) != 0 || write(pipes[1], &byte, 1) != 1) return 1;
        }
      });
      char byte = 0;
      told += read(pipes[0], &byte, 1);
      std::this_thread::sleep_for(std::chrono::milliseconds(round * 7));
      writer.kill(SIGKILL);
      EXPECT_EQ(writer.wait(), -1);
    }
    close(pipes[1]);
    char bytes[4096];
    for (ssize_t length = 0; (length = read(pipes[0], bytes, sizeof bytes)) > 0;) told += length;
    close(pipes[0]);
    const int64_t stored = count("PCIs", "1");
    EXPECT_GE(stored, told);
    // At most the one write of the round that was not told any more.
    EXPECT_LE(stored, told + round + 1);
  }
  EXPECT_GE(told, 15);
  EXPECT_EQ(integrity(), "ok");
}

}  // namespace
