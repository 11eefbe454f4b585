// Reads that are repeated: which of them run a statement, and that each answers what is true by then.
#include <dlfcn.h>
#include <fcntl.h>
#include <sqlite3.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/child_process.h"
#include "platform/client_fixture.h"
#include "support/sql.h"

namespace fs = std::filesystem;

namespace {

std::atomic<int> steps{0};

}  // namespace

// The client's calls come here first.
extern "C" __attribute__((visibility("default"))) int sqlite3_step(sqlite3_stmt* statement) {
  static const auto next = reinterpret_cast<int (*)(sqlite3_stmt*)>(dlsym(RTLD_NEXT, "sqlite3_step"));
  ++steps;
  return next(statement);
}

namespace {

class RepeatedReadTest : public ClientTest {
 protected:
  void SetUp() override {
    ClientTest::SetUp();
    given("PCIs", {{"FunKey", 7}, {"BusNo", 1}});
  }

  std::string file() const { return folder() / "inventory.db"; }

  std::string bus() { return first(query("PCIs", {"BusNo"}, "FunKey=7")); }

  // The statements' steps that the body takes.
  template <class Body>
  static int steps_of(Body body) {
    const int before = steps;
    body();
    return steps - before;
  }
  int steps_of_read() {
    return steps_of([&] { bus(); });
  }
  void read_often() {
    for (int time = 0; time < 3; ++time) bus();
  }

  // As collectors do: the filter compares, so that nothing new matches nothing.
  int report_bus(int value) { return set_bus(value, "FunKey=7 AND BusNo!=" + std::to_string(value)); }
  void report_often(int value) {
    for (int time = 0; time < 3; ++time) ASSERT_EQ(report_bus(value), 0);
  }

  int set_bus(int value, const std::string& filter = "FunKey=7") {
    const Set values(zym_db_get_content_values(handle()));
    zym_db_content_put_int(values.get(), "BusNo", value);
    return zym_db_update(handle(), "PCIs", values.get(), filter.c_str(), nullptr, 0, nullptr);
  }

  static void wait_until_looked_at() { std::this_thread::sleep_for(std::chrono::milliseconds(300)); }
};

TEST_F(RepeatedReadTest, RunsItsStatementTwiceAndThenNoMore) {
  EXPECT_GT(steps_of_read(), 0);
  EXPECT_GT(steps_of_read(), 0);
  EXPECT_EQ(steps_of_read(), 0);
  EXPECT_EQ(bus(), "1");
  EXPECT_GT(steps_of([&] { query("PCIs", {"BusNo"}, "FunKey=8"); }), 0);
}

TEST_F(RepeatedReadTest, HandsOutRowsThatOthersCannotChange) {
  read_often();
  const Rows kept = query("PCIs", {"FunKey", "BusNo"}, "FunKey=7");
  for (int time = 0; time < 3; ++time) {
    const Rows rows = query("PCIs", {"FunKey", "BusNo"}, "FunKey=7");
    EXPECT_EQ(first(rows), "7");
    unsigned bus = 0;
    EXPECT_EQ(extract_uint_column_from_result(rows.get(), "BusNo", &bus), 0);
    EXPECT_EQ(bus, 1U);
  }
  ASSERT_EQ(set_bus(2), 0);
  EXPECT_EQ(first(kept), "7");
}

TEST_F(RepeatedReadTest, SeesTheChangesOfItsOwnThread) {
  read_often();
  ASSERT_EQ(set_bus(2), 0);
  EXPECT_EQ(bus(), "2");
}

TEST_F(RepeatedReadTest, GoesOnAfterAReportOfNothingNew) {
  read_often();
  ASSERT_EQ(set_bus(1), 0);
  EXPECT_EQ(steps_of_read(), 0);
}

TEST_F(RepeatedReadTest, OfAReportOfNothingNewRunsNoStatementEither) {
  report_often(1);
  EXPECT_EQ(steps_of([&] { report_bus(1); }), 0);
  EXPECT_GT(steps_of([&] { report_bus(2); }), 0);
  EXPECT_EQ(bus(), "2");
}

TEST_F(RepeatedReadTest, OfAReportOfNothingNewSeesThatItIsNewByNow) {
  report_often(1);
  std::thread([&] { ASSERT_EQ(set_bus(2), 0); }).join();
  ASSERT_EQ(report_bus(1), 0);
  EXPECT_EQ(bus(), "1");
  report_often(1);
  run_sql_on(file(), "UPDATE PCIs SET BusNo=3");
  ASSERT_EQ(report_bus(1), 0);
  EXPECT_EQ(bus(), "1");
}

TEST_F(RepeatedReadTest, SeesTheChangesOfAnotherThread) {
  for (int value = 2; value < 20; ++value) {
    read_often();
    std::thread([&] { ASSERT_EQ(set_bus(value), 0); }).join();
    EXPECT_EQ(bus(), std::to_string(value));
  }
}

TEST_F(RepeatedReadTest, SeesTheChangesOfAnotherProcess) {
  for (int value = 2; value < 20; ++value) {
    read_often();
    EXPECT_EQ(ChildProcess([&] { return set_bus(value); }).wait(), 0);
    EXPECT_EQ(bus(), std::to_string(value));
  }
}

TEST_F(RepeatedReadTest, SeesTheChangesOfAnotherProgram) {
  read_often();
  run_sql_on(file(), "UPDATE PCIs SET BusNo=3");
  EXPECT_EQ(bus(), "3");
  read_often();
  run_sql_on(file(), "ALTER TABLE PCIs ADD COLUMN Fresh INTEGER DEFAULT 5; UPDATE PCIs SET BusNo=4");
  EXPECT_EQ(bus(), "4");
}

TEST_F(RepeatedReadTest, SeesWhatFollowsACheckpoint) {
  for (const char* mode : {"PASSIVE", "FULL", "RESTART", "TRUNCATE"}) {
    read_often();
    run_sql_on(file(), std::string("PRAGMA wal_checkpoint(") + mode + ")");
    EXPECT_EQ(bus(), "1") << mode;
    run_sql_on(file(), "UPDATE PCIs SET BusNo=9");
    EXPECT_EQ(bus(), "9") << mode;
    ASSERT_EQ(set_bus(1), 0);
    EXPECT_EQ(bus(), "1") << mode;
  }
}

TEST_F(RepeatedReadTest, RunsItsStatementInATransaction) {
  read_often();
  ASSERT_EQ(zym_db_begin(handle()), 0);
  EXPECT_GT(steps_of_read(), 0);
  ASSERT_EQ(set_bus(2), 0);
  for (int time = 0; time < 3; ++time) EXPECT_EQ(bus(), "2");
  ASSERT_EQ(zym_db_rollback(handle()), 0);
  for (int time = 0; time < 3; ++time) EXPECT_EQ(bus(), "1");
}

TEST_F(RepeatedReadTest, OfAnInventoryThatWasReplacedIsOfTheNewOne) {
  const std::string other = folder() / "other.db";
  ASSERT_EQ(zym_db_snapshot(handle(), other.c_str(), nullptr), 0);
  run_sql_on(other, "UPDATE PCIs SET BusNo=5");
  read_often();
  fs::rename(other, file());
  wait_until_looked_at();
  EXPECT_EQ(bus(), "5");
}

TEST_F(RepeatedReadTest, RunsItsStatementOnceTheFileWasCutShort) {
  run_sql_on(file(), "PRAGMA wal_checkpoint(TRUNCATE)");
  read_often();
  fs::resize_file(file(), 1024);
  wait_until_looked_at();
  EXPECT_GT(steps_of_read(), 0);
}

TEST_F(RepeatedReadTest, InAChildProcessIsTheChilds) {
  read_often();
  ChildProcess child([&] {
    if (steps_of_read() == 0 || bus() != "1") return 1;
    return set_bus(2) == 0 && bus() == "2" ? 0 : 2;
  });
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(bus(), "2");
}

TEST_F(RepeatedReadTest, RunsItsStatementWhereNothingIsToBeKept) {
  zym_db_close(handle());
  setenv("ZYMDB_KEPT_KIB", "0", 1);
  for (int time = 0; time < 5; ++time) EXPECT_GT(steps_of_read(), 0);
  unsetenv("ZYMDB_KEPT_KIB");
}

// Every number that a writer wrote is told over a pipe once its commit has ended: no read that begins later
// may answer an older one.
TEST_F(RepeatedReadTest, IsNeverOlderThanACommitThatEndedBeforeItBegan) {
  constexpr int kWriters = 8;
  constexpr int kCommits = 40;
  std::array<int, 2> ended{};
  ASSERT_EQ(pipe2(ended.data(), O_CLOEXEC), 0);
  std::vector<std::unique_ptr<ChildProcess>> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    given("PCIs", {{"FunKey", 100 + writer}, {"BusNo", 0}});
  }
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.push_back(std::make_unique<ChildProcess>([&, writer] {
      const std::string where = "FunKey=" + std::to_string(100 + writer);
      for (int commit = 1; commit <= kCommits; ++commit) {
        const Set values(zym_db_get_content_values(handle()));
        zym_db_content_put_int(values.get(), "BusNo", commit);
        if (zym_db_update(handle(), "PCIs", values.get(), where.c_str(), nullptr, 0, nullptr) != 0) return 1;
        const std::array<int, 2> line{writer, commit};
        if (write(ended[1], line.data(), sizeof line) != sizeof line) return 2;
      }
      return 0;
    }));
  }
  close(ended[1]);
  fcntl(ended[0], F_SETFL, O_NONBLOCK);
  std::array<int, kWriters> least{};
  int told = 0;
  int unrun = 0;
  for (bool is_open = true; is_open;) {
    std::array<int, 2> line{};
    ssize_t size = 0;
    while ((size = read(ended[0], line.data(), sizeof line)) == sizeof line) {
      least[static_cast<size_t>(line[0])] = line[1];
      ++told;
    }
    is_open = size != 0;
    for (int writer = 0; writer < kWriters; ++writer) {
      const std::string where = "FunKey=" + std::to_string(100 + writer);
      for (int time = 0; time < 4; ++time) {
        int value = -1;
        unrun += steps_of([&] { value = std::stoi(first(query("PCIs", {"BusNo"}, where.c_str()))); }) == 0;
        int& known = least[static_cast<size_t>(writer)];
        ASSERT_GE(value, known) << "writer " << writer;
        known = value;
      }
    }
  }
  close(ended[0]);
  for (const auto& writer : writers) EXPECT_EQ(writer->wait(), 0);
  EXPECT_EQ(told, kWriters * kCommits);
  EXPECT_GT(unrun, 0);
}

}  // namespace
