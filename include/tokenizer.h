/// \file
/// Splitting text into tokens, and the stream helpers for strings.
///
///     zn_lib::Tokenizer date("2024-05-06 10:20", "-/.,:; ");
///     date.tokens                ->  {"2024", "05", "06", "10", "20"}
///     date.getToken(0)           ->  "2024"
///     date.getToken(9)           ->  ""
#ifndef ZN_TOKENIZER_H
#define ZN_TOKENIZER_H

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "zn_common.h"

namespace zn_lib {

/// Writes `text` up to its first NUL, as the stream writes a C string: width and fill apply.
/// Returns `os`.
///
/// Inside namespace zn_lib, and for `String` everywhere, this inserter is taken before the standard
/// library's, which writes NULs too. A host with `using namespace zn_lib` gets it for all its
/// strings.
ZN_UDF_API std::ostream& operator<<(std::ostream& os, std::string text);

/// Manipulators: `os << setHexadecimal << 31` writes "0X1F", with `setOctal` 8 is "010".
///
/// Each sets the number base, and `showbase` and `uppercase`, which stay set on the stream: nothing
/// here clears them.
/// @{
ZN_UDF_API std::ostream& setDecimal(std::ostream& os);
ZN_UDF_API std::ostream& setHexadecimal(std::ostream& os);
ZN_UDF_API std::ostream& setOctal(std::ostream& os);
/// @}

/// A token: a std::string, usable wherever one is.
class ZN_UDF_API String : public std::string {
 public:
  String() = default;               ///< the empty text
  String(const std::string& text);  ///< a copy of `text`
};

/// The order of std::string's `<`: byte by byte as unsigned values, a prefix before the longer
/// text.
struct ZN_UDF_API vector_key {
  bool operator()(const std::string& a, const std::string& b) const;  ///< true for `a` before `b`
};

/// Cuts a text at delimiters and keeps the pieces.
///
/// Every delimiter ends a token, an empty one too; what follows the last delimiter is a token only
/// when it is not empty. A text without delimiters is one token, the empty text one empty token:
///
///     "a,b,,c"  ->  "a", "b", "", "c"           "a,b,"  ->  "a", "b"
///     ",a"      ->  "", "a"                     ","     ->  ""
///
/// Both split functions replace the tokens of an earlier call; their arguments may be tokens of the
/// object itself.
class ZN_UDF_API Tokenizer {
 public:
  /// Holds no tokens.
  Tokenizer();

  /// Splits at once; throws as `split` does.
  Tokenizer(const std::string& text, std::string delimiters);

  /// Splits `text` at each of the characters in `delimiters` and returns the number of tokens.
  ///
  /// `delimiters` is read as the inside of a bracket expression: "a-c" is a range ("+-", with the
  /// hyphen at an end, is plus and minus), a "^" in front negates, a backslash escapes (`\d` is any
  /// digit), "]" ends the set early. No delimiters split nothing.
  ///
  /// Plain characters are looked up in linear time, whatever the length. Sets with any of `^ \ [ ]`
  /// in them, with an inner hyphen or with several, go through std::regex. A malformed one, such as
  /// "z-a", throws std::regex_error and leaves no tokens; so does one of more than 9,998 bytes that
  /// holds a "]", escaped or not. A set that closes early and repeats may exhaust the stack on long
  /// texts.
  std::size_t split(const std::string& text, const std::string& delimiters);

  /// Splits `text` at each match of `pattern`, an ECMAScript regular expression, and returns the
  /// number of tokens.
  ///
  ///     splitMulti("one, two,three", ", ?")  ->  "one", "two", "three"
  ///
  /// A pattern of plain characters, ", ", is looked up in linear time, whatever the length. All
  /// others go through std::regex. A malformed one throws std::regex_error and leaves no tokens; so
  /// does one of more than 10,000 bytes, unless it is a single set, "[...]", with no "]" but its
  /// last. One that repeats may exhaust the stack where a match is tens of thousands of characters
  /// long.
  std::size_t splitMulti(const std::string& text, const std::string& pattern);

  /// Sorts the tokens in the order of `vector_key`. False, and nothing changes, when there are
  /// fewer than two.
  bool sortTokens();

  /// The token at `index`, counted from 0; empty when there is no such token.
  String getToken(std::size_t index) const;

  /// The tokens in text order.
  std::vector<std::string> tokens;
};

}  // namespace zn_lib

#endif  // ZN_TOKENIZER_H
