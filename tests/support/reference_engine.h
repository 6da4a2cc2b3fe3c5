/// Reference model of patterns: the engine for regular expressions of the standard library.
#ifndef REFERENCE_ENGINE_H
#define REFERENCE_ENGINE_H

#include <regex>
#include <string>
#include <vector>

#include "../../src/udf/internal/definitions.h"

// libstdc++'s engine is the reference. libc++'s engine takes some patterns in another way; there,
// the reference is the engine as the library uses it, and the tests compare what the library does
// without an engine.
#ifdef _LIBCPP_VERSION
#include "../../src/udf/internal/patterns.h"
#endif

namespace reference {

#ifdef _LIBCPP_VERSION
using Engine = zn_lib::internal::Pattern;
#else
using Engine = std::regex;
#endif

inline Engine engine(const std::string& pattern,
                     std::regex::flag_type flags = std::regex::ECMAScript) {
#ifdef _LIBCPP_VERSION
  return zn_lib::internal::compilePattern(pattern, flags);
#else
  return Engine(pattern, flags);
#endif
}

inline Engine engine(const zn_lib::internal::Definition& form) {
  return engine(form.expression, form.grammar);
}

inline bool contains(const std::string& text, const Engine& pattern) {
#ifdef _LIBCPP_VERSION
  return zn_lib::internal::containsMatch(text, pattern);
#else
  return std::regex_search(text, pattern);
#endif
}

/// Returns the texts between the matches.
inline std::vector<std::string> split(const std::string& text, const Engine& pattern) {
  std::vector<std::string> tokens;
#ifdef _LIBCPP_VERSION
  // The token iterator of libc++ loses the text before an empty match.
  using Matches = std::regex_iterator<std::string::const_iterator, char, Engine::traits_type>;
  auto start = text.begin();
  for (Matches match(start, text.end(), pattern), end; match != end; ++match) {
    tokens.emplace_back(start, (*match)[0].first);
    start = (*match)[0].second;
  }
  if (start != text.end() || tokens.empty()) tokens.emplace_back(start, text.end());
#else
  constexpr int betweenMatches = -1;
  for (std::sregex_token_iterator token(text.begin(), text.end(), pattern, betweenMatches), end;
       token != end; ++token) {
    tokens.push_back(*token);
  }
#endif
  return tokens;
}

/// Returns the code of an error as text, and "any" with libc++, whose codes differ.
inline std::string errorCode(const std::regex_error& error) {
#ifdef _LIBCPP_VERSION
  static_cast<void>(error);
  return "any";
#else
  return std::to_string(error.code());
#endif
}

}  // namespace reference

#endif  // REFERENCE_ENGINE_H
