/// Splits by the library, by fast libraries, by the engine for regular expressions, whose bracket
/// expressions define the delimiters, and by a loop over the characters.
#include <tokenizer.h>

#include <array>
#include <regex>
#include <string>
#include <vector>

#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_ABSL
#include <absl/strings/str_split.h>
#endif
#ifdef ZN_UDF_HAVE_BOOST
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#endif

namespace {

using Tokens = std::vector<std::string>;

/// Splits by a table of the delimiters, without the rules for the end of the text.
Tokens splitByTable(const std::string& text, const std::array<bool, 256>& isDelimiter) {
  Tokens tokens;
  std::size_t first = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!isDelimiter[static_cast<unsigned char>(text[i])]) continue;
    tokens.emplace_back(text, first, i - first);
    first = i + 1;
  }
  tokens.emplace_back(text, first);
  return tokens;
}

void addSplitRows(const std::string& name, const std::string& text, const std::string& delimiters) {
  bench::addScan(name + "/zn_udf", text, [delimiters](const std::string& t) {
    zn_lib::Tokenizer tokenizer;
    tokenizer.split(t, delimiters);
    return tokenizer;
  });
  std::array<bool, 256> isDelimiter{};
  for (const char c : delimiters) isDelimiter[static_cast<unsigned char>(c)] = true;
  bench::addScan(name + "/baseline:hand_loop", text,
                 [isDelimiter](const std::string& t) { return splitByTable(t, isDelimiter); });
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
#ifdef ZN_UDF_HAVE_BOOST
  bench::addScan(name + "/boost_split", text, [delimiters](const std::string& t) {
    Tokens tokens;
    boost::algorithm::split(tokens, t, boost::algorithm::is_any_of(delimiters));
    return tokens;
  });
#endif
  const std::regex pattern("[" + delimiters + "]");
  bench::addScan(name + "/std_sregex_token_iterator", text, [pattern](const std::string& t) {
    constexpr int betweenMatches = -1;
    return Tokens(std::sregex_token_iterator(t.begin(), t.end(), pattern, betweenMatches),
                  std::sregex_token_iterator());
  });
}

/// Returns a random text that ends with a token, since implementations differ for an empty token at
/// the end.
std::string textWithToken(const std::string& alphabet, std::size_t size) {
  std::string text = bench::randomText(alphabet, size);
  text.back() = 'x';
  return text;
}

const std::string kLetters = "abcdefghijklmnopqrstuvwxyz";

void addGrowthRows() {
  const auto commas = [](std::size_t size) { return textWithToken(kLetters + ",,,,", size); };
  bench::addGrowth("split", bench::kSmallText, bench::kLargeText, commas, [](const std::string& t) {
    zn_lib::Tokenizer tokenizer;
    tokenizer.split(t, ",");
    return tokenizer;
  });
  bench::addGrowth("splitMulti", bench::kSmallText, bench::kLargeText, commas,
                   [](const std::string& t) {
                     zn_lib::Tokenizer tokenizer;
                     tokenizer.splitMulti(t, ",");
                     return tokenizer;
                   });
  const auto tokens = [commas](std::size_t size) { return zn_lib::Tokenizer(commas(size), ","); };
  bench::addGrowth("sortTokens", bench::kSmallText, bench::kLargeText, tokens,
                   [](const zn_lib::Tokenizer& unsorted) {
                     zn_lib::Tokenizer tokenizer = unsorted;
                     tokenizer.sortTokens();
                     return tokenizer;
                   });
}

}  // namespace

int main(int argc, char** argv) {
  constexpr std::size_t mebibyte = std::size_t{1} << 20;
  const std::string comma = ",";
  const std::string dateDelimiters = "-/.,:; ";

  addSplitRows("split_20B_comma", "alpha,beta,gamma,end", comma);
  addSplitRows("split_20B_set", "2024-03-05, 14:07:09", dateDelimiters);
  addSplitRows("split_1MiB_comma", textWithToken(kLetters + ",,,,", mebibyte), comma);
  addSplitRows("split_1MiB_set", textWithToken(kLetters + kLetters + dateDelimiters, mebibyte),
               dateDelimiters);
  addGrowthRows();
  return bench::runRows(argc, argv);
}
