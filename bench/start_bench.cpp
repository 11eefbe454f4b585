// A whole process, from its start to the end that follows its first answer: the list of 256 adapters.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "inventory.h"
#include "process.h"

namespace {

constexpr int kAdapters = 256;

void run(benchmark::State& state, const char* program) {
  bench::inventory(kAdapters);
  for (auto _ : state)
    if (bench::Process({program, std::to_string(kAdapters)}).wait() != 0) state.SkipWithError("no answer");
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RegisterBenchmark("process with 256 adapters/256/library", run, ZYMDB_FIRST_ANSWER)
      ->UseRealTime();
  benchmark::RegisterBenchmark("process with 256 adapters/256/kept", run, ZYMDB_FIRST_ANSWER_RAW)
      ->UseRealTime();
  benchmark::RunSpecifiedBenchmarks();
}
