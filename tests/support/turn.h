// Tests that depend on a file of which the machine has but one take turns, whichever programs they are in.
#ifndef ZYMDB_TESTS_SUPPORT_TURN_H
#define ZYMDB_TESTS_SUPPORT_TURN_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

class Turn {
 public:
  explicit Turn(const char* lock_file) : lock_(open(lock_file, O_CREAT | O_RDWR | O_CLOEXEC, 0666)) {
    EXPECT_EQ(flock(lock_, LOCK_EX), 0);
  }
  ~Turn() { close(lock_); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  int lock_;
};

#endif
