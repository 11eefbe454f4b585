// The system calls of the code under test, as a test wants them: linked into a test program, these take the
// place of the C library's. What a test does not ask for is done by the system.
#ifndef ZYMDB_TESTS_FIRMWARE_SYSTEM_CALLS_H
#define ZYMDB_TESTS_FIRMWARE_SYSTEM_CALLS_H

#include <sys/time.h>

#include <optional>
#include <vector>

struct SystemCalls {
  // select: the seconds that each wait was given; how many seconds the next waits leave when they are
  // interrupted; whether the time then passes without an event, or the wait fails.
  std::vector<time_t> waits;
  std::vector<time_t> interrupted_waits;
  bool time_passes = false;
  std::optional<int> wait_error;

  // setsockopt: the receive timeouts that were asked for, in seconds. All are but one: short to wait for, and
  // long enough for a service on a busy machine.
  std::vector<time_t> receive_timeouts;

  // connect: does not return before the other side has hung up.
  bool connects_to_quitter = false;

  // read and write: how many are interrupted, and how many seconds pass on the clock with each.
  int interrupted_reads = 0;
  int interrupted_writes = 0;
  time_t seconds_per_interruption = 0;

  // The seconds that have passed so.
  time_t seconds_passed = 0;

  // write: the bytes that one takes at most.
  std::optional<size_t> write_takes;
};

// Those of the running test.
SystemCalls& system_calls();

#endif
