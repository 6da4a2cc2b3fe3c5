/// Expectations that the tokenizer splits as the engine for regular expressions does.
#ifndef REFERENCE_SPLITS_H
#define REFERENCE_SPLITS_H

#include <gtest/gtest.h>
#include <tokenizer.h>

#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "reference_engine.h"

namespace reference {

/// Returns the tokens that `split` returns, or the code of the error that it throws.
template <class Split>
std::vector<std::string> outcomeOf(Split split) {
  try {
    return split();
  } catch (const std::regex_error& error) {
    return {"error", errorCode(error)};
  }
}

inline std::vector<std::string> tokensOfSplitMulti(const std::string& text,
                                                   const std::string& pattern) {
  zn_lib::Tokenizer tokenizer;
  tokenizer.splitMulti(text, pattern);
  return tokenizer.tokens;
}

/// Splits `text` at the matches that the engine finds of `pattern`. Compiles a pattern once when
/// calls with it follow each other.
inline std::vector<std::string> splitByEngine(const std::string& text, const std::string& pattern) {
  static std::string compiledFrom;
  static std::optional<Engine> compiled;
  if (!compiled || compiledFrom != pattern) {
    compiled.reset();
    compiled = engine(pattern);
    compiledFrom = pattern;
  }
  return split(text, *compiled);
}

/// Expects that a split at the delimiters `set` gives what the engine makes of the bracket
/// expression, errors included.
inline void expectSplit(const std::string& text, const std::string& set) {
  ASSERT_EQ(outcomeOf([&] { return zn_lib::Tokenizer(text, set).tokens; }),
            outcomeOf([&] { return splitByEngine(text, "[" + set + "]"); }))
      << text << " at " << set;
}

/// Expects that a split at `pattern` gives what the engine makes of it, errors included.
inline void expectSplitMulti(const std::string& text, const std::string& pattern) {
  ASSERT_EQ(outcomeOf([&] { return tokensOfSplitMulti(text, pattern); }),
            outcomeOf([&] { return splitByEngine(text, pattern); }))
      << text << " at " << pattern;
}

}  // namespace reference

#endif  // REFERENCE_SPLITS_H
