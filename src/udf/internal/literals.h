/// Finds the literal parts of patterns, so that many searches do not need the regular expression
/// engine.
#ifndef ZN_INTERNAL_LITERALS_H
#define ZN_INTERNAL_LITERALS_H

#include <optional>
#include <string>

namespace zn_lib::internal {

/// A literal text that is searched in names: anywhere, or only at the start or end. If both flags
/// are set, the name must equal the text.
struct FixedText {
  std::string text;
  bool isAtStart = false;
  bool isAtEnd = false;

  bool isIn(std::string_view name) const;
};

/// Returns the text that `pattern` searches for, or nothing if it may match more than one text.
/// Also returns nothing for long patterns with operators, since the engine has to reject some of
/// them.
std::optional<FixedText> fixedText(const std::string& pattern);

/// Returns the longest text that is known to be part of every match of `pattern`, or the empty text
/// if there is none. `pattern` must be well-formed.
std::string textInAllMatches(const std::string& pattern);

/// Returns true if `pattern` consists of plain characters and dots, so that it matches only texts
/// of its own length.
bool isSingleCharacters(const std::string& pattern);

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_LITERALS_H
