/// Shortens a failing history.
#ifndef HISTORIES_SHRINK_H
#define HISTORIES_SHRINK_H

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace histories {

using History = std::vector<std::vector<unsigned>>;

/// Returns a history for which `fails` is true and which has neither a call that can be left out
/// nor a decision that can be made smaller, each by itself. `fails` must be true for `history`.
/// The first decision of a call is its function, and stays.
inline History shrink(History history, const std::function<bool(const History&)>& fails) {
  bool isShorter = true;
  const auto keepIfFailing = [&](const History& candidate) {
    if (!fails(candidate)) return false;
    history = candidate;
    isShorter = true;
    return true;
  };
  while (isShorter) {
    isShorter = false;
    for (std::size_t count = history.size(); count > 0; count /= 2) {
      // From the end, since a failure needs its last calls.
      for (std::size_t end = history.size(); end > 0;) {
        const std::size_t start = end - std::min(end, count);
        History candidate = history;
        candidate.erase(candidate.begin() + static_cast<std::ptrdiff_t>(start),
                        candidate.begin() + static_cast<std::ptrdiff_t>(end));
        keepIfFailing(candidate);
        end = start;
      }
    }
    for (std::size_t call = 0; call < history.size(); ++call) {
      for (std::size_t i = 1; i < history[call].size(); ++i) {
        // Subtracts all, then half of it, and so on; after a success, all that is left.
        unsigned less = history[call][i];
        while (less > 0) {
          History candidate = history;
          candidate[call][i] -= less;
          less = keepIfFailing(candidate) ? history[call][i] : less / 2;
        }
      }
    }
  }
  return history;
}

}  // namespace histories

#endif  // HISTORIES_SHRINK_H
