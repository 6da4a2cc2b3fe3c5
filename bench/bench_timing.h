/// Rows that are timed by Google Benchmark. bench_rows.h includes this file.
#ifndef BENCH_TIMING_H
#define BENCH_TIMING_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

template <class Input, class Operation>
void timeOperation(benchmark::State& state, Input input, Operation operation) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(input);
    auto result = operation(input);
    benchmark::DoNotOptimize(result);
  }
}

/// Adds a row that is measured in processor time.
template <class Input, class Operation>
benchmark::internal::Benchmark* addRow(const std::string& name, const Input& input,
                                       Operation operation) {
  return benchmark::RegisterBenchmark(name.c_str(), [input, operation](benchmark::State& state) {
    timeOperation(state, input, operation);
  });
}

/// Adds a row that is measured in elapsed time, because the kernel or another process does the
/// work.
template <class Input, class Operation>
void addClockRow(const std::string& name, const Input& input, Operation operation) {
  addRow(name, input, operation)->UseRealTime()->Unit(benchmark::kMillisecond);
}

/// Adds a row that is measured in elapsed time, and whose input is made when it runs. With `calls`,
/// a repetition makes exactly that many calls.
template <class MakeInput, class Operation>
void addLateClockRow(const std::string& name, MakeInput makeInput, Operation operation,
                     int calls = 0) {
  const auto run = [makeInput, operation](benchmark::State& state) {
    timeOperation(state, makeInput(), operation);
  };
  auto* const row = benchmark::RegisterBenchmark(name.c_str(), run);
  row->UseRealTime()->Unit(benchmark::kMillisecond);
  if (calls > 0) row->Iterations(calls);
}

/// Adds a row that is measured in elapsed time, although the kernel's part is small or the same for
/// all. bench/instructions counts it, too.
template <class Input, class Operation>
void addCountedClockRow(const std::string& name, const Input& input, Operation operation) {
  addClockRow(name, input, operation);
}

/// Adds a row for an operation that reads all of `text`. Its speed is printed, too.
template <class Operation>
void addScan(const std::string& name, const std::string& text, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [text, operation](benchmark::State& state) {
    timeOperation(state, text, operation);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  });
}

/// Adds rows of an implementation for sizes that double from `first` to `last`, and fits how their
/// time grows. `makeInput` returns the input of a size when its row runs.
template <class MakeInput, class Operation>
void addGrowth(const std::string& work, int first, int last, MakeInput makeInput,
               Operation operation, const std::string& implementation = "zn_udf") {
  const auto run = [makeInput, operation](benchmark::State& state) {
    timeOperation(state, makeInput(static_cast<std::size_t>(state.range(0))), operation);
    state.SetComplexityN(state.range(0));
  };
  benchmark::RegisterBenchmark(("growth_" + work + "/" + implementation).c_str(), run)
      ->RangeMultiplier(2)
      ->Range(first, last)
      ->UseRealTime()
      ->Complexity();
}

/// Runs the rows that the command line selects. Returns the exit status of the program.
inline int runRows(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace bench

#endif  // BENCH_TIMING_H
