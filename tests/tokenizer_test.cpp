#include <gtest/gtest.h>
#include <tokenizer.h>

#include <iomanip>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "reference_splits.h"
#include "samples.h"

namespace {

using namespace std::string_literals;
using Tokens = std::vector<std::string>;

TEST(Tokenizer, HeaderExamples) {
  zn_lib::Tokenizer date("2024-05-06 10:20", "-/.,:; ");
  EXPECT_EQ(date.tokens, (Tokens{"2024", "05", "06", "10", "20"}));
  EXPECT_EQ(date.getToken(0), "2024");
  EXPECT_EQ(date.getToken(9), "");
}

TEST(Split, Examples) {
  const struct {
    std::string text, delimiters;
    Tokens tokens;
  } cases[] = {
      {"a,b,,c", ",", {"a", "b", "", "c"}},
      {"a,b,", ",", {"a", "b"}},
      {",a", ",", {"", "a"}},
      {",", ",", {""}},
      {",,", ",", {"", ""}},
      {"", ",", {""}},
      {"", "", {""}},
      {"abc", ";", {"abc"}},
      {"abc", "", {"abc"}},
      {"a-b+c", "+-", {"a", "b", "c"}},
      {"a-b+c", "-+", {"a", "b", "c"}},
      {"xaybzcw-", "a-c", {"x", "y", "z", "w-"}},
      {"a1b22c", "\\d", {"a", "b", "", "c"}},
      {"a,b;c", "^,;", {"", ",", ";"}},
      {"a^b", ",^", {"a", "b"}},
      {"a]b", "\\]", {"a", "b"}},
      {"a]b]c", "]", {"a]b]c"}},
      {"1a]2b3", "a]b", {"1a]2b3"}},
      {"1ab]2", "a]b", {"1", "2"}},
      {"a[b", "[", {"a", "b"}},
      {"a b\tc", "[:space:]", {"a", "b", "c"}},
      {"a\\b", "\\\\", {"a", "b"}},
      {"a\0b"s, "\0"s, {"a", "b"}},
      {"a\xC3\xA4"
       "b",
       "\xA4",
       {"a\xC3", "b"}},
      {"a\nb", "\n", {"a", "b"}},
  };
  for (const auto& c : cases) {
    zn_lib::Tokenizer tokenizer;
    EXPECT_EQ(tokenizer.split(c.text, c.delimiters), c.tokens.size())
        << c.text << " at " << c.delimiters;
    EXPECT_EQ(tokenizer.tokens, c.tokens) << c.text << " at " << c.delimiters;
    EXPECT_EQ(zn_lib::Tokenizer(c.text, c.delimiters).tokens, c.tokens);
  }
}

TEST(Split, AgreesWithTheEngineOnEverySmallSet) {
  const std::string text = everyByte() + "ab--]]^^[[\\\\";
  forEveryText(everyByte(), 1, [&](const std::string& set) { reference::expectSplit(text, set); });
  // Characters with a meaning inside brackets, and others.
  const std::string special = "-^\\][:=ad9\0\xFF"s;
  forEveryText(special, 3, [&](const std::string& set) { reference::expectSplit(text, set); });
}

TEST(Split, AgreesWithTheEngineOnEveryShortText) {
  for (const std::string& set : {",;"s, "-,"s, ",-"s, "a-c"s, "^,"s, "\\d,"s, ",\0"s, ""s, "-"s}) {
    forEveryText(",;-ab5\0"s, 5,
                 [&](const std::string& text) { reference::expectSplit(text, set); });
  }
}

TEST(Split, AgreesWithTheEngineOnRandomTexts) {
  std::mt19937 random(3);
  for (std::size_t length = 10; length < 2000; length += 7) {
    const std::string set = randomText(random, "-/.,:; abc\xFF", 1 + length % 6);
    const std::string text = randomText(random, everyByte() + set + set, length);
    reference::expectSplit(text, set);
  }
}

TEST(Split, TakesTokensOfAnyLength) {
  for (std::size_t first = 0; first < 40; ++first) {
    for (std::size_t last = 1; last < 40; ++last) {
      const Tokens tokens = {std::string(first, 'x'), std::string(last, 'y')};
      const std::string text = tokens[0] + "," + tokens[1];
      ASSERT_EQ(zn_lib::Tokenizer(text, ",").tokens, tokens) << text;
      ASSERT_EQ(zn_lib::Tokenizer(text, ",;").tokens, tokens) << text;
    }
  }
}

TEST(Split, ReplacesTheTokensOfAnEarlierCall) {
  zn_lib::Tokenizer tokenizer("a,b,c", ",");
  EXPECT_EQ(tokenizer.split("x y", " "), 2u);
  EXPECT_EQ(tokenizer.tokens, (Tokens{"x", "y"}));
}

TEST(Split, LeavesNoTokensWhenTheSetIsMalformed) {
  for (const char* set : {"z-a", "\\", "[:nonsense:]"}) {
    zn_lib::Tokenizer tokenizer("a,b,c", ",");
    EXPECT_THROW(tokenizer.split("abc", set), std::regex_error) << set;
    EXPECT_TRUE(tokenizer.tokens.empty()) << set;
    EXPECT_THROW(zn_lib::Tokenizer("abc", set), std::regex_error) << set;
  }
}

TEST(Split, TakesItsOwnTokensAsArguments) {
  const std::string longToken = "a long token; too long for any short-string buffer";
  zn_lib::Tokenizer tokenizer(longToken + ",;", ",");
  tokenizer.split(tokenizer.tokens[0], tokenizer.tokens[1]);
  EXPECT_EQ(tokenizer.tokens, (Tokens{"a long token", " too long for any short-string buffer"}));
  tokenizer.splitMulti(tokenizer.tokens[1], tokenizer.tokens[1]);
  EXPECT_EQ(tokenizer.tokens, Tokens{""});
}

TEST(SplitMulti, Examples) {
  const struct {
    std::string text, pattern;
    Tokens tokens;
  } cases[] = {
      {"one, two,three", ", ?", {"one", "two", "three"}},
      {"a  b\tc", "\\s+", {"a", "b", "c"}},
      {"aXXbxxc", "xx", {"aXXb", "c"}},
      {"abc", ";", {"abc"}},
      {"", ";", {""}},
      {"a;", ";", {"a"}},
      {"abc", "", {"", "a", "b", "c"}},
  };
  for (const auto& c : cases) {
    zn_lib::Tokenizer tokenizer("old", ",");
    EXPECT_EQ(tokenizer.splitMulti(c.text, c.pattern), c.tokens.size())
        << c.text << " at " << c.pattern;
    EXPECT_EQ(tokenizer.tokens, c.tokens) << c.text << " at " << c.pattern;
  }
}

TEST(SplitMulti, AgreesWithTheEngine) {
  using reference::expectSplitMulti;
  // Every byte, and every pair that contains an operator.
  const std::string text = everyByte() + "ab--^^$$..||";
  forEveryText(everyByte(), 1,
               [&](const std::string& pattern) { expectSplitMulti(text, pattern); });
  forEveryText("a-^$\\.*+?()[]{}|,\n\0\xFF"s, 2,
               [&](const std::string& p) { expectSplitMulti(text, p); });
  // Equivalence classes, which ignore case.
  forEveryText(everyByte(), 1,
               [&](const std::string& p) { expectSplitMulti(text, "[[=" + p + "=]]"); });
  // Plain patterns that may overlap themselves.
  for (const char* pattern : {"a", "aa", "ab", "aba", "aab", "bb"}) {
    forEveryText("ab", 9, [&](const std::string& t) { expectSplitMulti(t, pattern); });
  }
}

TEST(SplitMulti, IsTheSameWithAnyStandardLibrary) {
  const struct {
    std::string text, pattern;
    Tokens tokens;
  } cases[] = {
      {"a]b}c", "]", {"a", "b}c"}},
      {"a]b}c", "]|}", {"a", "b", "c"}},
      {"a{}b", "\\{}", {"a", "b"}},
      {"1ab]2", "[ab]]", {"1a", "2"}},
      {"1a}2", "a{1}}", {"1", "2"}},
      {"xAAx", "(?:\\x41)?", {"", "x", "", "", "x"}},
      {"a1b23c", "[\\d]+", {"a", "b", "c"}},
      {"a1b-c]d", "[0-9\\]-]", {"a", "b", "c", "d"}},
      {"a-b", "[[:digit:]-]", {"a", "b"}},
      {"a-b", "[a-]", {"", "", "b"}},
      {"A-b", "[^-A]", {"A-"}},
      {"ba]c", "[[a:]]", {"b", "c"}},
      {"abc", "[^]", {"", "", ""}},
      {"abc", "[]", {"abc"}},
      {"abxc", "x*", {"", "a", "b", "", "c"}},
      {"abx", "x*", {"", "a", "b", ""}},
      {"ab", "^", {"", "ab"}},
      {"ab", "$", {"ab"}},
      {"ab\nab", "^a", {"", "b\nab"}},
      {"ab cd", "\\b", {"", "ab", " ", "cd"}},
      {"abc", "b|", {"", "a", "", "c"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(reference::tokensOfSplitMulti(c.text, c.pattern), c.tokens)
        << c.text << " at " << c.pattern;
  }
  for (const char* pattern :
       {"[b-a]", "[^xb-a]", "[a-\xE4]", "[a-[:digit:]]", "[\\1]", "[\\B]", "[\\x4]", "[[:digit]",
        "[a", "[a-", "[a\\", "a{2", "a{,2}", "^*", "(*)", "a|+", "*.txt", "\\"}) {
    EXPECT_THROW(reference::tokensOfSplitMulti("a", pattern), std::regex_error) << pattern;
  }
}

TEST(SplitMulti, LeavesNoTokensWhenThePatternIsMalformed) {
  zn_lib::Tokenizer tokenizer("a,b,c", ",");
  EXPECT_THROW(tokenizer.splitMulti("abc", "("), std::regex_error);
  EXPECT_TRUE(tokenizer.tokens.empty());
}

// Compiling such a pattern would exhaust the stack.
TEST(LongPatterns, WithOperatorsAreMalformed) {
  const std::string longest = std::string(9998, 'x') + "|b";
  zn_lib::Tokenizer tokenizer;
  EXPECT_EQ(tokenizer.splitMulti("abc", longest), 2u);
  EXPECT_NO_THROW(tokenizer.split("ab", "]" + longest.substr(3)));
  for (const std::string& pattern :
       {longest + "x", std::string(kLongText, '('), std::string(kLongText, '.')}) {
    tokenizer.tokens = {"a"};
    EXPECT_THROW(tokenizer.splitMulti("abc", pattern), std::regex_error) << pattern.size();
    EXPECT_TRUE(tokenizer.tokens.empty());
    EXPECT_THROW(tokenizer.split("abc", "]" + pattern), std::regex_error) << pattern.size();
    EXPECT_TRUE(tokenizer.tokens.empty());
  }
}

TEST(LongPatterns, OfPlainCharactersAreValid) {
  EXPECT_EQ(zn_lib::Tokenizer().splitMulti("abc", std::string(kLongText, 'x')), 1u);
  EXPECT_EQ(zn_lib::Tokenizer().split("axb", std::string(kLongText, 'x')), 2u);
  EXPECT_EQ(zn_lib::Tokenizer().split("axb", "^" + std::string(20000, 'x')), 2u);
}

TEST(LongPatterns, AreValidUpToTheirLimits) {
  constexpr std::size_t longest = 10000;
  constexpr std::size_t longestSet = longest - 2;  // without the brackets that split adds
  const std::string x(longest, 'x');
  const struct {
    const char* what;
    bool isSet;
    std::string pattern;
    bool isTaken;
  } cases[] = {
      {"plain delimiters", true, x + x, true},
      {"all but these", true, "^" + x + x, true},
      {"a range and more", true, "a-c" + x, true},
      {"an escape and more", true, "\\d" + x, true},
      {"the longest set with a bracket", true, x.substr(0, longestSet - 1) + "]", true},
      {"a longer set with a bracket", true, x.substr(0, longestSet) + "]", false},
      {"a longer set with an escaped bracket", true, x.substr(0, longestSet - 1) + "\\]", false},
      {"plain text", false, x + x, true},
      {"the longest with an operator", false, x.substr(1) + "+", true},
      {"longer, with an operator", false, x + "+", false},
      {"a set", false, "[" + x + "]", true},
      {"a set with a quantifier", false, "[" + x + "]+", false},
      {"two sets", false, "[" + x + "][x]", false},
  };
  for (const auto& c : cases) {
    zn_lib::Tokenizer tokenizer("a,b", ",");
    const auto split = [&] {
      return c.isSet ? tokenizer.split("text", c.pattern) : tokenizer.splitMulti("text", c.pattern);
    };
    if (c.isTaken) {
      EXPECT_GT(split(), 0u) << c.what;
    } else {
      EXPECT_THROW(split(), std::regex_error) << c.what;
      EXPECT_EQ(tokenizer.tokens.size(), 0u) << c.what;
    }
  }
}

TEST(SortTokens, OrdersBytesAsUnsignedValues) {
  zn_lib::Tokenizer tokenizer("b,B,a,ab,\xC3,", ",");
  EXPECT_TRUE(tokenizer.sortTokens());
  EXPECT_EQ(tokenizer.tokens, (Tokens{"B", "a", "ab", "b", "\xC3"}));

  tokenizer.split("two,one", ",");
  EXPECT_TRUE(tokenizer.sortTokens());
  EXPECT_EQ(tokenizer.tokens, (Tokens{"one", "two"}));

  tokenizer.split("one", ",");
  EXPECT_FALSE(tokenizer.sortTokens());
  EXPECT_EQ(tokenizer.tokens, Tokens{"one"});
  EXPECT_FALSE(zn_lib::Tokenizer().sortTokens());

  const zn_lib::vector_key before;
  EXPECT_TRUE(before("a", "ab"));
  EXPECT_TRUE(before("", "a"));
  EXPECT_TRUE(before("a\0"s, "a\0b"s));
  EXPECT_FALSE(before("a", "a"));
  EXPECT_FALSE(before("\xC3", "a"));
}

TEST(GetToken, IsEmptyBeyondTheLastToken) {
  const zn_lib::Tokenizer tokenizer("a,b,c", ",");
  EXPECT_EQ(tokenizer.getToken(2), "c");
  EXPECT_EQ(tokenizer.getToken(3), "");
  EXPECT_EQ(tokenizer.getToken(5), "");
  EXPECT_EQ(tokenizer.getToken(static_cast<std::size_t>(-1)), "");
  EXPECT_EQ(zn_lib::Tokenizer().getToken(0), "");
  EXPECT_EQ(std::stoi(zn_lib::Tokenizer("12;34", ";").getToken(1)), 34);
}

TEST(Tokenizer, CopiesItsTokens) {
  zn_lib::Tokenizer first("a,b", ",");
  zn_lib::Tokenizer second = first;
  second.tokens[0] = "x";
  EXPECT_EQ(first.getToken(0), "a");
}

TEST(String, IsAStringWithOneConstructor) {
  const zn_lib::String token("ab\0cd"s);
  EXPECT_EQ(token.size(), 5u);
  EXPECT_EQ(zn_lib::String().size(), 0u);
  const std::string& base = token;
  EXPECT_EQ(base, "ab\0cd"s);
}

// ---- Streams

TEST(Inserter, StopsAtTheFirstNul) {
  using zn_lib::operator<<;
  std::ostringstream stream;
  stream << "ab\0cd"s << '|' << zn_lib::String("ef\0gh"s) << '|' << ""s;
  EXPECT_EQ(stream.str(), "ab|ef|");
}

TEST(Inserter, ObeysWidthAndFill) {
  using zn_lib::operator<<;
  std::ostringstream stream;
  stream << std::setw(5) << std::setfill('.') << "ab\0cd"s << std::left << std::setw(4) << "x"s
         << "y"s;
  EXPECT_EQ(stream.str(), "...abx...y");
}

TEST(Inserter, ReturnsTheStream) {
  std::ostringstream stream;
  EXPECT_EQ(&zn_lib::operator<<(stream, "x"), &stream);
}

TEST(Inserter, TakesTokensWithoutAUsingDeclaration) {
  std::ostringstream stream;
  stream << zn_lib::String("ab\0cd"s);
  EXPECT_EQ(stream.str(), "ab");
}

TEST(Manipulators, SetTheBasePermanently) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << zn_lib::setHexadecimal << 31 << ' ' << 255 << ' ' << zn_lib::setOctal << 8 << ' '
         << zn_lib::setDecimal << 31 << ' ' << std::hex << 31;
  EXPECT_EQ(stream.str(), "0X1F 0XFF 010 31 0X1F");
  EXPECT_EQ(&zn_lib::setDecimal(stream), &stream);
}

// ---- Long texts

TEST(LongText, SplitsAtPlainDelimiters) {
  zn_lib::Tokenizer tokenizer;
  EXPECT_EQ(tokenizer.split(std::string(kLongText, 'x'), ",;"), 1u);
  EXPECT_EQ(tokenizer.split(std::string(kLongText, 'x') + ",y", ","), 2u);
  EXPECT_EQ(tokenizer.getToken(1), "y");
  EXPECT_EQ(tokenizer.split(std::string(kLongText, ','), ","), kLongText);
  EXPECT_EQ(tokenizer.split("a", std::string(kLongText, ',')), 1u);
  EXPECT_EQ(tokenizer.splitMulti(std::string(kLongText, 'x') + ", y", ", "), 2u);
  EXPECT_EQ(tokenizer.splitMulti(std::string(kLongText, 'x'), std::string(kLongText / 2, 'x')), 2u);
}

TEST(LongText, SplitsAtARange) {
  zn_lib::Tokenizer tokenizer;
  EXPECT_EQ(tokenizer.split(std::string(100000, 'x') + "1" + std::string(100000, 'y'), "0-9"), 2u);
}

}  // namespace
