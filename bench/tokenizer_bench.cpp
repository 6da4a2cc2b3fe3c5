/// Splitting: the library, a library made for speed, and the regular expression engine that the
/// delimiters' definition as a bracket expression would take.
#include <tokenizer.h>

#include <regex>
#include <string>
#include <vector>

#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_ABSL
#include <absl/strings/str_split.h>
#endif

namespace {

using Tokens = std::vector<std::string>;

void addSplitRows(const std::string& name, const std::string& text, const std::string& delimiters) {
  bench::addScan(name + "/zn_udf", text, [delimiters](const std::string& t) {
    zn_lib::Tokenizer tokenizer;
    tokenizer.split(t, delimiters);
    return tokenizer;
  });
#ifdef ZN_UDF_HAVE_ABSL
  if (delimiters.size() == 1) {
    const char delimiter = delimiters.front();
    bench::addScan(name + "/absl_StrSplit", text, [delimiter](const std::string& t) {
      return Tokens(absl::StrSplit(t, absl::ByChar(delimiter)));
    });
  } else {
    bench::addScan(name + "/absl_StrSplit", text, [delimiters](const std::string& t) {
      return Tokens(absl::StrSplit(t, absl::ByAnyChar(delimiters)));
    });
  }
#endif
  const std::regex pattern("[" + delimiters + "]");
  bench::addScan(name + "/std_sregex_token_iterator", text, [pattern](const std::string& t) {
    constexpr int betweenMatches = -1;
    return Tokens(std::sregex_token_iterator(t.begin(), t.end(), pattern, betweenMatches),
                  std::sregex_token_iterator());
  });
}

/// 1 MiB with about one delimiter in eight characters; a token at the end, where the peers differ
/// on an empty one.
std::string mebibyteWithToken(const std::string& alphabet) {
  std::string text = bench::mebibyteOf(alphabet);
  text.back() = 'x';
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string comma = ",";
  const std::string dateDelimiters = "-/.,:; ";
  const std::string letters = "abcdefghijklmnopqrstuvwxyz";

  addSplitRows("split_20B_comma", "alpha,beta,gamma,end", comma);
  addSplitRows("split_20B_set", "2024-03-05, 14:07:09", dateDelimiters);
  addSplitRows("split_1MiB_comma", mebibyteWithToken(letters + ",,,,"), comma);
  addSplitRows("split_1MiB_set", mebibyteWithToken(letters + letters + dateDelimiters),
               dateDelimiters);
  return bench::runRows(argc, argv);
}
