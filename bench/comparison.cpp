#include "comparison.h"

#include <benchmark/benchmark.h>

namespace bench {
namespace {

template <class Call>
void repeat(benchmark::State& state, const Comparison& comparison, Call call) {
  int turn = 0;
  for (auto _ : state) {
    if (!call(turn++)) {
      state.SkipWithError("wrong result");
      return;
    }
    if (comparison.restore) {
      state.PauseTiming();
      comparison.restore();
      state.ResumeTiming();
    }
  }
}

void library(benchmark::State& state, const Comparison& comparison) {
  Inventory& opened = inventory(comparison.rows);
  if (comparison.is_writing) opened.mark();
  repeat(state, comparison, [&](int turn) { return comparison.library(turn); });
  if (comparison.is_writing && opened.is_written_since_mark() != *comparison.is_writing)
    state.SkipWithError("wrong bytes written");
}

void kept_statements(benchmark::State& state, const Comparison& comparison) {
  const Connection connection = open_raw(inventory(comparison.rows).path());
  Statements statements(connection.get(), comparison.sql);
  repeat(state, comparison, [&](int turn) { return comparison.raw(statements, turn); });
}

void prepared_per_call(benchmark::State& state, const Comparison& comparison) {
  const Connection connection = open_raw(inventory(comparison.rows).path());
  repeat(state, comparison, [&](int turn) {
    Statements statements(connection.get(), comparison.sql);
    return comparison.raw(statements, turn);
  });
}

}  // namespace

void add(const Comparison& comparison) {
  const std::string name = comparison.name + "/" + std::to_string(comparison.rows) + "/";
  benchmark::RegisterBenchmark((name + "library").c_str(), library, comparison);
  benchmark::RegisterBenchmark((name + "kept").c_str(), kept_statements, comparison);
  benchmark::RegisterBenchmark((name + "per call").c_str(), prepared_per_call, comparison);
}

}  // namespace bench
