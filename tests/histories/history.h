/// Runs histories.
#ifndef HISTORIES_HISTORY_H
#define HISTORIES_HISTORY_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "call.h"
#include "shrink.h"

namespace histories {

/// Returns the kinds of calls of all families.
const Kinds& allKinds();

/// Returns the names of all functions that the kinds reach.
std::set<std::string> namesOf(const Kinds& kinds);

struct Outcome {
  History history;                ///< the calls that were made
  bool hasFailed = false;         ///< the last one had another answer than the model
  std::set<std::size_t> reached;  ///< the kinds of the calls
};

using Visit = std::function<void(const Step&)>;

/// Makes `count` random calls in a world of their own, and stops at the first wrong answer.
Outcome runRandom(const Kinds& kinds, std::uint64_t seed, std::size_t count,
                  const Visit& visit = nullptr);

/// Repeats a history, and stops at the first wrong answer.
Outcome repeat(const Kinds& kinds, const History& history, const Visit& visit = nullptr);

/// Returns the shortest failing history that the calls of `failing` lead to, as one line for each
/// call, with both answers to the last one.
std::string shortest(const Kinds& kinds, const History& failing);

/// Returns a call and its answer as one line that is the same on every machine.
std::string lineOf(const Step& step);

}  // namespace histories

#endif  // HISTORIES_HISTORY_H
