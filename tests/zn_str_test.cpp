#include <gtest/gtest.h>
#include <zn_str.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <limits>
#include <locale>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "reference_engine.h"
#include "samples.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

using namespace std::string_literals;

TEST(ZnStr, HeaderExamples) {
  EXPECT_EQ(zn_lib::allTrim("  a b\r\n"), "a b");
  EXPECT_EQ(zn_lib::rightPad("7", 3, '0'), "007");
  EXPECT_EQ(zn_lib::rightPad("abcdef", 3, ' '), "abcdef");
  EXPECT_EQ(zn_lib::leftPad("ab", 5, '.'), "ab...");
  EXPECT_EQ(zn_lib::percentString(1, 3, 2), "33.33%");
  EXPECT_EQ(zn_lib::replaceString("a.b.c", ".", "/"), "a/b.c");
  EXPECT_EQ(zn_lib::replaceString("abc", "", "X"), "Xabc");
  EXPECT_EQ(zn_lib::replaceString("", "", "X"), "");
}

TEST(Trim, RemovesWhitespaceOfTheCLocaleOnly) {
  const struct {
    const char* what;
    std::string text, left, right, all;
  } cases[] = {
      {"both ends", "  \t a b\r\n", "a b\r\n", "  \t a b", "a b"},
      {"all whitespace", " \t\n\v\f\rx \t\n\v\f\r", "x \t\n\v\f\r", " \t\n\v\f\rx", "x"},
      {"only whitespace", " \t\n", "", "", ""},
      {"nothing", "", "", "", ""},
      {"no whitespace", "abc", "abc", "abc", "abc"},
      {"0xA0 is no whitespace", "\xA0 x\xA0", "\xA0 x\xA0", "\xA0 x\xA0", "\xA0 x\xA0"},
      {"0x85 is no whitespace", "\x85x", "\x85x", "\x85x", "\x85x"},
      {"NUL is no whitespace", " \0 x \0 "s, "\0 x \0 "s, " \0 x \0"s, "\0 x \0"s},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::leftTrim(c.text), c.left) << c.what;
    EXPECT_EQ(zn_lib::rightTrim(c.text), c.right) << c.what;
    EXPECT_EQ(zn_lib::allTrim(c.text), c.all) << c.what;
  }
}

TEST(Case, ChangesAsciiLettersOnly) {
  const std::string upper = zn_lib::stringToUpper(everyByte());
  const std::string lower = zn_lib::stringToLower(everyByte());
  ASSERT_EQ(upper.size(), 256u);
  ASSERT_EQ(lower.size(), 256u);
  for (std::size_t i = 0; i < 256; ++i) {
    const char c = static_cast<char>(i);
    EXPECT_EQ(upper[i], i >= 'a' && i <= 'z' ? static_cast<char>(c - 32) : c) << i;
    EXPECT_EQ(lower[i], i >= 'A' && i <= 'Z' ? static_cast<char>(c + 32) : c) << i;
  }
}

TEST(Pad, AlignsTheTextToTheNamedSide) {
  const struct {
    std::string text;
    int width;
    char fill;
    std::string right, left;
  } cases[] = {
      {"7", 3, '0', "007", "700"},
      {"ab", 5, '.', "...ab", "ab..."},
      {"abcdef", 3, ' ', "abcdef", "abcdef"},
      {"abc", 3, ' ', "abc", "abc"},
      {"abc", 0, 'x', "abc", "abc"},
      {"abc", -5, 'x', "abc", "abc"},
      {"abc", std::numeric_limits<int>::min(), 'x', "abc", "abc"},
      {"", 2, '-', "--", "--"},
      {"", 0, 'x', "", ""},
      {"", -1, 'x', "", ""},
      {"a", 3, '\0', "\0\0a"s, "a\0\0"s},
      {"a", 2, '\xFF',
       "\xFF"
       "a",
       "a\xFF"},
      {"ab\0cd"s, 4, '.', "..ab", "ab.."},
      {"ab\0cd"s, 1, '.', "ab", "ab"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::rightPad(c.text, c.width, c.fill), c.right) << c.text << ' ' << c.width;
    EXPECT_EQ(zn_lib::leftPad(c.text, c.width, c.fill), c.left) << c.text << ' ' << c.width;
  }
}

// ---- Recognised forms, compared with their definitions

const reference::Engine isBool = reference::engine(definitions::isBool);
const reference::Engine validNumber = reference::engine(definitions::validNumber);

TEST(StringToBool, Examples) {
  for (const char* text :
       {"yes", "YES", "True", "on", "On", "Y", "y", ".t.", ".T.", "t", "T", "1"}) {
    EXPECT_TRUE(zn_lib::stringToBool(text)) << text;
  }
  for (const std::string& text :
       {"0"s, "no"s, "false"s, "yes "s, " yes"s, ""s, "10"s, "11"s, "yesyes"s, ".t"s, "xtx"s,
        "oN\n"s, "t\0"s, "\0"s, "off"s, "truee"s, "\0\0\0\4true"s}) {
    EXPECT_FALSE(zn_lib::stringToBool(text)) << text;
  }
}

TEST(StringToBool, AgreesWithItsDefinition) {
  int matches = 0;
  forEveryText("yYeEsStTrRuUoOnN.1 \n", 4, [&](const std::string& text) {
    const bool expected = std::regex_match(text, isBool);
    matches += expected;
    ASSERT_EQ(zn_lib::stringToBool(text), expected) << text;
  });
  EXPECT_EQ(matches, 8 + 16 + 4 + 2 + 2 + 2 + 1);
  forEveryText(everyByte(), 2, [](const std::string& text) {
    ASSERT_EQ(zn_lib::stringToBool(text), std::regex_match(text, isBool)) << text;
  });
}

TEST(IsNumber, Examples) {
  for (const char* text : {"", "-", "12", "-1,234.56", "1,", "1e-7", "1e+5", "1E-3", ".5", "1,2,3",
                           "1234,", "12,345", "1,.5", "-.5E+00", "e+1", "-e-1"}) {
    EXPECT_TRUE(zn_lib::isNumber(text)) << text;
  }
  for (const std::string& text :
       {"+1"s,  "1e7"s, "1."s,   ",1"s,    "1,,2"s,  " 1"s,  "1 "s,
        "--1"s, "1e+"s, "e"s,    "1e+5."s, "1e+5,"s, ".5,"s, "1.5.5"s,
        "1\n"s, "1\0"s, "\xB2"s, "nan"s,   "inf"s,   "0x1"s, "1e+5e+5"s}) {
    EXPECT_FALSE(zn_lib::isNumber(text)) << text;
  }
}

TEST(IsNumber, AgreesWithItsDefinition) {
  const auto agrees = [](const std::string& text) {
    ASSERT_EQ(zn_lib::isNumber(text), std::regex_match(text, validNumber)) << text;
  };
  forEveryText("09-+.,eE", 6, agrees);
  forEveryText("5-+.,e \n\0\xB2x"s, 5, agrees);
  forEveryText(everyByte(), 2, agrees);

  std::mt19937 random(1);
  std::uniform_int_distribution<std::size_t> length(7, 400);
  const std::string nearMisses[] = {"0123456789", "01234,", "5-+.,eE", "0123456789,.e+"};
  for (int i = 0; i < 20000; ++i) {
    agrees(randomText(random, nearMisses[i % 4], length(random)));
    // Numbers, and numbers with one changed byte.
    std::string number = "-" + randomText(random, "0123456789", length(random)) + "." +
                         randomText(random, "0123456789", length(random)) + "e-" +
                         randomText(random, "0123456789", length(random));
    agrees(number);
    number[random() % number.size()] = "0,.e+-x"[random() % 7];
    agrees(number);
  }
}

TEST(StringToDouble, MatchesStod) {
  // The only function whose result depends on the C locale.
  const std::string host = std::setlocale(LC_NUMERIC, nullptr);
  ASSERT_NE(std::setlocale(LC_NUMERIC, "C"), nullptr);
  const struct {
    const char* text;
    double value;
  } values[] = {{"3.5", 3.5},   {"  2e3x", 2000}, {"12abc", 12}, {"-7", -7},      {"1,5", 1},
                {"0x1p3", 8.0}, {"\t\n 1", 1},    {"+.5", 0.5},  {"1e308", 1e308}};
  for (const auto& c : values) EXPECT_EQ(zn_lib::stringToDouble(c.text), c.value) << c.text;
  EXPECT_EQ(zn_lib::stringToDouble("12\0"
                                   "34"s),
            12);
  EXPECT_EQ(zn_lib::stringToDouble("inf"), std::numeric_limits<double>::infinity());
  for (const char* text : {"abc", "", "1e999", "-1e999", "1e-999", "nan", "NAN", "-", ".", " "}) {
    EXPECT_TRUE(std::isnan(zn_lib::stringToDouble(text))) << text;
  }
  ASSERT_NE(std::setlocale(LC_NUMERIC, host.c_str()), nullptr);
}

TEST(PercentString, Examples) {
  EXPECT_EQ(zn_lib::percentString(1, 4, 0), "25%");
  EXPECT_EQ(zn_lib::percentString(1, 8, 3), "12.500%");
  EXPECT_EQ(zn_lib::percentString(-1, 3, 1), "-33.3%");
  EXPECT_EQ(zn_lib::percentString(12345, 1, 0), "1234500%");
  EXPECT_EQ(zn_lib::percentString(1, 0, 2), "inf%");
  EXPECT_EQ(zn_lib::percentString(-1, 0, 2), "-inf%");
  EXPECT_EQ(zn_lib::percentString(std::numeric_limits<double>::quiet_NaN(), 1, 2), "nan%");
}

TEST(PercentString, MatchesStreamOutput) {
  const auto streamed = [](double part, double whole, int decimals) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.setf(std::ios_base::fixed, std::ios_base::floatfield);
    stream.precision(decimals);
    stream << part / whole * 100.0 << '%';
    return stream.str();
  };
  const double max = std::numeric_limits<double>::max();
  const double least = std::numeric_limits<double>::denorm_min();
  const volatile double zero =
      0.0;  // volatile, so that the compiler does not choose the sign of a NaN
  const double parts[] = {1,   -1,        3,    0.5,   2.5,  1e-5,  1e300,
                          max, max / 100, -max, least, zero, -zero, 7};
  for (const double part : parts) {
    for (const double whole : parts) {
      for (const int decimals : {0, 1, 2, 6, 17, 400, 1073, 1074, 1075, 2000, -1, -2147483647}) {
        EXPECT_EQ(zn_lib::percentString(part, whole, decimals), streamed(part, whole, decimals))
            << part << '/' << whole << ' ' << decimals;
      }
    }
  }
}

TEST(PercentString, AcceptsAnyNumberOfDecimals) {
  const std::string text = zn_lib::percentString(1, 3, 100000000);
  EXPECT_EQ(text.size(), 2 + 1 + 100000000 + 1u);
  EXPECT_EQ(text.compare(0, 7, "33.3333"), 0);
  EXPECT_EQ(text.compare(text.size() - 4, 4, "000%"), 0);
  EXPECT_EQ(zn_lib::percentString(1, 0, std::numeric_limits<int>::max()), "inf%");
}

TEST(Replicate, Examples) {
  EXPECT_EQ(zn_lib::replicateChar('-', 30), "------------------------------");
  EXPECT_EQ(zn_lib::replicateChar('x', 0), "");
  EXPECT_EQ(zn_lib::replicateChar(256 + 'x', 2), "xx");
  EXPECT_EQ(zn_lib::replicateChar(0, 2), "\0\0"s);
  EXPECT_THROW(zn_lib::replicateChar('x', -1), std::length_error);
  EXPECT_THROW(zn_lib::replicateChar('x', std::numeric_limits<int>::min()), std::length_error);
  EXPECT_EQ(zn_lib::replicateString("ab", 3), "ababab");
  EXPECT_EQ(zn_lib::replicateString("a\0"s, 2), "a\0a\0"s);
  EXPECT_EQ(zn_lib::replicateString("ab", 0), "");
  EXPECT_EQ(zn_lib::replicateString("ab", -2), "");
  EXPECT_EQ(zn_lib::replicateString("", std::numeric_limits<int>::max()), "");
}

TEST(ReplaceAndRemoveChar, CompareSignedChars) {
  EXPECT_EQ(zn_lib::replaceChar("a-b-c", '-', '+'), "a+b+c");
  EXPECT_EQ(zn_lib::replaceChar("a-b", '-', 256 + '+'), "a+b");
  EXPECT_EQ(zn_lib::replaceChar("a\0b"s, 0, 'x'), "axb");
  EXPECT_EQ(zn_lib::removeChar("a-b-c", '-'), "abc");
  EXPECT_EQ(zn_lib::removeChar("---", '-'), "");
  EXPECT_EQ(zn_lib::removeChar("a\0b"s, 0), "ab");
  for (int byte = 0; byte < 256; ++byte) {
    for (int character = -300; character <= 300; ++character) {
      const char c = static_cast<char>(byte);
      const bool isEqual = static_cast<signed char>(c) == character;
      const std::string text(2, c);
      ASSERT_EQ(zn_lib::replaceChar(text, character, 'x'), isEqual ? "xx" : text)
          << byte << ' ' << character;
      ASSERT_EQ(zn_lib::removeChar(text, character), isEqual ? "" : text)
          << byte << ' ' << character;
    }
  }
}

TEST(Quotes, Examples) {
  EXPECT_EQ(zn_lib::removeQuotes("a`b'c\"d"), "abcd");
  EXPECT_EQ(zn_lib::removeQuotes("'\"`"), "");
  EXPECT_EQ(zn_lib::removeQuotes("\0'\0"s), "\0\0"s);
  EXPECT_EQ(zn_lib::inQuotes("x", '\''), "'x'");
  EXPECT_EQ(zn_lib::inQuotes("", '"'), "\"\"");
  EXPECT_EQ(zn_lib::inQuotes("a'b", '\''), "'a'b'");
  EXPECT_EQ(zn_lib::inQuotes("ab\0cd"s, '"'), "\"ab\"");
  EXPECT_EQ(zn_lib::inQuotes("x", '\0'), "\0x\0"s);
}

TEST(RemoveQuotes, AgreesWithItsDefinition) {
  const reference::Engine quote = reference::engine(definitions::quote);
  const auto agrees = [&](const std::string& text) {
    ASSERT_EQ(zn_lib::removeQuotes(text), std::regex_replace(text, quote, "")) << text;
  };
  forEveryText("`'\"a\n", 6, agrees);
  agrees(everyByte());
  std::mt19937 random(2);
  for (std::size_t length = 7; length < 3000; length += 11) {
    agrees(randomText(random, everyByte() + "``''\"\"", length));
  }
}

// Blocks of a text with few hits are copied in another way than blocks with many.
TEST(Removal, AgreesWithTheStandardAlgorithmAtAnyDensity) {
  std::mt19937 random(4);
  for (const int othersPerHit : {0, 1, 3, 10, 30, 100, 1000}) {
    const std::string others(static_cast<std::size_t>(othersPerHit), 'a');
    for (std::size_t length = 0; length < 3000; length += 41) {
      std::string text = randomText(random, "'" + others, length / 2);
      text += randomText(random, "'" + others + others, length - text.size());
      std::string expected = text;
      expected.erase(std::remove(expected.begin(), expected.end(), '\''), expected.end());
      ASSERT_EQ(zn_lib::removeQuotes(text), expected) << text;
      ASSERT_EQ(zn_lib::removeChar(text, '\''), expected) << text;
    }
  }
}

TEST(ReplaceString, ReplacesTheFirstOccurrence) {
  const struct {
    std::string text, search, replacement, result;
  } cases[] = {
      {"a.b.c", ".", "/", "a/b.c"}, {"abc", "", "X", "Xabc"},       {"", "", "X", ""},
      {"", "a", "X", ""},           {"abc", "x", "X", "abc"},       {"abc", "abc", "", ""},
      {"aaa", "aa", "b", "ba"},     {"abc", "c", "long", "ablong"}, {"abc", "abcd", "X", "abc"},
      {"a\0b"s, "\0"s, "-", "a-b"}, {"abc", "b", "\0"s, "a\0c"s},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::replaceString(c.text, c.search, c.replacement), c.result)
        << c.text << ' ' << c.search;
  }
}

// Long texts are searched by another algorithm.
TEST(ReplaceString, AgreesWithTheStandardStringAtAnyLength) {
  std::mt19937 random(3);
  for (std::size_t length = 0; length < 600; ++length) {
    const std::string text = randomText(random, "ab", length);
    const std::string search = randomText(random, "ab", length % 12);
    std::string expected = text;
    const std::size_t position = text.find(search);
    if (position < length) expected.replace(position, search.size(), "<new>");
    ASSERT_EQ(zn_lib::replaceString(text, search, "<new>"), expected) << text << ' ' << search;
  }
}

TEST(FindStrings, Examples) {
  EXPECT_TRUE(zn_lib::findStrings("hello", {"xyz", "ell"}));
  EXPECT_TRUE(zn_lib::findStrings("hello", {""}));
  EXPECT_TRUE(zn_lib::findStrings("a\0b"s, {"\0b"s}));
  EXPECT_FALSE(zn_lib::findStrings("", {""}));
  EXPECT_FALSE(zn_lib::findStrings("", {"a"}));
  EXPECT_FALSE(zn_lib::findStrings("abc", {}));
  EXPECT_FALSE(zn_lib::findStrings("abc", {"abcd", "ac"}));
}

// ---- Long texts

TEST(LongText, EveryFunctionReturns) {
  const std::string digits(kLongText, '7');
  const std::string spaces(kLongText, ' ');
  const std::string quotes(kLongText, '\'');

  EXPECT_EQ(zn_lib::leftTrim(spaces + "x"), "x");
  EXPECT_EQ(zn_lib::rightTrim("x" + spaces), "x");
  EXPECT_EQ(zn_lib::allTrim(spaces + "x" + spaces), "x");
  EXPECT_EQ(zn_lib::allTrim(spaces), "");
  EXPECT_EQ(zn_lib::leftTrim(spaces + "\0 "s), "\0 "s);
  EXPECT_EQ(zn_lib::stringToUpper(digits + "a"), digits + "A");
  EXPECT_EQ(zn_lib::stringToLower(digits + "A"), digits + "a");
  EXPECT_EQ(zn_lib::rightPad(digits, static_cast<int>(kLongText) + 1, '0'), "0" + digits);
  EXPECT_EQ(zn_lib::leftPad(digits, static_cast<int>(kLongText) + 1, '0'), digits + "0");
  EXPECT_FALSE(zn_lib::stringToBool(digits));
  EXPECT_TRUE(std::isnan(zn_lib::stringToDouble(digits)));
  EXPECT_EQ(zn_lib::replicateString(digits, 2).size(), 2 * kLongText);
  EXPECT_EQ(zn_lib::replicateChar('7', static_cast<int>(kLongText)), digits);
  EXPECT_EQ(zn_lib::replaceChar(digits, '7', ' '), spaces);
  EXPECT_EQ(zn_lib::removeChar(digits, '7'), "");
  EXPECT_EQ(zn_lib::removeQuotes(quotes + "x" + quotes), "x");
  EXPECT_EQ(zn_lib::inQuotes(digits, '\'').size(), kLongText + 2);
}

TEST(LongText, IsNumberReturns) {
  const std::string digits(kLongText, '7');
  EXPECT_TRUE(zn_lib::isNumber(digits));
  EXPECT_TRUE(zn_lib::isNumber("-" + digits + "." + digits + "E+" + digits));
  EXPECT_TRUE(zn_lib::isNumber("e-" + digits));
  EXPECT_TRUE(zn_lib::isNumber(zn_lib::replicateString("1,", kLongText / 2)));
  EXPECT_FALSE(zn_lib::isNumber(digits + "x"));
  EXPECT_FALSE(zn_lib::isNumber(digits + "."));
  EXPECT_FALSE(zn_lib::isNumber(digits + "e+" + digits + "x"));
  EXPECT_FALSE(zn_lib::isNumber(digits + "e" + digits));
  EXPECT_FALSE(zn_lib::isNumber(std::string(kLongText, 'e')));
  EXPECT_FALSE(zn_lib::isNumber(std::string(kLongText, ',')));
}

// std::string::find would need hours.
TEST(LongText, SearchTakesLinearTime) {
  const std::string haystack(kLongText, 'a');
  const std::string missing = std::string(kLongText / 2, 'a') + "b";
  const std::string missingFront = "b" + std::string(kLongText / 2, 'a');
  EXPECT_EQ(zn_lib::replaceString(haystack, missing, "x"), haystack);
  EXPECT_EQ(zn_lib::replaceString(haystack + "b", missing, "x"),
            std::string(kLongText / 2, 'a') + "x");
  EXPECT_FALSE(zn_lib::findStrings(haystack, {missing, missingFront}));
  EXPECT_TRUE(zn_lib::findStrings(haystack + "b", {missingFront, missing}));
}

}  // namespace
