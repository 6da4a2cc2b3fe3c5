#include "patterns.h"

#include <locale>
#include <string_view>

namespace zn_lib::internal {
namespace {

/// The longest pattern, in bytes. The engine recurses at least once per term while it compiles a
/// pattern.
constexpr std::size_t kLongestPattern = 10000;

/// Returns true only if `pattern` is a single bracket expression, which is one term at any length.
/// Does not recognise those that contain a "]".
bool isOneSet(const std::string& pattern) {
  return pattern.front() == '[' && pattern.find(']') == pattern.size() - 1;
}

#ifdef _LIBCPP_VERSION
/// Rewrites a pattern so that libc++'s engine treats it as libstdc++'s does. libc++'s engine
/// rejects a "]" or "}" that closes nothing, and accepts a range that runs backwards; libstdc++'s
/// does the opposite.
class LibcxxPattern {
 public:
  explicit LibcxxPattern(const std::string& pattern) : rest_(pattern) {
    bool isInCount = false;
    while (!rest_.empty()) {
      const char c = rest_.front();
      if (c == '[') {
        copyBrackets();
        continue;
      }
      if (c == ']' || (c == '}' && !isInCount)) text_ += '\\';
      if (c == '{' || c == '}') isInCount = c == '{';
      copy(c == '\\' ? 2 : 1);
    }
  }

  const std::string& text() const { return text_; }

 private:
  std::string_view copy(std::size_t count) {
    const std::string_view part = rest_.substr(0, count);
    text_.append(part);
    rest_.remove_prefix(part.size());
    return part;
  }

  /// Copies one member of a set: a character, an escaped character, or a class such as "[:alpha:]".
  std::string_view copyMember() {
    if (rest_.front() == '\\') return copy(2);
    const bool isClass = rest_.front() == '[' && rest_.size() > 1 && rest_[1] == ':';
    const std::size_t end = isClass ? rest_.find(":]", 2) : std::string_view::npos;
    return copy(end == std::string_view::npos ? 1 : end + 2);
  }

  void copyBrackets() {
    copy(rest_.substr(0, 2) == "[^" ? 2 : 1);
    while (!rest_.empty() && rest_.front() != ']') {
      const std::string_view first = copyMember();
      if (rest_.size() < 2 || rest_[0] != '-' || rest_[1] == ']') continue;
      copy(1);
      const std::string_view last = copyMember();
      if (first.size() == 1 && last.size() == 1 && first.front() > last.front()) {
        throw std::regex_error(std::regex_constants::error_range);
      }
    }
    copy(1);
  }

  std::string_view rest_;
  std::string text_;
};
#endif

}  // namespace

// GCOVR_EXCL_BR_START: the only branches are the cleanup after an exception.
ClassicTraits::ClassicTraits() {
  imbue(std::locale::classic());
#ifndef _LIBCPP_VERSION
  constexpr std::string_view name = "digit";
  digits_ = lookup_classname(name.begin(), name.end());
#endif
}
// GCOVR_EXCL_BR_STOP

#ifndef _LIBCPP_VERSION
bool ClassicTraits::isctype(char c, char_class_type members) const {
  // `members` is empty for a bracket expression that names no class.
  if (members == char_class_type()) return false;
  if (members == digits_) return isDigit(c);
  return std::regex_traits<char>::isctype(c, members);
}

int ClassicTraits::value(char c, int radix) const {
  constexpr std::string_view digits = "0123456789abcdef";
  // GCOVR_EXCL_BR_START: the only branch is that of an exception, which is never thrown.
  const std::size_t digit = digits.substr(0, static_cast<std::size_t>(radix)).find(toLower(c));
  // GCOVR_EXCL_BR_STOP
  return digit == std::string_view::npos ? -1 : static_cast<int>(digit);
}
#endif

Pattern compilePattern(const std::string& pattern, std::regex::flag_type flags) {
  if (pattern.size() > kLongestPattern && !isOneSet(pattern)) {
    // GCOVR_EXCL_BR_START: the only branch is the cleanup after another exception.
    throw std::regex_error(std::regex_constants::error_stack);
    // GCOVR_EXCL_BR_STOP
  }
#ifdef _LIBCPP_VERSION
  return Pattern(LibcxxPattern(pattern).text(), flags);
#else
  // The engine imbues the traits with the locale of the expression, which is the host's by default.
  // GCOVR_EXCL_BR_START: the only branches are the cleanup after an exception.
  Pattern compiled;
  compiled.imbue(std::locale::classic());
  compiled.assign(pattern, flags);
  // GCOVR_EXCL_BR_STOP
  return compiled;
#endif
}

bool containsMatch(const std::string& text, const Pattern& pattern) {
  if (std::regex_search(text, pattern)) return true;
#ifdef _LIBCPP_VERSION
  // libc++'s engine does not look for an empty match at the end of a text.
  return std::regex_search(text.end(), text.end(), pattern, std::regex_constants::match_not_bol);
#else
  return false;
#endif
}

}  // namespace zn_lib::internal
