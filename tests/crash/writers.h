// Writers whose writes are numbered, so that a later reader can tell which of them are there.
#ifndef ZYMDB_TESTS_CRASH_WRITERS_H
#define ZYMDB_TESTS_CRASH_WRITERS_H

#include <cstdint>
#include <span>

struct Writer {
  const char* name;

  // Whether it can begin with an empty database.
  bool needs_nothing;

  // The rows that it changes; for those that need some.
  void (*prepare)();

  // Its n-th write, counted from 1, through an operation. Answers that one's status.
  int (*write)(uint32_t number);

  // The number of the last write that is there. Expects that all before it are there too, and each whole.
  uint32_t (*last)();
};

// One in each area of the inventory.
std::span<const Writer> writers();

// What a reader sees at any moment: lists can be read, and transactions are there whole or not at all.
// Answers the first status that is not 0, or -1 for half a transaction.
int read_everything();

#endif
