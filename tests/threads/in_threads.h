// Threads that begin together.
#ifndef ZYMDB_TESTS_THREADS_IN_THREADS_H
#define ZYMDB_TESTS_THREADS_IN_THREADS_H

#include <latch>
#include <thread>
#include <vector>

constexpr int kThreads = 8;

// Runs body(0) to body(kThreads - 1) at once and waits for all of them.
template <class Body>
void in_threads(Body body) {
  std::latch begin(kThreads);
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      begin.arrive_and_wait();
      body(thread);
    });
}

#endif
