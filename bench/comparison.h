// A benchmark of the library beside the database engine's own interface, with its statements kept open and
// prepared for each call.
#ifndef ZYMDB_BENCH_COMPARISON_H
#define ZYMDB_BENCH_COMPARISON_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "inventory.h"
#include "raw_sqlite.h"

namespace bench {

// Both sides do the same with the inventory and answer whether it came out right: a read that found nothing
// would be fast, and worthless. `turn` counts the calls, for whoever does not want to touch the same row each
// time.
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

// Registers the three of them as "name/rows/who".
void add(const Comparison& comparison);

// A row for each turn, far from the one before.
constexpr int row_of(int turn, int rows) {
  return static_cast<int>(static_cast<unsigned>(turn) * 37u % static_cast<unsigned>(rows));
}

}  // namespace bench

#endif
