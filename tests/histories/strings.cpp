// Calls of the string functions.
#include <zn_str.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "pools.h"
#include "whitespace.h"

namespace histories {
namespace {

std::string upToNul(const std::string& text) { return text.c_str(); }

std::string cased(std::string text, char first, char last, int shift) {
  for (char& c : text) {
    if (c >= first && c <= last) c = static_cast<char>(c + shift);
  }
  return text;
}

std::string filling(const std::string& text, int width, char fill) {
  const int missing = width - static_cast<int>(upToNul(text).size());
  return std::string(static_cast<std::size_t>(std::max(missing, 0)), fill);
}

/// Reads an optional sign, digits each of which one comma may follow, a fraction and an exponent.
bool looksLikeNumber(const std::string& text) {
  std::size_t at = 0;
  const auto next = [&] { return at < text.size() ? text[at] : '\0'; };
  const auto isDigit = [&] { return at < text.size() && next() >= '0' && next() <= '9'; };
  if (next() == '-') ++at;
  while (isDigit()) {
    ++at;
    if (next() == ',') ++at;
  }
  if (next() == '.') {
    ++at;
    if (!isDigit()) return false;
    while (isDigit()) ++at;
  }
  if (next() == 'e' || next() == 'E') {
    ++at;
    if (next() != '+' && next() != '-') return false;
    ++at;
    if (!isDigit()) return false;
    while (isDigit()) ++at;
  }
  return at == text.size();
}

double leadingDouble(const std::string& text) {
  // std::stod is the definition, with its locale.
  try {
    return std::stod(text);
  } catch (const std::logic_error&) {
    return std::numeric_limits<double>::quiet_NaN();
  }
}

std::string without(const std::string& text, const std::string& bytes) {
  std::string rest;
  for (const char c : text) {
    if (bytes.find(c) == std::string::npos) rest += c;
  }
  return rest;
}

std::string fixed(double value, int decimals) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out.setf(std::ios_base::fixed, std::ios_base::floatfield);
  out.precision(decimals);
  out << value;
  return out.str();
}

void trim(Step& step) {
  const std::string text = anyText(step.choose);
  switch (step.choose.below(3)) {
    case 0:
      step.call("allTrim", text);
      step.same(withoutTrailingWhitespace(withoutLeadingWhitespace(text)), zn_lib::allTrim(text));
      break;
    case 1:
      step.call("leftTrim", text);
      step.same(withoutLeadingWhitespace(text), zn_lib::leftTrim(text));
      break;
    default:
      step.call("rightTrim", text);
      step.same(withoutTrailingWhitespace(text), zn_lib::rightTrim(text));
  }
}

void changeCase(Step& step) {
  const std::string text = anyText(step.choose);
  if (step.choose.flag()) {
    step.call("stringToUpper", text);
    step.same(cased(text, 'a', 'z', 'A' - 'a'), zn_lib::stringToUpper(text));
  } else {
    step.call("stringToLower", text);
    step.same(cased(text, 'A', 'Z', 'a' - 'A'), zn_lib::stringToLower(text));
  }
}

void pad(Step& step) {
  const std::string text = anyText(step.choose);
  const int width = std::min(anyInt(step.choose), 5000);
  const char fill = anyChar(step.choose);
  if (step.choose.flag()) {
    step.call("rightPad", text, width, fill);
    step.same(filling(text, width, fill) + upToNul(text), zn_lib::rightPad(text, width, fill));
  } else {
    step.call("leftPad", text, width, fill);
    step.same(upToNul(text) + filling(text, width, fill), zn_lib::leftPad(text, width, fill));
  }
}

void recognise(Step& step) {
  const std::string text = anyText(step.choose);
  switch (step.choose.below(3)) {
    case 0: {
      step.call("stringToBool", text);
      const std::string lower = cased(text, 'A', 'Z', 'a' - 'A');
      bool isTrue = false;
      for (const char* word : {"yes", "true", "on", "y", ".t.", "t", "1"}) {
        if (lower == word) isTrue = true;
      }
      step.same(isTrue, zn_lib::stringToBool(text));
      break;
    }
    case 1:
      step.call("stringToDouble", text);
      step.same(leadingDouble(text), zn_lib::stringToDouble(text));
      break;
    default:
      step.call("isNumber", text);
      step.same(looksLikeNumber(text), zn_lib::isNumber(text));
  }
}

void percent(Step& step) {
  const double part = anyDouble(step.choose);
  const double whole = anyDouble(step.choose);
  const int decimals = static_cast<int>(step.choose.below(12));
  step.call("percentString", part, whole, decimals);
  std::string text = zn_lib::percentString(part, whole, decimals);
  if (text == "-nan%") text = "nan%";
  step.same(fixed(part / whole * 100.0, decimals) + "%", text);
}

void replicate(Step& step) {
  if (step.choose.flag()) {
    const std::string text = anyText(step.choose);
    const int count = std::min(anyInt(step.choose), 20);
    step.call("replicateString", text, count);
    std::string expected;
    for (int i = 0; i < count; ++i) expected += text;
    step.same(expected, zn_lib::replicateString(text, count));
    return;
  }
  const int character = anyInt(step.choose);
  const int count = std::min(anyInt(step.choose), 400);
  step.call("replicateChar", character, count);
  std::string actual = "throws";
  try {
    actual = zn_lib::replicateChar(character, count);
  } catch (const std::length_error&) {
  }
  const char c = static_cast<char>(character);
  step.same(count < 0 ? "throws" : std::string(static_cast<std::size_t>(count), c), actual);
}

void rewrite(Step& step) {
  const std::string text = anyText(step.choose);
  switch (step.choose.below(5)) {
    case 0: {
      const int from = step.choose.flag() ? anyInt(step.choose) : anyChar(step.choose);
      const int to = step.choose.flag() ? anyInt(step.choose) : anyChar(step.choose);
      step.call("replaceChar", text, from, to);
      std::string expected = text;
      for (char& c : expected) {
        if (static_cast<signed char>(c) == from) c = static_cast<char>(to);
      }
      step.same(expected, zn_lib::replaceChar(text, from, to));
      break;
    }
    case 1: {
      const int character = step.choose.flag() ? anyInt(step.choose) : anyChar(step.choose);
      step.call("removeChar", text, character);
      std::string expected;
      for (const char c : text) {
        if (static_cast<signed char>(c) != character) expected += c;
      }
      step.same(expected, zn_lib::removeChar(text, character));
      break;
    }
    case 2:
      step.call("removeQuotes", text);
      step.same(without(text, "`'\""), zn_lib::removeQuotes(text));
      break;
    case 3: {
      const char mark = anyChar(step.choose);
      step.call("inQuotes", text, mark);
      step.same(mark + upToNul(text) + mark, zn_lib::inQuotes(text, mark));
      break;
    }
    default: {
      const std::string search = anyText(step.choose);
      const std::string replacement = anyText(step.choose);
      step.call("replaceString", text, search, replacement);
      const std::size_t at = text.empty() ? std::string::npos : text.find(search);
      const std::string expected = at == std::string::npos ? text
                                                           : text.substr(0, at) + replacement +
                                                                 text.substr(at + search.size());
      step.same(expected, zn_lib::replaceString(text, search, replacement));
    }
  }
}

void find(Step& step) {
  const std::string text = anyText(step.choose);
  std::vector<std::string> list;
  for (unsigned size = step.choose.below(4); size > 0; --size) list.push_back(anyText(step.choose));
  step.call("findStrings", text, list);
  const bool expected = std::any_of(list.begin(), list.end(), [&](const std::string& one) {
    return !text.empty() && text.find(one) != std::string::npos;
  });
  step.same(expected, zn_lib::findStrings(text, list));
}

}  // namespace

void addStrings(Kinds& kinds) {
  kinds.push_back({"leftTrim rightTrim allTrim", trim});
  kinds.push_back({"stringToUpper stringToLower", changeCase});
  kinds.push_back({"rightPad leftPad", pad});
  kinds.push_back({"stringToBool stringToDouble isNumber", recognise});
  kinds.push_back({"percentString", percent});
  kinds.push_back({"replicateChar replicateString", replicate});
  kinds.push_back({"replaceChar removeChar removeQuotes inQuotes replaceString", rewrite});
  kinds.push_back({"findStrings", find});
}

}  // namespace histories
