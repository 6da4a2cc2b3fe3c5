/// Rows of a benchmark: a name, an input and the operation that is timed on it.
///
///     addRow("allTrim_43B/zn_udf", text, [](const std::string& t) { return zn_lib::allTrim(t); });
///
/// Names are "what/who", so that a row stands beside its peers. A who that begins with "limit:" is
/// no peer: it is the part of the work that nobody can leave out, and may do less than the work.
/// The operation's result goes out of scope within the timed loop: freeing it belongs to its cost.
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
benchmark::internal::Benchmark* addRow(const std::string& name, const Input& input,
                                       Operation operation) {
  return benchmark::RegisterBenchmark(name.c_str(), [input, operation](benchmark::State& state) {
    timeOperation(state, input, operation);
  });
}

/// A row that is measured by the clock on the wall: the work is the kernel's or another process's.
template <class Input, class Operation>
void addClockRow(const std::string& name, const Input& input, Operation operation) {
  addRow(name, input, operation)->UseRealTime()->Unit(benchmark::kMillisecond);
}

/// A row for an operation that reads all of `text`: its speed is printed too.
template <class Operation>
void addScan(const std::string& name, const std::string& text, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [text, operation](benchmark::State& state) {
    timeOperation(state, text, operation);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  });
}

/// Rows of the library, or of `who`, one for each size that doubles from `first` to `last`, with
/// the order in which their times grow. `makeInput` gives the input of a size, when its row is run.
template <class MakeInput, class Operation>
void addGrowth(const std::string& what, int first, int last, MakeInput makeInput,
               Operation operation, const std::string& who = "zn_udf") {
  const auto run = [makeInput, operation](benchmark::State& state) {
    timeOperation(state, makeInput(static_cast<std::size_t>(state.range(0))), operation);
    state.SetComplexityN(state.range(0));
  };
  benchmark::RegisterBenchmark(("growth_" + what + "/" + who).c_str(), run)
      ->RangeMultiplier(2)
      ->Range(first, last)
      ->UseRealTime()
      ->Complexity();
}

/// The sizes of growing texts in bytes.
constexpr int kSmallText = 16;
constexpr int kLargeText = 16 << 20;

/// Runs the rows that the command line selects. Returns the program's exit status.
inline int runRows(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

/// `size` characters drawn from `alphabet`, the same ones in every run. A character that stands in
/// the alphabet twice comes twice as often. Their order is random because a branch predictor learns
/// a text that repeats itself.
inline std::string randomText(std::string_view alphabet, std::size_t size) {
  std::mt19937 random;
  std::string text(size, '\0');
  for (char& c : text) c = alphabet[random() % alphabet.size()];
  return text;
}

inline std::string mebibyteOf(std::string_view alphabet) {
  return randomText(alphabet, std::size_t{1} << 20);
}

}  // namespace bench

#endif  // BENCH_ROWS_H
