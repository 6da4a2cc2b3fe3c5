/// Compares splits with a plain reference model, and for short texts with the engine for regular
/// expressions.
#include <fuzzer/FuzzedDataProvider.h>
#include <tokenizer.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "reference_engine.h"

namespace {

using Tokens = std::vector<std::string>;
using Split = std::function<std::size_t(zn_lib::Tokenizer&, const std::string& text)>;

bool isForEngine(const std::string& text, const std::string& pattern) {
  return text.size() <= fuzz::kShortForPattern && fuzz::isForEngine(pattern);
}

/// Returns the texts between delimiters of `width` bytes. `find` returns the position of the next
/// delimiter.
Tokens between(const std::string& text, std::size_t width,
               const std::function<std::size_t(std::size_t)>& find) {
  Tokens tokens;
  std::size_t start = 0;
  for (std::size_t at = find(0); at != std::string::npos; at = find(start)) {
    tokens.push_back(text.substr(start, at - start));
    start = at + width;
  }
  if (tokens.empty() || start < text.size()) tokens.push_back(text.substr(start));
  return tokens;
}

/// Expects the tokens `expected`, or an error if there are none.
void checkSplit(const std::string& text, const std::optional<Tokens>& expected,
                const Split& split) {
  zn_lib::Tokenizer tokenizer;
  tokenizer.tokens = {text, "old"};
  try {
    // The argument is a token of the object itself.
    const std::size_t count = split(tokenizer, tokenizer.tokens.front());
    fuzz::expect("the pattern is invalid", expected.has_value());
    fuzz::expectSame("tokens", tokenizer.tokens, *expected);
    fuzz::expectSame("count", count, expected->size());
  } catch (const std::regex_error&) {
    fuzz::expect("the pattern is valid", !expected.has_value());
    fuzz::expect("the old tokens are gone", tokenizer.tokens.empty());
  }
  for (std::size_t i = 0; i < tokenizer.tokens.size(); ++i) {
    const std::string token = tokenizer.getToken(i);
    fuzz::expectSame("getToken", token, tokenizer.tokens[i]);
  }
  fuzz::expect("no such token", tokenizer.getToken(tokenizer.tokens.size()).empty());
}

std::optional<Tokens> byEngine(const std::string& text, const std::string& pattern) try {
  return reference::split(text, reference::engine(pattern));
} catch (const std::regex_error&) {
  return std::nullopt;
}

std::string without(std::string text, const std::string& characters) {
  text.erase(std::remove_if(text.begin(), text.end(),
                            [&](char c) { return characters.find(c) != std::string::npos; }),
             text.end());
  return text;
}

void sets(const std::string& text, const std::string& delimiters) {
  const Split split = [&](zn_lib::Tokenizer& tokenizer, const std::string& own) {
    return tokenizer.split(own, delimiters);
  };
  const bool isPlain = without(delimiters, "^\\[]-") == delimiters;
  if (isPlain) {
    checkSplit(text,
               between(text, 1,
                       [&](std::size_t start) {
                         return delimiters.empty() ? std::string::npos
                                                   : text.find_first_of(delimiters, start);
                       }),
               split);
  }
  const std::string set = "[" + delimiters + "]";
  const bool closesEarly = delimiters.find(']') != std::string::npos;
  const bool isShort = text.size() <= fuzz::kShortText && set.size() <= fuzz::kShortText;
  if (closesEarly ? isForEngine(text, set) : isShort) checkSplit(text, byEngine(text, set), split);
}

void patterns(const std::string& text, const std::string& pattern) {
  using namespace std::string_literals;
  const std::string plain = without(pattern, "^$\\.*+?()[]{}|\0"s);
  if (!plain.empty()) {
    checkSplit(
        text,
        between(text, plain.size(), [&](std::size_t start) { return text.find(plain, start); }),
        [&](zn_lib::Tokenizer& tokenizer, const std::string& own) {
          return tokenizer.splitMulti(own, plain);
        });
  }
  if (!isForEngine(text, pattern)) return;
  checkSplit(text, byEngine(text, pattern),
             [&](zn_lib::Tokenizer& tokenizer, const std::string& own) {
               return tokenizer.splitMulti(own, pattern);
             });
}

void sorts(const std::string& text) {
  zn_lib::Tokenizer tokenizer(text, ", ");
  Tokens sorted = tokenizer.tokens;
  std::sort(sorted.begin(), sorted.end(), [](const std::string& a, const std::string& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
      return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
    });
  });
  fuzz::expectSame("sortTokens", tokenizer.sortTokens(), sorted.size() >= 2);
  fuzz::expectSame("order", tokenizer.tokens, sorted);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const std::string delimiters = input.ConsumeRandomLengthString(size);
  const std::string text = input.ConsumeRemainingBytesAsString();
  sets(text, delimiters);
  patterns(text, delimiters);
  sorts(text);
  return 0;
}
