/// Recognising forms, compared with the regular expressions that define them, and rewriting texts,
/// compared with fast libraries and with loops written by hand.
#include <strings.h>
#include <zn_str.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <regex>
#include <string>
#include <vector>

#include "../src/udf/internal/definitions.h"
#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_ABSL
#include <absl/strings/ascii.h>
#include <absl/strings/match.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_replace.h>
#endif
#ifdef ZN_UDF_HAVE_BOOST
#include <boost/algorithm/string/replace.hpp>
#endif
#ifdef ZN_UDF_HAVE_FMT
#include <fmt/format.h>
#endif
#ifdef ZN_UDF_HAVE_RE2
#include <re2/re2.h>
#endif

namespace {

namespace definitions = zn_lib::internal::definitions;

using bench::addRow;
using bench::addScan;

bool isQuote(char c) { return c == '`' || c == '\'' || c == '"'; }

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

/// Returns `text` without the characters for which `drop` is true, by a simple loop.
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

/// Returns whether `text` has only characters of numbers, in any order.
bool hasCharactersOfNumbers(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    return isDigit(c) || c == ',' || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E';
  });
}

void addNumberRows(const std::string& name, const std::string& text) {
  addRow(name + "/zn_udf", text, [](const std::string& t) { return zn_lib::isNumber(t); });
  addRow(name + "/baseline:hand_loop", text, hasCharactersOfNumbers);
  const std::regex pattern(definitions::validNumber.expression);
  addRow(name + "/std_regex", text,
         [pattern](const std::string& t) { return std::regex_match(t, pattern); });
#ifdef ZN_UDF_HAVE_RE2
  static const RE2 re2(definitions::validNumber.expression);
  addRow(name + "/RE2", text, [](const std::string& t) { return RE2::FullMatch(t, re2); });
#endif
}

/// Returns whether `text` is one of the keywords.
bool isKeyword(const std::string& text) {
  const auto is = [&](const char* keyword) { return strcasecmp(text.c_str(), keyword) == 0; };
  switch (text.size()) {
    case 1:
      return is("y") || is("t") || is("1");
    case 2:
      return is("on");
    case 3:
      return is("yes") || is(".t.");
    case 4:
      return is("true");
    default:
      return false;
  }
}

void addBoolRows(const std::string& text) {
  const std::string name = "stringToBool_" + text;
  addRow(name + "/zn_udf", text, [](const std::string& t) { return zn_lib::stringToBool(t); });
  addRow(name + "/baseline:strcasecmp", text, isKeyword);
  const std::regex pattern(definitions::isBool.expression, definitions::isBool.grammar);
  addRow(name + "/std_regex", text,
         [pattern](const std::string& t) { return std::regex_match(t, pattern); });
#ifdef ZN_UDF_HAVE_ABSL
  // It knows five words for true and five for false, and rejects others.
  addRow(name + "/absl_SimpleAtob", text, [](const std::string& t) {
    bool value = false;
    return absl::SimpleAtob(t, &value) && value;
  });
#endif
}

void addTrimRows() {
  const std::string line = "   a line of text with spaces around it  \r\n";
  constexpr std::size_t leading = 3;
  constexpr std::size_t inner = 36;
  addRow("allTrim_43B/zn_udf", line, [](const std::string& t) { return zn_lib::allTrim(t); });
  addRow("allTrim_43B/baseline:substr", line,
         [](const std::string& t) { return t.substr(leading, inner); });
#ifdef ZN_UDF_HAVE_ABSL
  addRow("allTrim_43B/absl_StripAsciiWhitespace", line,
         [](const std::string& t) { return std::string(absl::StripAsciiWhitespace(t)); });
#endif
  addRow("leftTrim_43B/zn_udf", line, [](const std::string& t) { return zn_lib::leftTrim(t); });
  addRow("leftTrim_43B/baseline:substr", line,
         [](const std::string& t) { return t.substr(leading); });
#ifdef ZN_UDF_HAVE_ABSL
  addRow("leftTrim_43B/absl_StripLeadingAsciiWhitespace", line,
         [](const std::string& t) { return std::string(absl::StripLeadingAsciiWhitespace(t)); });
#endif

  const std::string whitespace = bench::mebibyteOf(" \t\r\n");
  const auto handLoop = [](const std::string& t) {
    std::size_t first = 0;
    while (first != t.size() && isSpace(t[first])) ++first;
    std::size_t last = t.size();
    while (last != first && isSpace(t[last - 1])) --last;
    return t.substr(first, last - first);
  };
  addScan("allTrim_1MiB_of_whitespace/zn_udf", whitespace,
          [](const std::string& t) { return zn_lib::allTrim(t); });
  addScan("allTrim_1MiB_of_whitespace/baseline:hand_loop", whitespace, handLoop);
#ifdef ZN_UDF_HAVE_ABSL
  addScan("allTrim_1MiB_of_whitespace/absl_StripAsciiWhitespace", whitespace,
          [](const std::string& t) { return std::string(absl::StripAsciiWhitespace(t)); });
#endif
}

void addUpperRows(const std::string& name, const std::string& text) {
  addScan(name + "/zn_udf", text, [](const std::string& t) { return zn_lib::stringToUpper(t); });
  addScan(name + "/baseline:hand_loop", text, [](const std::string& t) {
    std::string result = t;
    for (char& c : result) c = upper(c);
    return result;
  });
#ifdef ZN_UDF_HAVE_ABSL
  addScan(name + "/absl_AsciiStrToUpper", text,
          [](const std::string& t) { return absl::AsciiStrToUpper(t); });
#endif
}

std::string copyOf(const std::string& text) { return text; }

void addRemovalRows(const std::string& size, const std::string& text) {
  const std::string quotes = "removeQuotes_" + size;
  addScan(quotes + "/zn_udf", text, [](const std::string& t) { return zn_lib::removeQuotes(t); });
  addScan(quotes + "/baseline:memcpy", text, copyOf);
  addScan(quotes + "/push_back_loop", text,
          [](const std::string& t) { return keepOthers(t, isQuote); });
  addScan(quotes + "/erase_remove", text,
          [](const std::string& t) { return eraseRemove(t, isQuote); });
#ifdef ZN_UDF_HAVE_ABSL
  addScan(quotes + "/absl_StrReplaceAll", text, [](const std::string& t) {
    return absl::StrReplaceAll(t, {{"`", ""}, {"'", ""}, {"\"", ""}});
  });
#endif

  const std::string comma = "removeChar_" + size;
  const auto isComma = [](char c) { return c == ','; };
  addScan(comma + "/zn_udf", text, [](const std::string& t) { return zn_lib::removeChar(t, ','); });
  addScan(comma + "/baseline:memcpy", text, copyOf);
  addScan(comma + "/push_back_loop", text,
          [isComma](const std::string& t) { return keepOthers(t, isComma); });
  addScan(comma + "/erase_remove", text,
          [isComma](const std::string& t) { return eraseRemove(t, isComma); });
#ifdef ZN_UDF_HAVE_ABSL
  addScan(comma + "/absl_StrReplaceAll", text,
          [](const std::string& t) { return absl::StrReplaceAll(t, {{",", ""}}); });
#endif
}

void addReplacementRows(const std::string& text) {
  addScan("replaceChar_1MiB/zn_udf", text,
          [](const std::string& t) { return zn_lib::replaceChar(t, ',', ';'); });
  addScan("replaceChar_1MiB/baseline:memcpy", text, copyOf);
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
  const std::size_t position = sentence.find(search);
  addRow("replaceString_52B/baseline:append", sentence, [=](const std::string& t) {
    std::string result;
    result.reserve(t.size() + replacement.size() - search.size());
    result.append(t, 0, position).append(replacement).append(t, position + search.size());
    return result;
  });
  addRow("replaceString_52B/find_replace", sentence, [search, replacement](const std::string& t) {
    std::string result = t;
    const std::size_t found = result.find(search);
    if (found != std::string::npos) result.replace(found, search.size(), replacement);
    return result;
  });
#ifdef ZN_UDF_HAVE_BOOST
  addRow("replaceString_52B/boost_replace_first_copy", sentence,
         [search, replacement](const std::string& t) {
           return boost::algorithm::replace_first_copy(t, search, replacement);
         });
#endif
}

// ---- Search

struct Search {
  std::string text;
  std::vector<std::string> list;
};

bool occurs(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// The library takes the list by value. A call with a list that the caller keeps therefore copies
/// it, and the peers copy it, too. The baseline searches in place.
void addSearchRows(const std::string& name, const Search& search) {
  addRow(name + "/zn_udf", search,
         [](const Search& s) { return zn_lib::findStrings(s.text, s.list); });
  addRow(name + "/baseline:find_without_copy", search, [](const Search& s) {
    return std::any_of(s.list.begin(), s.list.end(),
                       [&](const std::string& part) { return occurs(s.text, part); });
  });
  addRow(name + "/std_find", search, [](const Search& s) {
    const std::vector<std::string> list = s.list;
    return std::any_of(list.begin(), list.end(),
                       [&](const std::string& part) { return occurs(s.text, part); });
  });
#ifdef ZN_UDF_HAVE_ABSL
  addRow(name + "/absl_StrContains", search, [](const Search& s) {
    const std::vector<std::string> list = s.list;
    return std::any_of(list.begin(), list.end(),
                       [&](const std::string& part) { return absl::StrContains(s.text, part); });
  });
#endif
}

/// Adds rows for a text of 1 KiB and a list of which one text near the end occurs, or none.
void addSearchRows() {
  constexpr std::size_t textSize = 1024;
  constexpr std::size_t partSize = 8;
  constexpr std::size_t parts = 100;
  constexpr std::size_t found = 97;
  const std::string letters =
      bench::randomText("abcdefghijklmnopqrstuvwxyz", textSize + parts * partSize);
  Search search = {letters.substr(0, textSize), {}};
  for (std::size_t i = textSize; i < letters.size(); i += partSize) {
    search.list.push_back(letters.substr(i, partSize));
  }
  addSearchRows("findStrings_none_of_100", search);
  search.list[found] = search.text.substr(textSize / 2, partSize);
  addSearchRows("findStrings_98th_of_100", search);
}

// ---- Formatting

void addPaddingRows() {
  const std::string number = "1234";
  constexpr int width = 12;
  addRow("rightPad_4B_to_12B/zn_udf", number,
         [](const std::string& t) { return zn_lib::rightPad(t, width, '0'); });
  addRow("rightPad_4B_to_12B/baseline:memcpy", number, [](const std::string& t) {
    std::string result(width, '0');
    t.copy(result.data() + width - t.size(), t.size());
    return result;
  });
  addRow("rightPad_4B_to_12B/insert", number, [](const std::string& t) {
    std::string result = t;
    result.insert(0, width - t.size(), '0');
    return result;
  });
#ifdef ZN_UDF_HAVE_FMT
  addRow("rightPad_4B_to_12B/fmt", number,
         [width](const std::string& t) { return fmt::format("{:0>{}}", t, width); });
#endif
}

void addPercentRows() {
  constexpr double part = 1.0;
  constexpr double whole = 3.0;
  constexpr int decimals = 2;
  const std::string name = "percentString_2_decimals";
  addRow(name + "/zn_udf", part,
         [](double p) { return zn_lib::percentString(p, whole, decimals); });
  addRow(name + "/baseline:to_chars", part, [](double p) {
    std::array<char, 32> buffer;
    char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), p / whole * 100.0,
                                    std::chars_format::fixed, decimals)
                          .ptr;
    *end = '%';
    return std::string(buffer.data(), end + 1);
  });
  addRow(name + "/snprintf", part, [](double p) {
    std::array<char, 32> buffer;
    std::snprintf(buffer.data(), buffer.size(), "%.*f%%", decimals, p / whole * 100.0);
    return std::string(buffer.data());
  });
#ifdef ZN_UDF_HAVE_FMT
  addRow(name + "/fmt", part,
         [decimals](double p) { return fmt::format("{:.{}f}%", p / whole * 100.0, decimals); });
#endif
}

template <class Operation>
void addTextGrowth(const std::string& work, const std::string& alphabet, Operation operation,
                   const std::string& implementation = "zn_udf") {
  bench::addGrowth(
      work, bench::kSmallText, bench::kLargeText,
      [alphabet](std::size_t size) { return bench::randomText(alphabet, size); }, operation,
      implementation);
}

void addGrowthRows() {
  // The cost of the memory of a result.
  addTextGrowth("copy", "abcdefgh", copyOf, "baseline:memcpy");
  addTextGrowth("allTrim_of_whitespace", " \t\r\n",
                [](const std::string& t) { return zn_lib::allTrim(t); });
  addTextGrowth("stringToUpper", "abcdefgh ",
                [](const std::string& t) { return zn_lib::stringToUpper(t); });
  addTextGrowth("isNumber", "0123456789", [](const std::string& t) { return zn_lib::isNumber(t); });
  addTextGrowth("removeQuotes", "abcdefgh'\"",
                [](const std::string& t) { return zn_lib::removeQuotes(t); });
  addTextGrowth("replaceChar", "abcdefgh,",
                [](const std::string& t) { return zn_lib::replaceChar(t, ',', ';'); });
  // Each position of the text matches all but the last character of the search.
  addTextGrowth("replaceString_near_misses", "a",
                [](const std::string& t) { return zn_lib::replaceString(t, "aaaaaaab", ""); });
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
  addRemovalRows("1MiB", text);
  // As in prose, one character in 100 is a comma and one is a quote.
  const std::string letters = "abcdefghijklmnopqrstuvwxyz";
  const std::string prose = letters + letters + letters + std::string(18, ' ') + "..,'";
  addRemovalRows("1MiB_sparse", bench::mebibyteOf(prose));
  addReplacementRows(text);
  addSearchRows();
  addPaddingRows();
  addPercentRows();
  addGrowthRows();
  return bench::runRows(argc, argv);
}
