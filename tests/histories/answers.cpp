/// Prints the calls and answers of a history, one on each line, for comparison with other machines.
/// usage: history_answers [SEED [CALLS]]
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "history.h"

int main(int argc, char** argv) {
  constexpr std::uint64_t callsOfHistory = 2000;
  setenv("TZ", "UTC", 1);
  const std::uint64_t seed = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1;
  std::uint64_t calls = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 20000;
  bool hasFailed = false;
  for (std::uint64_t history = 0; calls > 0 && !hasFailed; ++history) {
    const std::uint64_t count = std::min(calls, callsOfHistory);
    std::string lines;
    const auto outcome = histories::runRandom(
        histories::allKinds(), seed + history, static_cast<std::size_t>(count),
        [&](const histories::Step& step) { lines += histories::lineOf(step) + "\n"; });
    std::cout << lines;
    hasFailed = outcome.hasFailed;
    calls -= count;
  }
  if (hasFailed) std::cerr << "The model answers the last call in another way.\n";
  return hasFailed ? EXIT_FAILURE : EXIT_SUCCESS;
}
