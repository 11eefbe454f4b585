// A whole process, from its start to the end that follows its first answer: the list of 256 adapters.
#include <benchmark/benchmark.h>

#include "comparison.h"
#include "process.h"

namespace {

constexpr int kAdapters = 256;

bench::Side side(const char* name, const char* program) {
  return {name, [program](int) {
            bench::inventory(kAdapters);
            return bench::Process({program, std::to_string(kAdapters)}).wait() == 0;
          }};
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  bench::add("process with 256 adapters", kAdapters,
             {side(bench::kLibrary, ZYMDB_FIRST_ANSWER), side(bench::kLimit, ZYMDB_FIRST_ANSWER_RAW)});
  benchmark::RunSpecifiedBenchmarks();
}
