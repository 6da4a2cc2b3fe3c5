/// Regular expressions that mean the same in every host.
#ifndef ZN_PATTERN_H
#define ZN_PATTERN_H

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

/// True when `pattern` finds exactly its own text. False says nothing.
inline bool isPlainPattern(const std::string& pattern) {
  using namespace std::string_literals;
  return !pattern.empty() && pattern.find_first_of("^$\\.*+?()[]{}|\0"s) == std::string::npos;
}

}  // namespace zn_lib

#endif  // ZN_PATTERN_H
