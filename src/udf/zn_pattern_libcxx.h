/// Patterns for libc++'s engine, with the meaning that they have for libstdc++'s.
#ifndef ZN_PATTERN_LIBCXX_H
#define ZN_PATTERN_LIBCXX_H

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <cstring>
#include <locale>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "zn_ascii.h"

namespace zn_lib {

/// The traits of the "C" locale. A regular expression of libc++ forgets the locale that it was
/// given when a pattern is assigned to it.
struct ClassicTraits : std::regex_traits<char> {
  ClassicTraits() { imbue(std::locale::classic()); }
};

/// Rewrites a pattern, piece by piece, where the engines differ:
///
///     "a]}"      ->  "a\]\}"         closing marks that close nothing
///     "a++"      ->  "(?:a+)+"       several quantifiers
///     "\q"       ->  "q"             escaped letters without a meaning
///     "\cq"      ->  "\x71"
///     "[a-c]"    ->  "[\x61-\x63]"   brackets, as the bytes that they admit
///     "[c-a]"    ->  throws std::regex_error
///
/// What is malformed outside brackets is left for the engine to refuse. Still different: a "\b" or
/// "\B" that is tried at the very end of the text only, a "^" right behind an empty first match,
/// "(\1)", and back references in lookaheads.
class LibcxxPattern {
 public:
  explicit LibcxxPattern(const std::string& pattern) : pattern_(pattern) {
    while (!isAtEnd()) rewritePiece();
  }

  const std::string& text() const { return text_; }

 private:
  using Bytes = std::bitset<256>;
  static constexpr std::size_t kNone = std::string::npos;

  struct Group {
    std::size_t begin;
    bool isAssertion;
  };

  [[noreturn]] static void fail(std::regex_constants::error_type error) {
    throw std::regex_error(error);
  }

  static bool isOneOf(char c, const char* characters) {
    return c != '\0' && std::strchr(characters, c) != nullptr;
  }

  static std::size_t index(char c) { return static_cast<unsigned char>(c); }

  bool isAtEnd() const { return at_ == pattern_.size(); }

  /// Takes the next `count` characters, or what there is, as they are.
  void copy(std::size_t count) {
    count = std::min(count, pattern_.size() - at_);
    text_.append(pattern_, at_, count);
    at_ += count;
  }

  // ---- Outside brackets

  void rewritePiece() {
    const char c = pattern_[at_];
    if (isOneOf(c, "*+?{")) return rewriteQuantifier();
    isQuantified_ = false;
    atom_ = text_.size();
    if (c == '\\') {
      rewriteEscape();
    } else if (c == '[') {
      rewriteBrackets();
    } else if (c == '(') {
      openGroup();
    } else if (c == ')' && !groups_.empty()) {
      atom_ = groups_.back().isAssertion ? kNone : groups_.back().begin;
      groups_.pop_back();
      copy(1);
    } else {
      if (isOneOf(c, "|^$")) atom_ = kNone;
      if (isOneOf(c, "]}")) text_ += '\\';
      copy(1);
    }
  }

  void openGroup() {
    const char kind =
        pattern_.compare(at_, 2, "(?") == 0 && at_ + 2 < pattern_.size() ? pattern_[at_ + 2] : '\0';
    groups_.push_back({text_.size(), isOneOf(kind, "=!")});
    atom_ = kNone;
    copy(isOneOf(kind, "=!:") ? 3 : 1);
  }

  /// The engine takes one quantifier a piece.
  void rewriteQuantifier() {
    if (isQuantified_ && atom_ != kNone) {
      text_.insert(atom_, "(?:");
      text_ += ')';
    }
    copy(pattern_[at_] == '{' ? pattern_.find('}', at_) - at_ : 0);
    copy(1);
    if (!isAtEnd() && pattern_[at_] == '?') copy(1);
    isQuantified_ = true;
  }

  void rewriteEscape() {
    const char c = at_ + 1 < pattern_.size() ? pattern_[at_ + 1] : '\0';
    if (c == 'c' && at_ + 2 < pattern_.size()) {
      at_ += 2;
      appendByte(pattern_[at_++]);
    } else if (c == '_' || (isLetter(c) && !isOneOf(c, "bBcdDfnrsStuvwWx"))) {
      ++at_;
      copy(1);
    } else {
      if (isOneOf(c, "bB")) atom_ = kNone;
      copy(c == 'u' ? 6 : c == 'x' ? 4 : 2);
      // Only "\0" ends with its first digit.
      while (isDigit(c) && c != '0' && !isAtEnd() && isDigit(pattern_[at_])) copy(1);
    }
  }

  static bool isLetter(char c) { return toLower(c) >= 'a' && toLower(c) <= 'z'; }

  void appendByte(char c) {
    constexpr const char* digits = "0123456789abcdef";
    text_ += {'\\', 'x', digits[index(c) / 16], digits[index(c) % 16]};
  }

  // ---- Inside brackets

  char peek() const {
    if (isAtEnd()) fail(std::regex_constants::error_brack);
    return pattern_[at_];
  }

  char next() {
    const char c = peek();
    ++at_;
    return c;
  }

  void rewriteBrackets() {
    ++at_;
    const bool isNegated = peek() == '^';
    if (isNegated) ++at_;
    const Bytes bytes = isNegated ? ~readBrackets() : readBrackets();
    text_ += '[';
    for (std::size_t first = 0; first < bytes.size(); ++first) {
      if (!bytes[first]) continue;
      std::size_t last = first;
      while (last + 1 < bytes.size() && bytes[last + 1]) ++last;
      appendByte(static_cast<char>(first));
      text_ += '-';
      appendByte(static_cast<char>(last));
      first = last;
    }
    text_ += ']';
  }

  /// Reads up to the "]".
  Bytes readBrackets() {
    Bytes bytes;
    std::optional<char> before;  // the character that begins a range if a "-" follows
    bool isAfterClass = false;
    while (peek() != ']') {
      const bool isRange = peek() == '-' && (before || isAfterClass);
      if (isRange) ++at_;
      if (isRange && peek() != ']') {
        if (!before) fail(std::regex_constants::error_range);
        addRange(bytes, *before);
        before.reset();
        isAfterClass = false;
      } else {
        before = isRange ? '-' : readMember(bytes);
        isAfterClass = !before;
        if (before) bytes.set(index(*before));
      }
    }
    ++at_;
    return bytes;
  }

  /// Reads the end of a range. The order is that of char, which may be signed.
  void addRange(Bytes& bytes, char first) {
    const bool isName = pattern_.compare(at_, 2, "[.") == 0;
    const std::optional<char> last = readMember(bytes);
    if (isName || !last || first > *last) fail(std::regex_constants::error_range);
    for (int c = first; c <= *last; ++c) bytes.set(index(static_cast<char>(c)));
  }

  /// A character; nothing for a class, which is added to `bytes`.
  std::optional<char> readMember(Bytes& bytes) {
    const char c = next();
    if (c == '\\') return readEscape(bytes);
    if (c == '[' && isOneOf(peek(), ":.=")) return readName(bytes);
    return c;
  }

  std::optional<char> readEscape(Bytes& bytes) {
    constexpr const char* controls = "bfnrtv";
    const char c = next();
    if (isOneOf(c, controls)) return "\b\f\n\r\t\v"[std::strchr(controls, c) - controls];
    if (isOneOf(c, "dDsSwW")) {
      addClass(bytes, {toLower(c)}, c != toLower(c));
      return {};
    }
    if (c == 'c') return next();
    if (c == 'x') return readHexadecimal(2);
    if (c == 'u') return readHexadecimal(4);
    if (c == '0') return '\0';
    if (c == 'B' || isDigit(c)) fail(std::regex_constants::error_escape);
    return c;
  }

  char readHexadecimal(int digits) {
    int value = 0;
    for (int i = 0; i < digits; ++i) {
      const int digit = traits_.value(next(), 16);
      if (digit < 0) fail(std::regex_constants::error_escape);
      value = value * 16 + digit;
    }
    return static_cast<char>(value);
  }

  /// Reads what follows the "[" of "[:alpha:]", "[.a.]" or "[=a=]".
  std::optional<char> readName(Bytes& bytes) {
    const char mark = next();
    std::string name;
    while (peek() != mark) name += next();
    ++at_;
    if (next() != ']') fail(std::regex_constants::error_ctype);
    if (mark == ':') {
      addClass(bytes, name, false);
      return {};
    }
    if (name.size() == 1 && !isLetter(name[0])) fail(std::regex_constants::error_collate);
    const std::string element = traits_.lookup_collatename(name.begin(), name.end());
    if (element.size() != 1) fail(std::regex_constants::error_collate);
    if (mark == '.') return element[0];
    bytes.set(index(toLower(element[0])));
    bytes.set(index(toUpper(element[0])));
    return {};
  }

  void addClass(Bytes& bytes, const std::string& name, bool isNegated) {
    const auto members = traits_.lookup_classname(name.begin(), name.end());
    if (members == 0) fail(std::regex_constants::error_ctype);
    for (std::size_t byte = 0; byte < bytes.size(); ++byte) {
      if (traits_.isctype(static_cast<char>(byte), members) != isNegated) bytes.set(byte);
    }
  }

  const std::string& pattern_;
  std::size_t at_ = 0;
  std::string text_;
  std::size_t atom_ = kNone;  // where in the text the piece for a quantifier begins
  bool isQuantified_ = false;
  std::vector<Group> groups_;  // those that are open
  ClassicTraits traits_;
};

}  // namespace zn_lib

#endif  // ZN_PATTERN_LIBCXX_H
