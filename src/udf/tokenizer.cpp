#include "tokenizer.h"

#include <algorithm>
#include <array>
#include <ios>
#include <ostream>
#include <regex>
#include <string_view>

#include "internal/literals.h"
#include "internal/patterns.h"
#include "internal/text.h"

namespace zn_lib {
namespace {

using Tokens = std::vector<std::string>;
using Matches =
    std::regex_iterator<std::string::const_iterator, char, internal::Pattern::traits_type>;

std::ostream& setBase(std::ostream& os, std::ios_base::fmtflags base) {
  os.setf(std::ios_base::showbase | std::ios_base::uppercase);
  os.setf(base, std::ios_base::basefield);
  return os;
}

/// Returns true only if a bracket expression of `delimiters` matches exactly these characters. Does
/// not recognise all such sets.
bool isPlainSet(const std::string& delimiters) {
  if (delimiters.find_first_of("^\\[]") != std::string::npos) return false;
  const std::size_t hyphen = delimiters.find('-');
  if (hyphen == std::string::npos) return true;
  const bool atAnEnd = hyphen == 0 || hyphen == delimiters.size() - 1;
  return atAnEnd && delimiters.find('-', hyphen + 1) == std::string::npos;
}

/// Appends a token. Tokens have random lengths, at which a copy of exactly that length mispredicts
/// its branches. A short token is therefore copied with the bytes after it, and then cut.
void appendToken(Tokens& tokens, const std::string& text, std::size_t start, std::size_t length) {
  constexpr std::size_t fixed = 15;  // standard libraries allocate no memory for this many bytes
  if (length > fixed || text.size() - start < fixed) {
    tokens.emplace_back(text.data() + start, length);
  } else {
    tokens.emplace_back(text.data() + start, fixed).resize(length);
  }
}

/// Appends the tokens between delimiters of `width` bytes. `find` returns the position of the first
/// delimiter at or after a position, or npos.
template <class Find>
void appendTokens(Tokens& tokens, const std::string& text, std::size_t width, Find find) {
  std::size_t start = 0;
  for (std::size_t at; (at = find(start)) != std::string::npos; start = at + width) {
    appendToken(tokens, text, start, at - start);
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
  const std::string_view view = text;  // its find is inlined, unlike that of a string
  appendTokens(tokens, text, 1, [&](std::size_t start) { return view.find(delimiter, start); });
  return tokens;
}

Tokens splitAtText(const std::string& text, const std::string& delimiter) {
  Tokens tokens;
  appendTokens(tokens, text, delimiter.size(),
               [&](std::size_t start) { return internal::findText(text, delimiter, start); });
  return tokens;
}

Tokens splitAtMatches(const std::string& text, const std::string& pattern) {
  // The token iterator of libc++ loses the text before an empty match, so the tokens are cut here.
  const internal::Pattern delimiter = internal::compilePattern(pattern);
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
  // No old tokens are left even if the split throws. They live until the end of the call, since the
  // arguments may be among them.
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
  const auto fixed = internal::fixedText(pattern);
  const bool isText = fixed && !fixed->text.empty() && !fixed->isAtStart && !fixed->isAtEnd;
  tokens = isText ? splitAtText(text, fixed->text) : splitAtMatches(text, pattern);
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
