/// Regular expressions that mean the same in every host.
#ifndef ZN_PATTERN_H
#define ZN_PATTERN_H

#include <algorithm>
#include <locale>
#include <regex>
#include <string>
#include <string_view>

#include "zn_ascii.h"

#ifdef _LIBCPP_VERSION
#include "zn_pattern_libcxx.h"
#endif

namespace zn_lib {

#ifndef _LIBCPP_VERSION
/// The traits of the "C" locale. For each bracket expression and escaped class, libstdc++ asks for
/// two answers on each of the 256 bytes that cost it a look at the locale, and those of the few
/// patterns that are compiled at load would take longer than all else that a small program does.
struct ClassicTraits : std::regex_traits<char> {
  ClassicTraits() {
    imbue(std::locale::classic());
    constexpr std::string_view name = "digit";
    digits_ = lookup_classname(name.begin(), name.end());
  }

  /// The sort key without regard to case: there, a text is its own key.
  template <class Iterator>
  std::string transform_primary(Iterator first, Iterator last) const {
    std::string key(first, last);
    std::transform(key.begin(), key.end(), key.begin(), toLower);
    return key;
  }

  /// Nothing is in the class of a bracket expression that names none.
  bool isctype(char c, char_class_type members) const {
    if (members == char_class_type()) return false;
    if (members == digits_) return isDigit(c);
    return std::regex_traits<char>::isctype(c, members);
  }

 private:
  char_class_type digits_;
};
#endif

/// A compiled pattern.
using Pattern = std::basic_regex<char, ClassicTraits>;

/// The engine recurses in compiling, too, once a term and more often at a bracket.
constexpr std::size_t kLongestPattern = 10000;

/// True when `pattern` is one bracket expression, which is one term at any length. False says
/// nothing.
inline bool isOneSet(const std::string& pattern) {
  return pattern.front() == '[' && pattern.find(']') == pattern.size() - 1;
}

/// Compiles `pattern` under the "C" locale. A std::regex built directly takes its classes and its
/// case folding from the global locale, which is the host's. Throws std::regex_error when the
/// pattern is malformed, or too long to be compiled without harm.
inline Pattern compilePattern(const std::string& pattern,
                              std::regex::flag_type flags = std::regex::ECMAScript) {
  if (pattern.size() > kLongestPattern && !isOneSet(pattern)) {
    throw std::regex_error(std::regex_constants::error_stack);
  }
#ifdef _LIBCPP_VERSION
  return Pattern(LibcxxPattern(pattern).text(), flags);
#else
  Pattern compiled;
  compiled.imbue(std::locale::classic());
  compiled.assign(pattern, flags);
  return compiled;
#endif
}

/// Whether `pattern` matches anywhere in `text`, its very end included.
inline bool containsMatch(const std::string& text, const Pattern& pattern) {
  if (std::regex_search(text, pattern)) return true;
#ifdef _LIBCPP_VERSION
  // libc++'s engine does not look for an empty match at the end of a text.
  return std::regex_search(text.end(), text.end(), pattern, std::regex_constants::match_not_bol);
#else
  return false;
#endif
}

/// The engine recurses once a character. What comes from a file's name is given to it up to the
/// length that file systems allow.
constexpr std::size_t kLongestForEngine = 255;

/// True when `text` holds a byte that "." does not match.
inline bool hasLineBreak(const std::string& text) {
  // Two searches for one byte each are faster than one search for either.
  return text.find('\n') != std::string::npos || text.find('\r') != std::string::npos;
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
