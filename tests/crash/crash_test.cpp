// Processes that write and read are killed at random moments; what they were told was written is there.
#include <chrono>
#include <memory>
#include <random>
#include <thread>

#include "crash/crash_fixture.h"

namespace {

using namespace std::chrono_literals;

constexpr int kRounds = 50 / kSample;

// Which moment kills whom is the seed's business: a failure can be had again, as far as the scheduler lets
// it.
class CrashTest : public CrashFixture, public testing::WithParamInterface<uint32_t> {
 protected:
  using Group = std::vector<std::unique_ptr<ChildProcess>>;

  CrashTest() : random_(GetParam()) {}

  unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

  // Until a moment that has as much to do with the processes' progress as with the clock.
  void wait_a_while(Pipe& pipe, unsigned most_messages, std::chrono::microseconds most) {
    pipe.listen(below(most_messages + 1));
    std::this_thread::sleep_for(std::chrono::microseconds(below(static_cast<unsigned>(most.count()))));
  }

  // A process per writer, and a reader. They inherit no open database.
  Group start(Pipe& pipe) const {
    Group group;
    for (uint32_t i = 0; i < writers().size(); ++i) {
      if (!takes_part(writers()[i])) continue;
      group.push_back(std::make_unique<ChildProcess>([&, i] { return write_on(i, pipe); }));
    }
    group.push_back(std::make_unique<ChildProcess>([&] {
      for (;;) {
        const int status = read_everything();
        if (status != 0) return pipe.tell({kReader, 0, status}) ? 1 : 2;
      }
    }));
    return group;
  }

  void kill_in_rounds() {
    for (int round = 0; round < kRounds && !HasFailure(); ++round) {
      SCOPED_TRACE("round " + std::to_string(round));
      Pipe pipe;
      Group group = start(pipe);
      wait_a_while(pipe, 100, 5ms);
      // Every other time one dies first, and the others go on as if nothing had been.
      if (round % 2 == 1) {
        group[below(static_cast<unsigned>(group.size()))]->kill(SIGKILL);
        wait_a_while(pipe, 40, 2ms);
      }
      kill_all(group);
      check(pipe);
      check_history();
    }
    EXPECT_GT(told_, 40U * kRounds);
  }

  static void kill_all(Group& group) {
    for (const auto& process : group) process->kill(SIGKILL);
    for (const auto& process : group) EXPECT_EQ(process->wait(), -1);
  }

 private:
  std::mt19937 random_;
};

constexpr uint32_t kSeeds[] = {1, 2, 3, 5, 8, 13, 21, 34};
constexpr uint32_t kFewSeeds[] = {55, 89};

std::string seed_name(const testing::TestParamInfo<uint32_t>& info) {
  return "seed_" + std::to_string(info.param);
}

INSTANTIATE_TEST_SUITE_P(Rounds, CrashTest, testing::ValuesIn(kSeeds), seed_name);

TEST_P(CrashTest, KeepsEveryWriteThatReturned) {
  prepare();
  kill_in_rounds();
}

using UnflushedCrashTest = CrashTest;

INSTANTIATE_TEST_SUITE_P(Rounds, UnflushedCrashTest, testing::ValuesIn(kFewSeeds), seed_name);

TEST_P(UnflushedCrashTest, KeepsEveryWriteThatReturned) {
  close_database();
  setenv("ZYMDB_INVENTORY", ("sqlite:" + path_.string() + "?synchronous=normal").c_str(), 1);
  prepare();
  kill_in_rounds();
}

using FirstOpeningCrashTest = CrashTest;

INSTANTIATE_TEST_SUITE_P(Rounds, FirstOpeningCrashTest, testing::ValuesIn(kFewSeeds), seed_name);

TEST_P(FirstOpeningCrashTest, LeavesADatabaseThatOpens) {
  close_database();
  for (int round = 0; round < kRounds && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    begin_anew(round);
    Pipe pipe;
    Group group = start(pipe);
    wait_a_while(pipe, round % 2 == 0 ? 0 : 6, 15ms);
    kill_all(group);
    check(pipe);
    check_history();
  }
  EXPECT_GT(told_, kRounds / 2U);
}

}  // namespace
