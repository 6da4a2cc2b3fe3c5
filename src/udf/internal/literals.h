/// The literal parts of patterns: what a pattern finds or needs, as far as that can be read from it
/// without the engine.
#ifndef ZN_INTERNAL_LITERALS_H
#define ZN_INTERNAL_LITERALS_H

#include <optional>
#include <string>

namespace zn_lib::internal {

/// A text that is searched anywhere, or only at one or both ends.
struct FixedText {
  std::string text;
  bool isAtStart = false;
  bool isAtEnd = false;

  bool isIn(const std::string& name) const;
};

/// Returns the text that `pattern` searches for, or nothing if that may be more than one text. Long
/// patterns with operators are left to the engine, which refuses some.
std::optional<FixedText> fixedText(const std::string& pattern);

/// Returns the longest text found to be part of everything that `pattern`, which is well-formed,
/// matches. It is empty if there is none.
std::string textInAllMatches(const std::string& pattern);

/// Returns true if `pattern` consists of plain characters and dots, so that it matches only texts
/// of its own length.
bool isSingleCharacters(const std::string& pattern);

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_LITERALS_H
