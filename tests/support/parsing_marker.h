// The marker file of the configuration parser.
#ifndef ZYMDB_TESTS_SUPPORT_PARSING_MARKER_H
#define ZYMDB_TESTS_SUPPORT_PARSING_MARKER_H

#include <filesystem>
#include <fstream>

#include "support/turn.h"

class ParsingMarker {
 public:
  ParsingMarker() { remove(); }
  ~ParsingMarker() { remove(); }
  ParsingMarker(const ParsingMarker&) = delete;
  ParsingMarker& operator=(const ParsingMarker&) = delete;

  static void set() { EXPECT_TRUE(std::ofstream(kPath).good()); }
  static void remove() { std::filesystem::remove(kPath); }
  static bool is_set() { return std::filesystem::exists(kPath); }

  static constexpr char kPath[] = "/tmp/dp.ucmparsing";

 private:
  Turn turn_{"/tmp/zymdb-test-marker.lock"};
};

#endif
