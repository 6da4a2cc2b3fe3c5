/// Strings: recognition against the patterns that define it, rewriting against hand-written loops
/// and fast libraries.
#include <zn_str.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <regex>
#include <string>

#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_ABSL
#include <absl/strings/ascii.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_replace.h>
#endif
#ifdef ZN_UDF_HAVE_RE2
#include <re2/re2.h>
#endif

namespace {

using bench::addRow;
using bench::addScan;

// The patterns that the library's header describes in words.
constexpr char kNumberPattern[] = R"(-?((\d),?)*(\.\d+)?([eE][-+]\d+)?)";
constexpr char kBoolPattern[] = R"((yes|true|on|y|\.t\.|t|1))";

bool isQuote(char c) { return c == '`' || c == '\'' || c == '"'; }

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

/// A text without the characters for which `drop` is true, as one writes it without much thought.
template <class Drop>
std::string keepOthers(const std::string& text, Drop drop) {
  std::string kept;
  for (const char c : text) {
    if (!drop(c)) kept += c;
  }
  return kept;
}

template <class Drop>
std::string eraseRemove(std::string text, Drop drop) {
  text.erase(std::remove_if(text.begin(), text.end(), drop), text.end());
  return text;
}

void addNumberRows(const std::string& name, const std::string& text) {
  addRow(name + "/zn_udf", text, [](const std::string& t) { return zn_lib::isNumber(t); });
  const std::regex pattern(kNumberPattern);
  addRow(name + "/std_regex", text,
         [pattern](const std::string& t) { return std::regex_match(t, pattern); });
#ifdef ZN_UDF_HAVE_RE2
  static const RE2 re2(kNumberPattern);
  addRow(name + "/RE2", text, [](const std::string& t) { return RE2::FullMatch(t, re2); });
#endif
}

void addBoolRows(const std::string& text) {
  const std::string name = "stringToBool_" + text;
  addRow(name + "/zn_udf", text, [](const std::string& t) { return zn_lib::stringToBool(t); });
  const std::regex pattern(kBoolPattern, std::regex::ECMAScript | std::regex::icase);
  addRow(name + "/std_regex", text,
         [pattern](const std::string& t) { return std::regex_match(t, pattern); });
#ifdef ZN_UDF_HAVE_ABSL
  addRow(name + "/absl_SimpleAtob", text, [](const std::string& t) {
    bool value = false;
    return absl::SimpleAtob(t, &value) && value;
  });
#endif
}

void addTrimRows() {
  const std::string line = "   a line of text with blanks around it  \r\n";
  addRow("allTrim_43B/zn_udf", line, [](const std::string& t) { return zn_lib::allTrim(t); });
#ifdef ZN_UDF_HAVE_ABSL
  addRow("allTrim_43B/absl_StripAsciiWhitespace", line,
         [](const std::string& t) { return std::string(absl::StripAsciiWhitespace(t)); });
#endif
  addRow("leftTrim_43B/zn_udf", line, [](const std::string& t) { return zn_lib::leftTrim(t); });
#ifdef ZN_UDF_HAVE_ABSL
  addRow("leftTrim_43B/absl_StripLeadingAsciiWhitespace", line,
         [](const std::string& t) { return std::string(absl::StripLeadingAsciiWhitespace(t)); });
#endif

  const std::string blanks = bench::mebibyteOf(" \t\r\n");
  const auto handLoop = [](const std::string& t) {
    std::size_t first = 0;
    while (first != t.size() && isBlank(t[first])) ++first;
    std::size_t last = t.size();
    while (last != first && isBlank(t[last - 1])) --last;
    return t.substr(first, last - first);
  };
  addScan("allTrim_1MiB_of_blanks/zn_udf", blanks,
          [](const std::string& t) { return zn_lib::allTrim(t); });
  addScan("allTrim_1MiB_of_blanks/hand_loop", blanks, handLoop);
#ifdef ZN_UDF_HAVE_ABSL
  addScan("allTrim_1MiB_of_blanks/absl_StripAsciiWhitespace", blanks,
          [](const std::string& t) { return std::string(absl::StripAsciiWhitespace(t)); });
#endif
}

void addUpperRows(const std::string& name, const std::string& text) {
  addScan(name + "/zn_udf", text, [](const std::string& t) { return zn_lib::stringToUpper(t); });
  addScan(name + "/hand_loop", text, [](const std::string& t) {
    std::string result = t;
    for (char& c : result) c = upper(c);
    return result;
  });
#ifdef ZN_UDF_HAVE_ABSL
  addScan(name + "/absl_AsciiStrToUpper", text,
          [](const std::string& t) { return absl::AsciiStrToUpper(t); });
#endif
}

void addRemovalRows(const std::string& text) {
  addScan("removeQuotes_1MiB/zn_udf", text,
          [](const std::string& t) { return zn_lib::removeQuotes(t); });
  addScan("removeQuotes_1MiB/hand_loop", text,
          [](const std::string& t) { return keepOthers(t, isQuote); });
  addScan("removeQuotes_1MiB/erase_remove", text,
          [](const std::string& t) { return eraseRemove(t, isQuote); });
#ifdef ZN_UDF_HAVE_ABSL
  addScan("removeQuotes_1MiB/absl_StrReplaceAll", text, [](const std::string& t) {
    return absl::StrReplaceAll(t, {{"`", ""}, {"'", ""}, {"\"", ""}});
  });
#endif

  const auto isComma = [](char c) { return c == ','; };
  addScan("removeChar_1MiB/zn_udf", text,
          [](const std::string& t) { return zn_lib::removeChar(t, ','); });
  addScan("removeChar_1MiB/hand_loop", text,
          [isComma](const std::string& t) { return keepOthers(t, isComma); });
  addScan("removeChar_1MiB/erase_remove", text,
          [isComma](const std::string& t) { return eraseRemove(t, isComma); });
}

void addReplacementRows(const std::string& text) {
  addScan("replaceChar_1MiB/zn_udf", text,
          [](const std::string& t) { return zn_lib::replaceChar(t, ',', ';'); });
  addScan("replaceChar_1MiB/std_replace", text, [](const std::string& t) {
    std::string result = t;
    std::replace(result.begin(), result.end(), ',', ';');
    return result;
  });

  const std::string sentence = "The quick brown fox jumps over the lazy dog at night";
  const std::string search = "lazy";
  const std::string replacement = "sleeping";
  addRow("replaceString_52B/zn_udf", sentence, [search, replacement](const std::string& t) {
    return zn_lib::replaceString(t, search, replacement);
  });
  addRow("replaceString_52B/find_replace", sentence, [search, replacement](const std::string& t) {
    std::string result = t;
    const std::size_t position = result.find(search);
    if (position != std::string::npos) result.replace(position, search.size(), replacement);
    return result;
  });
}

void addFormattingRows() {
  const std::string number = "1234";
  constexpr int width = 12;
  addRow("rightPad_4B_to_12B/zn_udf", number,
         [](const std::string& t) { return zn_lib::rightPad(t, width, '0'); });
  addRow("rightPad_4B_to_12B/insert", number, [](const std::string& t) {
    std::string result = t;
    result.insert(0, width - t.size(), '0');
    return result;
  });

  constexpr double part = 1.0;
  constexpr double whole = 3.0;
  addRow("percentString_2_decimals/zn_udf", part,
         [](double p) { return zn_lib::percentString(p, whole, 2); });
  addRow("percentString_2_decimals/snprintf", part, [](double p) {
    std::array<char, 32> buffer;
    std::snprintf(buffer.data(), buffer.size(), "%.*f%%", 2, p / whole * 100.0);
    return std::string(buffer.data());
  });
}

}  // namespace

int main(int argc, char** argv) {
  addNumberRows("isNumber_integer", "12");
  addNumberRows("isNumber_grouped", "-1,234.56");
  addNumberRows("isNumber_word", "hello");
  addNumberRows("isNumber_40_digits", "1234567890123456789012345678901234567890");
  addNumberRows("isNumber_exponent", "1e-7");
  for (const char* text : {"true", "YES", "no", "false"}) addBoolRows(text);
  addTrimRows();
  addUpperRows("stringToUpper_20B", "a text of 20 letters");
  const std::string text = bench::mebibyteOf("abcdefghijklmnopqrstuvwxyzABCDEFGHIJ ,,.`'\"");
  addUpperRows("stringToUpper_1MiB", text);
  addRemovalRows(text);
  addReplacementRows(text);
  addFormattingRows();
  return bench::runRows(argc, argv);
}
