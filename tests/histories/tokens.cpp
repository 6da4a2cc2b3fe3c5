// Calls of the tokenizer, the stream inserter and the manipulators.
#include <tokenizer.h>

#include <algorithm>
#include <cstddef>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "pools.h"
#include "reference_engine.h"

namespace histories {
namespace {

using Tokens = std::vector<std::string>;

/// Splits `text` at each byte of `delimiters`, which has no meaning as a bracket expression.
Tokens cut(const std::string& text, const std::string& delimiters) {
  Tokens tokens;
  std::string token;
  bool isEmptyAtEnd = true;
  for (const char c : text) {
    isEmptyAtEnd = delimiters.find(c) != std::string::npos;
    if (isEmptyAtEnd) {
      tokens.push_back(token);
      token.clear();
    } else {
      token += c;
    }
  }
  if (!isEmptyAtEnd || tokens.empty()) tokens.push_back(token);
  return tokens;
}

struct Outcome {
  Tokens tokens;
  bool hasThrown = false;
};

Outcome byEngine(const std::string& text, const std::string& pattern) {
  try {
    return {reference::split(text, reference::engine(pattern)), false};
  } catch (const std::regex_error&) {
    return {{}, true};
  }
}

template <class Split>
bool hasThrown(Split split) {
  try {
    split();
  } catch (const std::regex_error&) {
    return true;
  }
  return false;
}

void splitAtSet(Step& step) {
  const unsigned object = anyObject(step.choose);
  const std::string text = anyText(step.choose);
  const bool isPlain = step.choose.below(3) != 2;
  const std::string set = isPlain ? step.choose.one({","s, "-/.,:; "s, ""s, "a\n"s, "\0x"s, " "s})
                                  : step.choose.one({"a-c"s, "^a"s, "\\d"s, "z-a"s, "]"s, "["s,
                                                     "a]b"s, "[:space:]"s, "\\"s, "--/"s});
  const bool isByConstructor = step.choose.flag();
  step.call((isByConstructor ? "tokens = Tokenizer" : "split") + std::to_string(object), text, set);
  Outcome expected = isPlain ? Outcome{cut(text, set), false} : byEngine(text, "[" + set + "]");
  zn_lib::Tokenizer& tokenizer = *step.world.tokenizers[object];
  std::size_t count = 0;
  bool actual;
  if (isByConstructor) {
    if (expected.hasThrown) expected.tokens = step.world.model.tokens[object];
    actual = hasThrown([&] { tokenizer = zn_lib::Tokenizer(text, set); });
    count = tokenizer.tokens.size();
  } else {
    actual = hasThrown([&] { count = tokenizer.split(text, set); });
  }
  step.world.model.tokens[object] = expected.tokens;
  step.same(expected.hasThrown, actual);
  step.same(expected.tokens.size(), count);
  step.same(expected.tokens, tokenizer.tokens);
}

void splitAtPattern(Step& step) {
  const unsigned object = anyObject(step.choose);
  const std::string text = anyText(step.choose);
  const std::string pattern = step.choose.one(
      {","s, ", ?"s, "\\s+"s, ""s, "a|b"s, "("s, "\\."s, "x*"s, "[0-9]"s, "[z-a]"s});
  step.call("splitMulti" + std::to_string(object), text, pattern);
  // The engine recurses for each character that a repetition takes.
  const std::string shortText = text.substr(0, 200);
  const Outcome expected = byEngine(shortText, pattern);
  zn_lib::Tokenizer& tokenizer = *step.world.tokenizers[object];
  std::size_t count = 0;
  const bool actual = hasThrown([&] { count = tokenizer.splitMulti(shortText, pattern); });
  step.world.model.tokens[object] = expected.tokens;
  step.same(expected.hasThrown, actual);
  step.same(expected.tokens.size(), count);
  step.same(expected.tokens, tokenizer.tokens);
}

void sortTokens(Step& step) {
  const unsigned object = anyObject(step.choose);
  step.call("sortTokens" + std::to_string(object));
  Tokens& tokens = step.world.model.tokens[object];
  std::sort(tokens.begin(), tokens.end());
  step.same(tokens.size() > 1, step.world.tokenizers[object]->sortTokens());
  step.same(tokens, step.world.tokenizers[object]->tokens);
}

void getToken(Step& step) {
  const unsigned object = anyObject(step.choose);
  const std::size_t index = step.choose.below(6);
  step.call("getToken" + std::to_string(object), index);
  const Tokens& tokens = step.world.model.tokens[object];
  const zn_lib::String actual = step.world.tokenizers[object]->getToken(index);
  step.same(index < tokens.size() ? tokens[index] : ""s, std::string(actual));
}

void compareKeys(Step& step) {
  const std::string a = anyText(step.choose);
  const std::string b = anyText(step.choose);
  step.call("vector_key", a, b);
  step.same(std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                         [](char x, char y) {
                                           return static_cast<unsigned char>(x) <
                                                  static_cast<unsigned char>(y);
                                         }),
            zn_lib::vector_key()(a, b));
}

void insertText(Step& step) {
  const std::string text = anyText(step.choose);
  const int width = static_cast<int>(step.choose.below(20));
  step.call("operator<<", text, width);
  std::ostringstream out;
  out.fill('*');
  out.width(width);
  zn_lib::operator<<(out, zn_lib::String(text));
  std::string expected = text.c_str();
  if (expected.size() < static_cast<std::size_t>(width)) {
    expected.insert(0, static_cast<std::size_t>(width) - expected.size(), '*');
  }
  step.same(expected, out.str());
  step.same(0, out.width());
}

void manipulate(Step& step) {
  const unsigned value = step.choose.below(100000);
  const unsigned base = step.choose.below(3);
  std::ostringstream out;
  out.imbue(std::locale::classic());
  char expected[32];
  if (base == 0) {
    step.call("setDecimal", value);
    out << zn_lib::setDecimal << value;
    std::snprintf(expected, sizeof expected, "%u", value);
  } else if (base == 1) {
    step.call("setHexadecimal", value);
    out << zn_lib::setHexadecimal << value;
    std::snprintf(expected, sizeof expected, "%#X", value);
  } else {
    step.call("setOctal", value);
    out << zn_lib::setOctal << value;
    std::snprintf(expected, sizeof expected, "%#o", value);
  }
  step.same(expected, out.str());
}

}  // namespace

void addTokens(Kinds& kinds) {
  kinds.push_back({"Tokenizer::Tokenizer Tokenizer::split", splitAtSet});
  kinds.push_back({"Tokenizer::splitMulti", splitAtPattern, 4});
  kinds.push_back({"Tokenizer::sortTokens", sortTokens});
  kinds.push_back({"Tokenizer::getToken String::String", getToken});
  kinds.push_back({"vector_key::operator()", compareKeys, 2});
  kinds.push_back({"operator<<", insertText, 2});
  kinds.push_back({"setDecimal setHexadecimal setOctal", manipulate, 2});
}

}  // namespace histories
