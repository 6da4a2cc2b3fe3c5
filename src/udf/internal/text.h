/// Characters and searches that do not depend on the host's locale.
#ifndef ZN_INTERNAL_TEXT_H
#define ZN_INTERNAL_TEXT_H

#include <array>
#include <cstring>
#include <string>
#include <string_view>

namespace zn_lib::internal {

// The classes and the case of the "C" locale. Bytes above 0x7F belong to no class.

constexpr const char* kSpaces = " \t\n\v\f\r";

constexpr std::array<bool, 256> spaceTable() {
  std::array<bool, 256> table{};
  for (const char c : std::string_view(kSpaces)) table[static_cast<unsigned char>(c)] = true;
  return table;
}

/// A chain of comparisons would cause branch mispredictions in whitespace of several kinds.
inline constexpr std::array<bool, 256> kIsSpace = spaceTable();

constexpr bool isSpace(char c) { return kIsSpace[static_cast<unsigned char>(c)]; }
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr char toUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr char toLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Returns true if `text` contains a character that "." does not match in a pattern.
inline bool hasLineBreak(std::string_view text) {
  // Two searches for one byte each are faster than one search for either.
  return text.find('\n') != text.npos || text.find('\r') != text.npos;
}

/// Returns the position of the first `part` in `text` at or after `start`, or npos. `start` must
/// not exceed the size of the text. std::string::find takes quadratic time on long, repetitive
/// texts. memmem does not, but is slower on short texts.
inline std::size_t findText(std::string_view text, std::string_view part, std::size_t start = 0) {
  constexpr std::size_t shortText = 256;
  if (text.size() <= shortText) return text.find(part, start);
  const void* const hit =
      memmem(text.data() + start, text.size() - start, part.data(), part.size());
  return hit == nullptr ? std::string::npos
                        : static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
}

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_TEXT_H
