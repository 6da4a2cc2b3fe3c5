/// Rows of a benchmark: a name, an input and the operation that is timed on it.
///
///     addRow("allTrim_43B/zn_udf", text, [](const std::string& t) { return zn_lib::allTrim(t); });
///
/// Names are "what/who", so that a row stands beside its peers. The operation's result goes out of
/// scope within the timed loop: freeing it belongs to its cost.
#ifndef BENCH_ROWS_H
#define BENCH_ROWS_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace bench {

template <class Input, class Operation>
void timeOperation(benchmark::State& state, Input input, Operation operation) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(input);
    auto result = operation(input);
    benchmark::DoNotOptimize(result);
  }
}

template <class Input, class Operation>
void addRow(const std::string& name, const Input& input, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [input, operation](benchmark::State& state) {
    timeOperation(state, input, operation);
  });
}

/// A row for an operation that reads all of `text`: its speed is printed too.
template <class Operation>
void addScan(const std::string& name, const std::string& text, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [text, operation](benchmark::State& state) {
    timeOperation(state, text, operation);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  });
}

/// Runs the rows that the command line selects. Returns the program's exit status.
inline int runRows(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

/// 1 MiB of characters drawn from `alphabet`, the same ones in every run. A character that stands
/// in the alphabet twice comes twice as often. Their order is random because a branch predictor
/// learns a text that repeats itself.
inline std::string mebibyteOf(std::string_view alphabet) {
  std::mt19937 random;
  std::string text(std::size_t{1} << 20, '\0');
  for (char& c : text) c = alphabet[random() % alphabet.size()];
  return text;
}

}  // namespace bench

#endif  // BENCH_ROWS_H
