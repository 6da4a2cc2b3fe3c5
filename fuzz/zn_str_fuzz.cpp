/// Compares the functions of zn_str.h with streams and searches of the standard library, and with
/// the definitions of the recognised forms on short texts.
#include <fuzzer/FuzzedDataProvider.h>
#include <tokenizer.h>
#include <zn_str.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <iomanip>
#include <limits>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "reference_engine.h"
#include "whitespace.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

using fuzz::expectSame;

constexpr int kLongest = 2000;

const reference::Engine isBool = reference::engine(definitions::isBool);
const reference::Engine validNumber = reference::engine(definitions::validNumber);
const reference::Engine quote = reference::engine(definitions::quote);

void trims(const std::string& text) {
  expectSame("leftTrim", zn_lib::leftTrim(text), withoutLeadingWhitespace(text));
  expectSame("rightTrim", zn_lib::rightTrim(text), withoutTrailingWhitespace(text));
  expectSame("allTrim", zn_lib::allTrim(text),
             withoutTrailingWhitespace(withoutLeadingWhitespace(text)));
}

void cases(const std::string& text) {
  std::string upper = text;
  std::string lower = text;
  for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  expectSame("stringToUpper", zn_lib::stringToUpper(text), upper);
  expectSame("stringToLower", zn_lib::stringToLower(text), lower);
}

std::string padded(const char* text, int width, char fill, std::ios_base::fmtflags side) {
  static std::ostringstream os;
  os.str("");
  os.setf(side, std::ios_base::adjustfield);
  os << std::setw(width) << std::setfill(fill) << text;
  return os.str();
}

void pads(const std::string& text, int width, char fill) {
  const std::string right = padded(text.c_str(), width, fill, std::ios_base::right);
  const std::string left = padded(text.c_str(), width, fill, std::ios_base::left);
  expectSame("rightPad", zn_lib::rightPad(text, width, fill), right);
  expectSame("leftPad", zn_lib::leftPad(text, width, fill), left);

  std::ostringstream inserted;
  zn_lib::operator<<(inserted << std::left << std::setw(width) << std::setfill(fill), text);
  expectSame("operator<<", inserted.str(), left);
  expectSame("inQuotes", zn_lib::inQuotes(text, fill), fill + std::string(text.c_str()) + fill);
}

/// Returns the number that strtod reads, and NaN if it reads nothing or the number is out of range.
double number(const std::string& text) {
  char* end = nullptr;
  errno = 0;
  const double value = std::strtod(text.c_str(), &end);
  const bool isNumber = end != text.c_str() && errno != ERANGE;
  return isNumber ? value : std::numeric_limits<double>::quiet_NaN();
}

void recognised(const std::string& text) {
  fuzz::expectSameNumber("stringToDouble", zn_lib::stringToDouble(text), number(text));
  const bool isTrue = zn_lib::stringToBool(text);
  const bool isNumber = zn_lib::isNumber(text);
  const std::string unquoted = zn_lib::removeQuotes(text);
  fuzz::expect("no quotes left", unquoted.find_first_of("`'\"") == std::string::npos);
  if (text.size() > fuzz::kShortText) return;
  expectSame("stringToBool", isTrue, std::regex_match(text, isBool));
  expectSame("isNumber", isNumber, std::regex_match(text, validNumber));
  expectSame("removeQuotes", unquoted, std::regex_replace(text, quote, ""));
}

void percent(double part, double whole, int decimals) {
  static std::ostringstream os;
  os.str("");
  os << std::fixed << std::setprecision(decimals) << part / whole * 100.0 << '%';
  expectSame("percentString", zn_lib::percentString(part, whole, decimals), os.str());
}

void repeats(const std::string& text, int character, int count) {
  std::string repeated;
  for (int i = 0; i < count; ++i) repeated += text;
  expectSame("replicateString", zn_lib::replicateString(text, count), repeated);
  try {
    const std::string copies = zn_lib::replicateChar(character, count);
    expectSame("replicateChar", copies, std::string(copies.size(), static_cast<char>(character)));
    expectSame("copies", static_cast<int>(copies.size()), count);
  } catch (const std::length_error&) {
    fuzz::expect("only a negative count may throw", count < 0);
  }
}

void bytes(const std::string& text, int from, int to) {
  std::string replaced, removed;
  for (const char c : text) {
    const bool isHit = static_cast<signed char>(c) == from;
    replaced += isHit ? static_cast<char>(to) : c;
    if (!isHit) removed += c;
  }
  expectSame("replaceChar", zn_lib::replaceChar(text, from, to), replaced);
  expectSame("removeChar", zn_lib::removeChar(text, from), removed);
}

void searches(const std::string& text, const std::string& search, const std::string& other) {
  std::string replaced = text;
  const std::size_t at = text.find(search);
  if (at < text.size()) replaced = text.substr(0, at) + other + text.substr(at + search.size());
  expectSame("replaceString", zn_lib::replaceString(text, search, other), replaced);

  const bool found = at < text.size() || text.find(other) < text.size();
  expectSame("findStrings", zn_lib::findStrings(text, {search, other}), found);
  expectSame("an empty list", zn_lib::findStrings(text, {}), false);
}

/// Returns a number up to `most`: mostly a small one, but any other number too.
int consumeSize(FuzzedDataProvider& input, int most) {
  constexpr int small = 30;
  switch (input.ConsumeIntegralInRange(0, 7)) {
    case 6:
      return input.ConsumeIntegralInRange(0, most);
    case 7:
      return input.ConsumeIntegralInRange(INT_MIN, most);
    default:
      return input.ConsumeIntegralInRange(-1, small);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const int group = input.ConsumeIntegralInRange(0, 5);
  const int width = consumeSize(input, kLongest);
  const int count = consumeSize(input, kLongest / 10);
  const int decimals = consumeSize(input, kLongest);
  const char fill = input.ConsumeIntegral<char>();
  const int from = input.ConsumeBool() ? fill : input.ConsumeIntegral<int>();
  const int to = input.ConsumeIntegral<int>();
  double parts[2] = {};
  input.ConsumeData(parts, sizeof parts);
  const std::string search = input.ConsumeRandomLengthString(size);
  const std::string other = input.ConsumeRandomLengthString(size);
  const std::string text = input.ConsumeRemainingBytesAsString();

  switch (group) {
    case 0:
      trims(text);
      cases(text);
      bytes(text, from, to);
      break;
    case 1:
      pads(text, width, fill);
      break;
    case 2:
      recognised(text);
      break;
    case 3:
      percent(parts[0], parts[1], decimals);
      break;
    case 4:
      repeats(other, to, count);
      break;
    default:
      searches(text, search, other);
      break;
  }
  return 0;
}
