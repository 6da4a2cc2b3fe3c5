#include "literals.h"

#include <cstring>

#include "patterns.h"
#include "text.h"

namespace zn_lib::internal {
namespace {

/// Returns true if `characters` contains `c`. NUL counts as contained.
bool isOneOf(char c, const char* characters) { return std::strchr(characters, c) != nullptr; }

/// One character of a pattern, plain or escaped.
struct Unit {
  char character;
  bool isEscaped;

  bool is(char operation) const { return !isEscaped && character == operation; }

  /// Returns true if the unit matches exactly its own character. Plain operators, escaped letters
  /// and escaped digits do not.
  bool isLiteral() const {
    return character != '\0' && isOneOf(character, "^$\\.*+?()[]{}|") == isEscaped;
  }
};

/// Returns the unit at `position` and moves `position` past it. Does not interpret bracket
/// expressions.
Unit readUnit(const std::string& pattern, std::size_t& position) {
  const bool isEscaped = pattern[position] == '\\' && position + 1 < pattern.size();
  if (isEscaped) ++position;
  return {pattern[position++], isEscaped};
}

}  // namespace

bool FixedText::isIn(std::string_view name) const {
  if (!isAtStart && !isAtEnd) return findText(name, text) != std::string::npos;
  if (isAtStart && isAtEnd) return name == text;
  if (name.size() < text.size()) return false;
  return name.compare(isAtStart ? 0 : name.size() - text.size(), text.size(), text) == 0;
}

std::optional<FixedText> fixedText(const std::string& pattern) {
  FixedText fixed;
  for (std::size_t at = 0; at < pattern.size();) {
    const bool isFirst = at == 0;
    const Unit unit = readUnit(pattern, at);
    if (unit.isLiteral()) {
      fixed.text += unit.character;
    } else if (unit.is('^') && isFirst) {
      fixed.isAtStart = true;
    } else if (unit.is('$') && at == pattern.size()) {
      fixed.isAtEnd = true;
    } else {
      return std::nullopt;
    }
  }
  if (pattern.size() > kLongestFileName && fixed.text != pattern) return std::nullopt;
  return fixed;
}

std::string textInAllMatches(const std::string& pattern) {
  // The text of a group, an alternative or a counted repetition may be missing from a match.
  if (pattern.find_first_of("(|{") != std::string::npos) return "";
  std::string longest;
  std::string run;
  const auto endRun = [&] {
    if (run.size() > longest.size()) longest = run;
    run.clear();
  };
  // No bracket expression begins after the last "]", since the pattern is well-formed.
  for (std::size_t at = pattern.rfind(']') + 1; at < pattern.size();) {
    const Unit unit = readUnit(pattern, at);
    if (unit.isLiteral()) {
      run += unit.character;
      continue;
    }
    if (unit.isEscaped && !isOneOf(unit.character, "bBdDsSwW")) return "";
    // A quantifier makes the character before it optional.
    if (!unit.isEscaped && isOneOf(unit.character, "*+?") && !run.empty()) run.pop_back();
    endRun();
  }
  endRun();
  return longest;
}

bool isSingleCharacters(const std::string& pattern) {
  for (std::size_t at = 0; at < pattern.size();) {
    const Unit unit = readUnit(pattern, at);
    if (unit.isEscaped || !(unit.isLiteral() || unit.is('.'))) return false;
  }
  return !pattern.empty();
}

}  // namespace zn_lib::internal
