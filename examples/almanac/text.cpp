#include "text.h"

#include <zn_str.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace almanac {
namespace {

/// Returns the value of `text` if it is a number without any of the `banned` characters, between
/// `least` and `most`. `isNumber` checks the whole text but accepts missing parts. `stringToDouble`
/// reads only the start of the text but returns NaN if there is no number. Together they are
/// strict.
std::optional<double> toNumberWithout(const std::string& banned, const std::string& text,
                                      double least, double most) {
  if (!zn_lib::isNumber(text) || text.find_first_of(banned) != std::string::npos) return {};
  const double value = zn_lib::stringToDouble(text);
  // NaN fails both comparisons.
  if (!(value >= least && value <= most)) return {};
  return value;
}

}  // namespace

bool isControl(char c) {
  constexpr unsigned char firstPrintable = ' ';
  constexpr unsigned char del = 127;
  const unsigned char byte = static_cast<unsigned char>(c);
  return byte < firstPrintable || byte == del;
}

std::string quote(const std::string& text) {
  std::string shown = text;
  std::replace_if(shown.begin(), shown.end(), isControl, '?');
  return zn_lib::inQuotes(shown, '"');
}

std::string systemReason() { return std::generic_category().message(errno); }

std::optional<int> toWholeNumber(const std::string& text, int least, int most) {
  const std::optional<double> value = toNumberWithout("-,.eE", text, least, most);
  if (!value) return {};
  return static_cast<int>(*value);
}

std::optional<double> toNumber(const std::string& text, double least, double most) {
  return toNumberWithout(",", text, least, most);
}

}  // namespace almanac
