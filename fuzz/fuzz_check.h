/// Checks that end the process where they fail, so that the fuzzer keeps the input.
#ifndef FUZZ_CHECK_H
#define FUZZ_CHECK_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace fuzz {

/// Texts up to this length are given to the standard library's engine, which recurses once a
/// character and may take time that grows exponentially.
constexpr std::size_t kShortText = 48;

/// A pattern of the input's may be ambiguous: it is shorter still, and so are texts for it.
constexpr std::size_t kShortForPattern = 12;

/// Whether the engine can be given `pattern`: a counted repetition makes it recurse whatever the
/// text, and each repetition of a repetition multiplies its time by the text's length.
inline bool isForEngine(const std::string& pattern) {
  constexpr long mostRepetitions = 2;
  return pattern.size() <= kShortForPattern && pattern.find('{') == std::string::npos &&
         std::count_if(pattern.begin(), pattern.end(),
                       [](char c) { return c == '*' || c == '+' || c == '?'; }) <= mostRepetitions;
}

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
std::string shown(Number number) {
  std::ostringstream os;
  os.precision(17);
  os << +number;
  return os.str();
}

[[noreturn]] inline void fail(const char* what, const std::string& detail) {
  std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
  std::abort();
}

/// Ends the process when `holds` is false; `what` says what then is wrong.
inline void expect(const char* what, bool holds) {
  if (!holds) fail(what, "does not hold");
}

/// Ends the process when `actual`, which the library gave, is not `expected`.
template <class Actual, class Expected>
void expectSame(const char* what, const Actual& actual, const Expected& expected) {
  if (!(actual == expected)) fail(what, shown(actual) + " in place of " + shown(expected));
}

/// The same for numbers, where one NaN is as good as another.
inline void expectSameNumber(const char* what, double actual, double expected) {
  if (std::isnan(actual) && std::isnan(expected)) return;
  expectSame(what, actual, expected);
}

/// For a result that is computed in another way here, and differs by rounding.
inline void expectNear(const char* what, double actual, double expected, double tolerance) {
  if (!(std::fabs(actual - expected) <= tolerance)) {
    fail(what, shown(actual) + " in place of " + shown(expected));
  }
}

}  // namespace fuzz

#endif  // FUZZ_CHECK_H
