// A process dies at one of its system calls, at each of them in turn: no moment is left out by chance.
#include "crash/crash_fixture.h"

namespace {

constexpr int kMostCalls = 2000;

class SystemCallCrashTest : public CrashFixture {
 protected:
  // In a process that dies at the n-th call that changes a file; every other time in the middle of a write.
  // False when it made fewer.
  template <class Body>
  bool dies(int call, Body body) {
    Pipe pipe;
    ChildProcess process([&] {
      die_at_system_call(call, call % 2 == 0);
      return body(pipe) == 0 && zym_db_close(get_dmdb_handle()) == 0 ? 0 : 1;
    });
    const int outcome = process.wait();
    EXPECT_TRUE(outcome == 0 || outcome == -1) << outcome;
    check(pipe);
    return outcome != 0;
  }

  static uint32_t writer(std::string_view name) {
    uint32_t i = 0;
    while (writers()[i].name != name) ++i;
    return i;
  }
};

TEST_F(SystemCallCrashTest, TheCreationOfADatabase) {
  close_database();
  int calls = 1 - kSample;
  bool died = true;
  while (died && (calls += kSample) < kMostCalls && !HasFailure()) {
    SCOPED_TRACE("call " + std::to_string(calls));
    begin_anew(calls);
    died = dies(calls, [&](const Pipe& pipe) { return write_on(writer("events"), pipe, 2); });
    if (died) std::filesystem::remove_all(path_.parent_path());
  }
  EXPECT_FALSE(died);
  EXPECT_GT(calls, 20);
}

// Transactions fill the log, until one of them copies it into the database and the next one begins it anew;
// the end of the process does so once more.
TEST_F(SystemCallCrashTest, TheCopyOfTheLogIntoTheDatabase) {
  prepare();
  const uint32_t transactions = writer("transactions");
  constexpr uint32_t kNearlyFull = 10;
  {
    Pipe pipe;
    ChildProcess process([&] {
      write_on(transactions, pipe, kNearlyFull);
      return kill(getpid(), SIGKILL);
    });
    EXPECT_EQ(process.wait(), -1);
  }
  const auto full = folder() / "full";
  std::filesystem::create_directory(full);
  for (const char* name : {"inventory.db", "inventory.db-wal"})
    std::filesystem::rename(folder() / name, full / name);
  constexpr uintmax_t kFull = 1000 * 1024;
  EXPECT_LT(std::filesystem::file_size(full / "inventory.db-wal"), kFull);
  EXPECT_GT(std::filesystem::file_size(full / "inventory.db-wal"), kFull - 200'000);

  int calls = 1 - kSample;
  bool died = true;
  while (died && (calls += kSample) < kMostCalls && !HasFailure()) {
    SCOPED_TRACE("call " + std::to_string(calls));
    begin_anew(calls);
    last_[transactions] = kNearlyFull;
    std::filesystem::copy(full, path_.parent_path());
    died = dies(calls, [&](const Pipe& pipe) { return write_on(transactions, pipe, 6); });
    if (died) std::filesystem::remove_all(path_.parent_path());
  }
  EXPECT_FALSE(died);
  EXPECT_GT(calls, 150);
}

}  // namespace
