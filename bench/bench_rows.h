/// Rows of a benchmark: a name, an input and the operation that is timed on it.
///
///     addRow("allTrim_43B/zn_udf", text, [](const std::string& t) { return zn_lib::allTrim(t); });
///
/// The name of a row is "work/implementation". The report compares rows with the same work. An
/// implementation that begins with "baseline:" does only the part of the work that none can omit.
/// Freeing the result of the operation is part of the measured time.
///
/// The same rows are timed by Google Benchmark or, with ZN_UDF_COUNT_INSTRUCTIONS, counted.
#ifndef BENCH_ROWS_H
#define BENCH_ROWS_H

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

#ifdef ZN_UDF_COUNT_INSTRUCTIONS
#include "bench_counting.h"
#else
#include "bench_timing.h"
#endif

namespace bench {

/// The sizes of growing texts in bytes.
constexpr int kSmallText = 16;
constexpr int kLargeText = 16 << 20;

/// Returns `size` random characters from `alphabet`, the same in every run. A character that occurs
/// in the alphabet twice is twice as frequent. A text with a period would train branch predictors.
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
