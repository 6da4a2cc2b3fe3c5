/// Reference model of the whitespace that the library trims.
#ifndef WHITESPACE_H
#define WHITESPACE_H

#include <algorithm>
#include <string>

/// The whitespace of the C locale.
constexpr const char* kWhitespace = " \t\n\v\f\r";

inline std::string withoutLeadingWhitespace(const std::string& text) {
  return text.substr(std::min(text.find_first_not_of(kWhitespace), text.size()));
}

inline std::string withoutTrailingWhitespace(const std::string& text) {
  return text.substr(0, text.find_last_not_of(kWhitespace) + 1);
}

#endif  // WHITESPACE_H
