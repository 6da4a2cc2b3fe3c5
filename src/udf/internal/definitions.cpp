#include "definitions.h"

#ifdef ZN_UDF_CHECK_DEFINITIONS

#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "patterns.h"

namespace zn_lib::internal {
namespace {

const Pattern& compiled(const Definition& form) {
  static const std::map<std::string_view, Pattern> patterns = [] {
    using namespace definitions;
    std::map<std::string_view, Pattern> all;
    for (const Definition& each :
         {isBool, validNumber, quote, lastExt, fileSplit, fileseq, isoDateTime, ipv4}) {
      all.emplace(each.name, compilePattern(each.expression, each.grammar));
    }
    return all;
    // The compiler adds branches for exceptions and for a thread that waits for another.
  }();  // GCOVR_EXCL_BR_LINE
  return patterns.at(form.name);
}

/// Returns a result as readable text for comparison and printing.
template <class List>
std::string describe(bool isMatch, const List& groups) {
  if (!isMatch) return "no match";
  std::string text = "match";
  for (const auto& group : groups) text.append(" <").append(group).append(">");
  return text;
}

std::string answerOf(const Definition& form, const std::string& text, bool withGroups) {
  std::smatch match;
  const bool isMatch = std::regex_match(text, match, compiled(form));
  std::vector<std::string> groups;
  for (std::size_t i = 1; withGroups && i < match.size(); ++i) groups.push_back(match[i]);
  return describe(isMatch, groups);
}

}  // namespace

void verify(const Definition& form, std::string_view text, bool isMatch, Groups groups) try {
  if (text.size() > kLongestVerified) return;
  const std::string scanned = describe(isMatch, groups);
  const std::string defined = answerOf(form, std::string(text), groups.size() != 0);
  if (scanned == defined) return;
  // GCOVR_EXCL_BR_START: the process ends before it counts the branches.
  std::fprintf(stderr, "zn_udf: %s for \"%.*s\": the scan gives %s, the definition gives %s\n",
               form.name, static_cast<int>(text.size()), text.data(), scanned.c_str(),
               defined.c_str());
  std::abort();
  // GCOVR_EXCL_BR_STOP
  // No exception of another type is thrown.
} catch (const std::bad_alloc&) {  // GCOVR_EXCL_BR_LINE
  // The result stays unverified, so that builds with checks throw only where other builds do.
}

}  // namespace zn_lib::internal

#endif  // ZN_UDF_CHECK_DEFINITIONS
