/// The literal parts of patterns. That searches with them find what the engine finds is tested with
/// the functions that use them; these tests show which patterns do without it.
#include "../../src/udf/internal/literals.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using namespace std::string_literals;
using namespace zn_lib::internal;

/// Describes a fixed text: the text with a mark at each end to which it is bound.
std::string describe(const std::optional<FixedText>& fixed) {
  if (!fixed) return "none";
  return (fixed->isAtStart ? "^" : "") + ("<" + fixed->text + ">") + (fixed->isAtEnd ? "$" : "");
}

TEST(FixedText, IsFoundInPatternsOfOneText) {
  const struct {
    std::string pattern, fixed;
  } cases[] = {
      {"", "<>"},
      {"name", "<name>"},
      {"^name", "^<name>"},
      {"name$", "<name>$"},
      {"^name$", "^<name>$"},
      {"^$", "^<>$"},
      {"\\.txt$", "<.txt>$"},
      {"a\\\\", "<a\\>"},
      {"\\^\\$\\*\\+\\?\\(\\)\\[\\]\\{\\}\\|", "<^$*+?()[]{}|>"},
      {"a~!-/b", "<a~!-/b>"},
      // More than one text, or none.
      {"a^", "none"},
      {"^^", "none"},
      {"$a", "none"},
      {"a.", "none"},
      {"a*", "none"},
      {"a|b", "none"},
      {"(a)", "none"},
      {"[a]", "none"},
      {"a{2}", "none"},
      {"\\d", "none"},
      {"\\n", "none"},
      {"\\1", "none"},
      {"a\\", "none"},
      {"a\0b"s, "none"},
      {"\\\0"s, "none"},
      // Long ones.
      {std::string(300, 'n'), "<" + std::string(300, 'n') + ">"},
      {"^" + std::string(254, 'n'), "^<" + std::string(254, 'n') + ">"},
      {"^" + std::string(255, 'n'), "none"},
  };
  for (const auto& c : cases) EXPECT_EQ(describe(fixedText(c.pattern)), c.fixed) << c.pattern;
}

TEST(TextInAllMatches, IsTheLongestOne) {
  const struct {
    std::string pattern, text;
  } cases[] = {
      {"", ""},
      {"name", "name"},
      {"^name.*txt$", "name"},
      {"ab.*name", "name"},
      {"ab.*cd", "ab"},
      {"names*", "name"},
      {"names+", "name"},
      {"names?", "name"},
      {"a*", ""},
      {"*", ""},
      {".*name", "name"},
      {"[a-z]name", "name"},
      {"name[a-z]", ""},
      {"name[a-z]txt", "txt"},
      {"[a]b[c]name.x", "name"},
      {"\\.txt", ".txt"},
      {"a\\+b", "a+b"},
      {"ab\\dname", "name"},
      {"ab\\bname", "name"},
      {"ab\\Sname", "name"},
      {"ab\\nname", ""},
      {"ab\\x41", ""},
      {"(a)\\1name", ""},
      {"name(s)", ""},
      {"name|x", ""},
      {"names{0}", ""},
      {"a\0name"s, "name"},
  };
  for (const auto& c : cases) EXPECT_EQ(textInAllMatches(c.pattern), c.text) << c.pattern;
}

TEST(SingleCharacters, AreCharactersAndDots) {
  for (const char* pattern : {"a", ".", "a.c", "~"}) {
    EXPECT_TRUE(isSingleCharacters(pattern)) << pattern;
  }
  for (const std::string& pattern :
       {""s, "a*"s, "^a"s, "a$"s, "\\."s, "[a]"s, "a|b"s, "a\\"s, "a\0"s}) {
    EXPECT_FALSE(isSingleCharacters(pattern)) << pattern;
  }
}

}  // namespace
