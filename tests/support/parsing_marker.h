// The marker file of the configuration parser, which the whole machine has but one of: tests that depend on
// it take turns, whichever programs they are in.
#ifndef ZYMDB_TESTS_SUPPORT_PARSING_MARKER_H
#define ZYMDB_TESTS_SUPPORT_PARSING_MARKER_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

class ParsingMarker {
 public:
  ParsingMarker() : turn_(open("/tmp/zymdb-test-marker.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666)) {
    EXPECT_EQ(flock(turn_, LOCK_EX), 0);
    remove();
  }
  ~ParsingMarker() {
    remove();
    close(turn_);
  }
  ParsingMarker(const ParsingMarker&) = delete;
  ParsingMarker& operator=(const ParsingMarker&) = delete;

  static void set() { EXPECT_TRUE(std::ofstream(kPath).good()); }
  static void remove() { std::filesystem::remove(kPath); }
  static bool is_set() { return std::filesystem::exists(kPath); }

  static constexpr char kPath[] = "/tmp/dp.ucmparsing";

 private:
  int turn_;
};

#endif
