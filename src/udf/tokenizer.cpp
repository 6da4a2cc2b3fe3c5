#include "tokenizer.h"

#include <algorithm>
#include <array>
#include <ios>
#include <ostream>
#include <regex>
#include <string_view>

#include "zn_find.h"
#include "zn_pattern.h"

namespace zn_lib {
namespace {

using Tokens = std::vector<std::string>;
using Matches = std::regex_iterator<std::string::const_iterator, char, Pattern::traits_type>;

std::ostream& setBase(std::ostream& os, std::ios_base::fmtflags base) {
  os.setf(std::ios_base::showbase | std::ios_base::uppercase);
  os.setf(base, std::ios_base::basefield);
  return os;
}

/// True when a bracket expression around `delimiters` holds exactly these characters. False says
/// nothing: some sets that this refuses would be plain as well.
bool isPlainSet(const std::string& delimiters) {
  if (delimiters.find_first_of("^\\[]") != std::string::npos) return false;
  const std::size_t hyphen = delimiters.find('-');
  if (hyphen == std::string::npos) return true;
  const bool atAnEnd = hyphen == 0 || hyphen == delimiters.size() - 1;
  return atAnEnd && delimiters.find('-', hyphen + 1) == std::string::npos;
}

/// Appends the tokens between delimiters of `width` bytes; `find` gives the position of the first
/// one from a position on, npos where there is none.
template <class Find>
void appendTokens(Tokens& tokens, const std::string& text, std::size_t width, Find find) {
  std::size_t start = 0;
  for (std::size_t at; (at = find(start)) != std::string::npos; start = at + width) {
    tokens.emplace_back(text.data() + start, at - start);
  }
  if (start < text.size() || tokens.empty()) tokens.emplace_back(text, start);
}

Tokens splitAtCharacters(const std::string& text, const std::string& delimiters) {
  std::array<bool, 256> isDelimiter{};
  for (const char c : delimiters) isDelimiter[static_cast<unsigned char>(c)] = true;
  const auto endsToken = [&isDelimiter](char c) {
    return isDelimiter[static_cast<unsigned char>(c)];
  };

  Tokens tokens;
  tokens.reserve(static_cast<std::size_t>(std::count_if(text.begin(), text.end(), endsToken)) + 1);
  appendTokens(tokens, text, 1, [&](std::size_t start) {
    while (start < text.size() && !endsToken(text[start])) ++start;
    return start < text.size() ? start : std::string::npos;
  });
  return tokens;
}

Tokens splitAtCharacter(const std::string& text, char delimiter) {
  Tokens tokens;
  tokens.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), delimiter)) + 1);
  const std::string_view view = text;  // searched here; a string is by a call of the library
  appendTokens(tokens, text, 1, [&](std::size_t start) { return view.find(delimiter, start); });
  return tokens;
}

Tokens splitAtText(const std::string& text, const std::string& delimiter) {
  Tokens tokens;
  appendTokens(tokens, text, delimiter.size(),
               [&](std::size_t start) { return findText(text, delimiter, start); });
  return tokens;
}

Tokens splitAtMatches(const std::string& text, const std::string& pattern) {
  // A loop of its own: not every standard library's token iterator knows where the text before an
  // empty match begins.
  const Pattern delimiter = compilePattern(pattern);
  Tokens tokens;
  auto start = text.begin();
  for (Matches match(start, text.end(), delimiter), end; match != end; ++match) {
    const auto& found = (*match)[0];
    tokens.emplace_back(start, found.first);
    start = found.second;
  }
  if (start != text.end() || tokens.empty()) tokens.emplace_back(start, text.end());
  return tokens;
}

}  // namespace

std::ostream& operator<<(std::ostream& os, std::string text) { return os << text.c_str(); }

std::ostream& setDecimal(std::ostream& os) { return setBase(os, std::ios_base::dec); }

std::ostream& setHexadecimal(std::ostream& os) { return setBase(os, std::ios_base::hex); }

std::ostream& setOctal(std::ostream& os) { return setBase(os, std::ios_base::oct); }

String::String(const std::string& text) : std::string(text) {}

bool vector_key::operator()(const std::string& a, const std::string& b) const { return a < b; }

Tokenizer::Tokenizer() = default;

Tokenizer::Tokenizer(const std::string& text, std::string delimiters) { split(text, delimiters); }

std::size_t Tokenizer::split(const std::string& text, const std::string& delimiters) {
  // The old tokens go first, also when the new ones cannot be had; but the arguments may be among
  // them.
  Tokens old;
  old.swap(tokens);
  if (!isPlainSet(delimiters)) {
    tokens = splitAtMatches(text, "[" + delimiters + "]");
  } else if (delimiters.size() == 1) {
    tokens = splitAtCharacter(text, delimiters.front());
  } else {
    tokens = splitAtCharacters(text, delimiters);
  }
  return tokens.size();
}

std::size_t Tokenizer::splitMulti(const std::string& text, const std::string& pattern) {
  Tokens old;
  old.swap(tokens);
  tokens = isPlainPattern(pattern) ? splitAtText(text, pattern) : splitAtMatches(text, pattern);
  return tokens.size();
}

bool Tokenizer::sortTokens() {
  if (tokens.size() < 2) return false;
  std::sort(tokens.begin(), tokens.end(), vector_key());
  return true;
}

String Tokenizer::getToken(std::size_t index) const {
  return index < tokens.size() ? String(tokens[index]) : String();
}

}  // namespace zn_lib
