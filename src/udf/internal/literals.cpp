#include "literals.h"

#include <cstring>

#include "patterns.h"
#include "text.h"

namespace zn_lib::internal {
namespace {

/// A NUL counts as one of `characters`.
bool isOneOf(char c, const char* characters) { return std::strchr(characters, c) != nullptr; }

/// A character of a pattern, or an escaped one.
struct Unit {
  char character;
  bool isEscaped;

  bool is(char operation) const { return !isEscaped && character == operation; }

  /// Returns true if the unit matches its own character. An escaped letter or digit does not.
  bool isLiteral() const {
    return character != '\0' && isOneOf(character, "^$\\.*+?()[]{}|") == isEscaped;
  }
};

/// Reads the units of a pattern outside bracket expressions.
class UnitReader {
 public:
  explicit UnitReader(const std::string& pattern, std::size_t start = 0)
      : pattern_(pattern), at_(start) {}

  bool isAtEnd() const { return at_ >= pattern_.size(); }

  Unit next() {
    const char c = pattern_[at_++];
    if (c != '\\' || isAtEnd()) return {c, false};
    return {pattern_[at_++], true};
  }

 private:
  const std::string& pattern_;
  std::size_t at_;
};

}  // namespace

bool FixedText::isIn(const std::string& name) const {
  if (!isAtStart && !isAtEnd) return findText(name, text) != std::string::npos;
  if (isAtStart && isAtEnd) return name == text;
  if (name.size() < text.size()) return false;
  return name.compare(isAtStart ? 0 : name.size() - text.size(), text.size(), text) == 0;
}

std::optional<FixedText> fixedText(const std::string& pattern) {
  FixedText fixed;
  bool isFirst = true;
  for (UnitReader reader(pattern); !reader.isAtEnd(); isFirst = false) {
    const Unit unit = reader.next();
    if (unit.isLiteral()) {
      fixed.text += unit.character;
    } else if (unit.is('^') && isFirst) {
      fixed.isAtStart = true;
    } else if (unit.is('$') && reader.isAtEnd()) {
      fixed.isAtEnd = true;
    } else {
      return std::nullopt;
    }
  }
  if (pattern.size() > kLongestForEngine && fixed.text != pattern) return std::nullopt;
  return fixed;
}

std::string textInAllMatches(const std::string& pattern) {
  // The content of a group, an alternative or a counted piece may be missing.
  if (pattern.find_first_of("(|{") != std::string::npos) return "";
  std::string longest;
  std::string run;
  const auto endRun = [&] {
    if (run.size() > longest.size()) longest = run;
    run.clear();
  };
  // No bracket expression begins behind the last "]".
  for (UnitReader reader(pattern, pattern.rfind(']') + 1); !reader.isAtEnd();) {
    const Unit unit = reader.next();
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
  for (UnitReader reader(pattern); !reader.isAtEnd();) {
    const Unit unit = reader.next();
    if (unit.isEscaped || !(unit.isLiteral() || unit.is('.'))) return false;
  }
  return !pattern.empty();
}

}  // namespace zn_lib::internal
