/// Checks that abort the process if they fail, so that the fuzzer keeps the input.
#ifndef FUZZ_CHECK_H
#define FUZZ_CHECK_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "fuzz_answers.h"

namespace fuzz {

/// The longest text for the engine for regular expressions of the standard library. The engine
/// recurses for each character and may take exponential time.
constexpr std::size_t kShortText = 48;

/// The longest pattern from the input, and the longest text for it. Such a pattern may be
/// ambiguous.
constexpr std::size_t kShortForPattern = 12;

/// Returns whether the engine can run `pattern`. Counted repetitions make it recurse for any text,
/// and each nested repetition multiplies its time by the length of the text.
inline bool isForEngine(const std::string& pattern) {
  constexpr long mostRepetitions = 2;
  return pattern.size() <= kShortForPattern && pattern.find('{') == std::string::npos &&
         std::count_if(pattern.begin(), pattern.end(),
                       [](char c) { return c == '*' || c == '+' || c == '?'; }) <= mostRepetitions;
}

/// Returns a printable form of a value.
inline std::string shown(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    const unsigned byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F && c != '\\' && c != '"') {
      quoted += c;
    } else {
      char escaped[5];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
      quoted += escaped;
    }
  }
  return quoted + "\"";
}

inline std::string shown(const std::vector<std::string>& texts) {
  std::string all = "{";
  for (const std::string& text : texts) all += shown(text) + " ";
  return all + "}";
}

template <class Number>
std::string shown(Number number, int digits = 17) {
  std::ostringstream os;
  os.precision(digits);
  os << +number;
  return os.str();
}

/// Prints an answer of the library if that is asked for.
template <class Value>
void answer(const char* what, const Value& value) {
  if (!answers.areEnabled()) return;
  if constexpr (std::is_floating_point_v<Value>) {
    answers.print(what, shown(value, ZN_UDF_FUZZ_DIGITS));
  } else {
    answers.print(what, shown(value));
  }
}

/// Prints a message and aborts the process.
[[noreturn]] inline void fail(const char* what, const std::string& detail) {
  std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
  std::abort();
}

/// Aborts the process if `holds` is false. `what` describes the condition.
inline void expect(const char* what, bool holds) {
  if (!holds) fail(what, "is false");
  answer(what, holds);
}

/// Aborts the process if the library returned `actual` instead of `expected`.
template <class Actual, class Expected>
void expectSame(const char* what, const Actual& actual, const Expected& expected) {
  if (!(actual == expected)) fail(what, shown(actual) + " instead of " + shown(expected));
  answer(what, actual);
}

/// Compares numbers. All NaNs are equal.
inline void expectSameNumber(const char* what, double actual, double expected) {
  if (std::isnan(actual) && std::isnan(expected)) return answer(what, actual);
  expectSame(what, actual, expected);
}

/// Compares a result with one that is computed in another way, and differs by rounding.
inline void expectNear(const char* what, double actual, double expected, double tolerance) {
  if (!(std::fabs(actual - expected) <= tolerance)) {
    fail(what, shown(actual) + " instead of " + shown(expected));
  }
  answer(what, actual);
}

}  // namespace fuzz

#endif  // FUZZ_CHECK_H
