/// The definitions of the recognised forms, and what a build with checks does with them. That the
/// scans agree with the definitions is tested with their families and in every_text_test.
#include "../../src/udf/internal/definitions.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

namespace {

using namespace zn_lib::internal;

TEST(Definitions, AreThese) {
  const auto ignoringCase = std::regex::ECMAScript | std::regex::icase;
  const struct {
    Definition form;
    std::string name, expression;
    std::regex::flag_type grammar;
  } cases[] = {
      {definitions::isBool, "isBool", "(yes|true|on|y|\\.t\\.|t|1)", ignoringCase},
      {definitions::validNumber, "validNumber", "-?((\\d),?)*(\\.\\d+)?([eE][-+]\\d+)?",
       std::regex::ECMAScript},
      {definitions::quote, "quote", "[`'\"]", std::regex::ECMAScript},
      {definitions::lastExt, "lastExt", "(.+)[\\.](.+)$", std::regex::ECMAScript},
      {definitions::fileSplit, "fileSplit", "(.+[\\/])?(.+)", std::regex::ECMAScript},
      {definitions::fileseq, "fileseq", "(.+)[-](\\d+)?", std::regex::ECMAScript},
      {definitions::isoDateTime, "isoDateTime",
       "^(\\d{4})-?(\\d{2})?-?(\\d{2})?[\\sT]?(\\d{2})?:?(\\d{2})?:?(\\d{2})?",
       std::regex::ECMAScript},
      {definitions::ipv4, "ipv4", "([0-5]{1,3})\\.([0-5]{1,3})\\.([0-5]{1,3})\\.([0-5]{1,3})",
       std::regex::ECMAScript},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.form.name, c.name);
    EXPECT_EQ(c.form.expression, c.expression);
    EXPECT_EQ(c.form.grammar, c.grammar) << c.name;
  }
}

TEST(Verify, AcceptsTheDefinedAnswer) {
  verify(definitions::isBool, "TRUE", true);
  verify(definitions::isBool, "no", false);
  verify(definitions::lastExt, "a.b.c", true, {"a.b", "c"});
  verify(definitions::lastExt, "a", false, {"a", ""});
  verify(definitions::fileSplit, "name", true, {"", "name"});
}

TEST(VerifyDeathTest, EndsTheProgramAtAnotherAnswer) {
  EXPECT_DEATH(verify(definitions::validNumber, "1,2", false),
               "validNumber for \"1,2\": the scan gives no match, the definition gives match");
  EXPECT_DEATH(verify(definitions::ipv4, "1.2.3.6", true),
               "ipv4 for \"1.2.3.6\": the scan gives match, the definition gives no match");
  EXPECT_DEATH(verify(definitions::fileseq, "a-1", true, {"a", ""}),
               "fileseq for \"a-1\": the scan gives match <a> <>, the definition gives match "
               "<a> <1>");
}

TEST(Verify, SkipsTextsThatAreTooLongForTheEngine) {
  const std::string longest(255, '1');
  EXPECT_DEATH(verify(definitions::validNumber, longest, false), "validNumber");
  verify(definitions::validNumber, longest + '1', false);
}

}  // namespace
