/// Character classes and case of the "C" locale, whatever locale the host has set. Bytes above 0x7F
/// belong to none.
#ifndef ZN_ASCII_H
#define ZN_ASCII_H

namespace zn_lib {

constexpr bool isBlank(char c) {
  // One bit for each blank: a chain of comparisons is mispredicted where blanks of several kinds
  // are mixed.
  constexpr unsigned long long blanks = 1ULL << ' ' | 0x1FULL << '\t';
  return c >= '\t' && c <= ' ' && (blanks >> c & 1) != 0;
}
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr char toUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr char toLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace zn_lib

#endif  // ZN_ASCII_H
