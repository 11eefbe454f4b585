#include "client/engine/writer_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace zymdb::client {
namespace {

using std::chrono::milliseconds;

TEST(WriterQueueTest, OneWriterIsInsideAtATime) {
  WriterQueue queue;
  std::atomic<int> inside{0};
  std::atomic<int> collisions{0};
  std::vector<std::thread> writers;
  for (int i = 0; i < 8; ++i) {
    writers.emplace_back([&] {
      for (int round = 0; round < 200; ++round) {
        const WriterTurn turn(queue, milliseconds(10000));
        if (!turn || ++inside != 1) ++collisions;
        --inside;
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(collisions, 0);
}

TEST(WriterQueueTest, AWriterThatStaysIsNotWaitedForForever) {
  WriterQueue queue;
  const WriterTurn staying(queue, milliseconds(1));
  EXPECT_FALSE(WriterTurn(queue, milliseconds(20)));
}

TEST(WriterQueueTest, AQueueThatMovesIsWaitedForHoweverLong) {
  WriterQueue queue;
  std::atomic<bool> stop{false};
  std::thread busy([&] {
    while (!stop) {
      const WriterTurn turn(queue, milliseconds(1000));
      std::this_thread::sleep_for(milliseconds(5));
    }
  });
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(WriterTurn(queue, milliseconds(300)));
  stop = true;
  busy.join();
}

TEST(WriterQueueTest, AForkedProcessStartsWithAnEmptyQueue) {
  WriterQueue queue;
  ASSERT_TRUE(queue.enter(milliseconds(1)));
  queue.reset_after_fork();
  EXPECT_TRUE(queue.enter(milliseconds(1)));
}

}  // namespace
}  // namespace zymdb::client
