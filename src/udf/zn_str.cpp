#include "zn_str.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <regex>
#include <stdexcept>
#include <string_view>

#include "zn_ascii.h"
#include "zn_decimal.h"
#include "zn_find.h"
#include "zn_pattern.h"

namespace zn_lib {
namespace {

const Pattern isBool =
    compilePattern("(yes|true|on|y|\\.t\\.|t|1)", std::regex::ECMAScript | std::regex::icase);
const Pattern validNumber = compilePattern("-?((\\d),?)*(\\.\\d+)?([eE][-+]\\d+)?");
const Pattern quote = compilePattern("[`'\"]");

/// One flag a byte value: whether the byte, alone, matches.
using ByteTable = std::array<bool, 256>;

ByteTable bytesThatMatch(const Pattern& pattern) {
  ByteTable table{};
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    const char c = static_cast<char>(byte);
    table[byte] = std::regex_match(&c, &c + 1, pattern);
  }
  return table;
}

/// What a stream would print of `text`: the library's inserter stops at the first NUL.
std::string upToNul(const std::string& text) { return text.c_str(); }

/// Whether `character` is a value that a byte, read as a signed char, can have.
bool isSignedChar(int character) {
  return character >= std::numeric_limits<signed char>::min() &&
         character <= std::numeric_limits<signed char>::max();
}

/// The text without the bytes for which `drop` is true. One pass without branches: its time does
/// not depend on how many bytes go, or where. Most are taken eight at a time: a fifth faster.
template <class Drop>
std::string withoutBytes(const std::string& text, Drop drop) {
  std::string kept(text.size(), '\0');
  char* end = kept.data();
  const char* at = text.data();
  const char* const stop = at + text.size();
  const auto take = [&](char c) {
    *end = c;
    end += drop(c) ? 0 : 1;
  };
  constexpr std::ptrdiff_t together = 8;
  for (; stop - at >= together; at += together) {
    for (std::ptrdiff_t i = 0; i < together; ++i) take(at[i]);
  }
  for (; at != stop; ++at) take(*at);
  kept.resize(static_cast<std::size_t>(end - kept.data()));
  return kept;
}

const char* skipDigits(const char* at, const char* end) {
  return std::find_if_not(at, end, isDigit);
}

}  // namespace

std::string leftTrim(const std::string& text) {
  return {std::find_if_not(text.begin(), text.end(), isBlank), text.end()};
}

std::string rightTrim(const std::string& text) {
  return {text.begin(), std::find_if_not(text.rbegin(), text.rend(), isBlank).base()};
}

std::string allTrim(const std::string& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
  const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isBlank);
  return {first, last.base()};
}

std::string stringToUpper(const std::string& text) {
  std::string upper = text;
  std::transform(upper.begin(), upper.end(), upper.begin(), toUpper);
  return upper;
}

std::string stringToLower(const std::string& text) {
  std::string lower = text;
  std::transform(lower.begin(), lower.end(), lower.begin(), toLower);
  return lower;
}

std::string rightPad(const std::string& text, int width, char fill) {
  std::string padded = upToNul(text);
  const std::size_t field = static_cast<std::size_t>(std::max(width, 0));
  if (padded.size() < field) padded.insert(0, field - padded.size(), fill);
  return padded;
}

std::string leftPad(const std::string& text, int width, char fill) {
  std::string padded = upToNul(text);
  const std::size_t field = static_cast<std::size_t>(std::max(width, 0));
  if (padded.size() < field) padded.resize(field, fill);
  return padded;
}

bool stringToBool(const std::string& text) {
  constexpr std::size_t longest = 4;
  if (text.size() > longest) return false;
  const std::string lowered = stringToLower(text);
  const std::string_view word = lowered;
  if (word == "yes" || word == "true" || word == "on" || word == "y" || word == "t" ||
      word == "1") {
    return true;
  }
  // Of the other texts only those that begin with a point can match.
  return !word.empty() && word.front() == '.' && std::regex_match(text, isBool);
}

double stringToDouble(const std::string& text) {
  // The words "nan" and "NAN" need no case of their own: std::stod reads them as NaN.
  try {
    return std::stod(text);
  } catch (...) {
    return std::numeric_limits<double>::quiet_NaN();
  }
}

bool isNumber(const std::string& text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  if (at != end && *at == '-') ++at;
  while (at != end && isDigit(*at)) {
    ++at;
    if (at != end && *at == ',') ++at;
  }
  if (end - at >= 2 && at[0] == '.' && isDigit(at[1])) at = skipDigits(at + 2, end);
  if (at == end) return true;
  if (toLower(*at) != 'e') return false;
  // Every piece before the exponent may be missing, so the whole text matches exactly when what is
  // left does. Three bytes show whether that is an exponent; fewer are left to the pattern.
  constexpr std::ptrdiff_t signedDigit = 3;
  if (end - at >= signedDigit && (at[1] == '-' || at[1] == '+') && isDigit(at[2])) {
    return skipDigits(at + signedDigit, end) == end;
  }
  return end - at < signedDigit && std::regex_match(at, end, validNumber);
}

std::string percentString(double part, double whole, int decimals) {
  // No double has more than 1074 digits behind the point: the rest are zeros. 309 digits is the
  // longest integer part.
  constexpr int mostDecimals = 1074;
  constexpr int streamDefault = 6;
  const double percent = part / whole * 100.0;
  const int wanted = decimals < 0 ? streamDefault : decimals;
  const int exact = std::min(wanted, mostDecimals);
  std::array<char, 309 + mostDecimals + 2> digits;
  std::string text(decimalText(percent, std::chars_format::fixed, exact, digits));
  if (std::isfinite(percent)) text.append(static_cast<std::size_t>(wanted - exact), '0');
  text += '%';
  return text;
}

std::string replicateChar(int character, int count) {
  if (count < 0) throw std::length_error("replicateChar");
  return std::string(static_cast<std::size_t>(count), static_cast<char>(character));
}

std::string replicateString(const std::string& text, int count) {
  std::string repeated;
  if (text.empty() || count < 1) return repeated;
  repeated.reserve(text.size() * static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) repeated += text;
  return repeated;
}

std::string replaceChar(const std::string& text, int from, int to) {
  std::string replaced = text;
  if (isSignedChar(from)) {
    std::replace(replaced.begin(), replaced.end(), static_cast<char>(from), static_cast<char>(to));
  }
  return replaced;
}

std::string removeChar(const std::string& text, int character) {
  if (!isSignedChar(character)) return text;
  const char dropped = static_cast<char>(character);
  return withoutBytes(text, [dropped](char c) { return c == dropped; });
}

std::string removeQuotes(const std::string& text) {
  static const ByteTable isQuote = bytesThatMatch(quote);
  return withoutBytes(text, [](char c) { return isQuote[static_cast<unsigned char>(c)]; });
}

std::string inQuotes(const std::string& text, char mark) { return mark + upToNul(text) + mark; }

std::string replaceString(const std::string& text, const std::string& search,
                          const std::string& replacement) {
  const std::size_t position = findText(text, search);
  if (position >= text.size()) return text;
  std::string replaced(text.size() - search.size() + replacement.size(), '\0');
  const auto hit = text.begin() + static_cast<std::ptrdiff_t>(position);
  auto out = std::copy(text.begin(), hit, replaced.begin());
  out = std::copy(replacement.begin(), replacement.end(), out);
  std::copy(hit + static_cast<std::ptrdiff_t>(search.size()), text.end(), out);
  return replaced;
}

bool findStrings(const std::string& text, std::vector<std::string> list) {
  return std::any_of(list.begin(), list.end(), [&text](const std::string& part) {
    return findText(text, part) < text.size();
  });
}

}  // namespace zn_lib
