/// Regular expressions that mean the same in every host.
#ifndef ZN_PATTERN_H
#define ZN_PATTERN_H

#include <algorithm>
#include <locale>
#include <regex>
#include <string>

namespace zn_lib {

/// Compiles `pattern` under the "C" locale. A std::regex built directly takes its classes and its
/// case folding from the global locale, which is the host's. Throws std::regex_error when the
/// pattern is malformed.
inline std::regex compilePattern(const std::string& pattern,
                                 std::regex::flag_type flags = std::regex::ECMAScript) {
  std::regex compiled;
  compiled.imbue(std::locale::classic());
  compiled.assign(pattern, flags);
  return compiled;
}

/// The engine recurses once a character. What comes from a file's name is given to it up to the
/// length that file systems allow.
constexpr std::size_t kLongestForEngine = 255;

/// True when `text` holds a byte that "." does not match.
inline bool hasLineBreak(const std::string& text) {
  return text.find_first_of("\n\r") != std::string::npos;
}

/// True when `pattern` finds exactly its own text. False says nothing.
inline bool isPlainPattern(const std::string& pattern) {
  using namespace std::string_literals;
  return !pattern.empty() && pattern.find_first_of("^$\\.*+?()[]{}|\0"s) == std::string::npos;
}

/// True when `pattern` finds texts of its own length only: plain characters and dots. False says
/// nothing.
inline bool isSingleCharacters(const std::string& pattern) {
  std::string plain = pattern;
  std::replace(plain.begin(), plain.end(), '.', ' ');
  return isPlainPattern(plain);
}

}  // namespace zn_lib

#endif  // ZN_PATTERN_H
