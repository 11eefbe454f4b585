#include "comparison.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <stdexcept>

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::duration<double, std::nano>;
using namespace std::chrono_literals;

constexpr auto kLeastTime = 5ms;

class Wrong : public std::runtime_error {
  using runtime_error::runtime_error;
};

// Runs one side for as long as it takes to trust the clock.
class Timing {
 public:
  Timing(const Side& side, const std::function<void()>& restore, int& turn)
      : side_(side), restore_(restore), turn_(turn) {}

  Nanoseconds of_a_call() {
    run(1);  // fills the caches
    for (int calls = 1;; calls *= 4) {
      const Nanoseconds time = run(calls);
      if (time >= kLeastTime) return time / calls;
    }
  }

 private:
  Nanoseconds run(int calls) {
    Nanoseconds time{};
    const int together = restore_ ? 1 : calls;
    for (int done = 0; done < calls; done += together) {
      const auto start = Clock::now();
      for (int call = 0; call < together; ++call)
        if (!side_.run(turn_++)) throw Wrong("wrong result");
      time += Clock::now() - start;
      if (restore_) restore_();
    }
    return time;
  }

  const Side& side_;
  const std::function<void()>& restore_;
  int& turn_;
};

void measure(benchmark::State& state, const std::vector<Side>& sides, const std::function<void()>& restore,
             int& turn) {
  for (const Side& side : sides) state.counters[side.name] = Timing(side, restore, turn).of_a_call().count();
}

void compare(benchmark::State& state, const Comparison& comparison, int& turn) {
  Inventory& opened = inventory(comparison.rows);
  const Connection kept = open_raw(opened.path());
  const Connection per_call = open_raw(opened.path());
  Statements statements(kept.get(), comparison.sql);
  if (comparison.is_writing) opened.mark();
  measure(state, {{kLibrary, comparison.library}}, comparison.restore, turn);
  if (comparison.is_writing && opened.is_written_since_mark() != *comparison.is_writing)
    throw Wrong("wrong bytes written");
  measure(state,
          {{kLimit, [&](int now) { return comparison.raw(statements, now); }},
           {kPerCall,
            [&](int now) {
              Statements prepared(per_call.get(), comparison.sql);
              return comparison.raw(prepared, now);
            }}},
          comparison.restore, turn);
}

template <class Measure>
void add_measured(const std::string& name, Measure measure_all) {
  const auto turn = std::make_shared<int>(0);
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    for (auto _ : state) {
      try {
        measure_all(state, *turn);
      } catch (const Wrong& wrong) {
        state.SkipWithError(wrong.what());
      }
    }
  })->Iterations(1);
}

std::string name_of(const std::string& name, int size) {
  return name + "/" + std::to_string(size);
}

}  // namespace

void add(const std::string& name, int size, std::vector<Side> sides) {
  add_measured(name_of(name, size), [sides = std::move(sides)](benchmark::State& state, int& turn) {
    measure(state, sides, {}, turn);
  });
}

void add(const Comparison& comparison) {
  add_measured(name_of(comparison.name, comparison.rows),
               [=](benchmark::State& state, int& turn) { compare(state, comparison, turn); });
}

}  // namespace bench
