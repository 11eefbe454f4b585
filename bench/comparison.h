// Benchmarks of one thing done in several ways. Each repetition runs all of them, one after the other and for
// some milliseconds each, so that a slower or faster spell of the machine falls on all alike: their ratio is
// taken within the repetition.
#ifndef ZYMDB_BENCH_COMPARISON_H
#define ZYMDB_BENCH_COMPARISON_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "inventory.h"
#include "raw_sqlite.h"

namespace bench {

// One way. It answers whether it came out right: a read that found nothing would be fast, and worthless.
// `turn` counts the calls of all sides, for whoever does not want to touch the same row, or write the same
// value, each time.
struct Side {
  const char* name;
  std::function<bool(int turn)> run;
};

inline constexpr char kLibrary[] = "library";
inline constexpr char kLimit[] = "limit";
inline constexpr char kPerCall[] = "per call";
inline constexpr char kBus[] = "bus";

// Registers "name/size", which reports the nanoseconds of a call of each side.
void add(const std::string& name, int size, std::vector<Side> sides);

// The library beside the database engine's own interface, with its statements kept open and prepared for each
// call.
struct Comparison {
  std::string name;
  int rows;  // of the inventory
  std::vector<const char*> sql;
  std::function<bool(int turn)> library;
  std::function<bool(Statements& statements, int turn)> raw;
  // Whether the library's calls write a byte, where that matters.
  std::optional<bool> is_writing = {};
  // Puts the inventory back after a call, outside of the measured time.
  std::function<void()> restore = {};
};

void add(const Comparison& comparison);

// A row for each turn, far from the one before.
constexpr int row_of(int turn, int rows) {
  return static_cast<int>(static_cast<unsigned>(turn) * 37u % static_cast<unsigned>(rows));
}

}  // namespace bench

#endif
