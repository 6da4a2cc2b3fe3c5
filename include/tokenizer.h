/// \file
/// \ingroup family_tokenizer
/// Splits text into tokens. Also declares a stream inserter for strings, and manipulators for
/// number bases.
///
///     zn_lib::Tokenizer date("2024-05-06 10:20", "-/.,:; ");
///     date.tokens       ->  {"2024", "05", "06", "10", "20"}
///     date.getToken(0)  ->  "2024"
///     date.getToken(9)  ->  ""
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
///     std::cout << String(std::string("ab\0cd", 5));   // standard output: ab
///
/// The standard library's inserter writes NULs too. Overload resolution prefers this one in three
/// cases: inside namespace zn_lib, for a `String` anywhere, and for every string in a host with
/// `using namespace zn_lib`.
ZN_UDF_API std::ostream& operator<<(std::ostream& os, std::string text);

/// Sets the number base of a stream, and its flags `showbase` and `uppercase`.
///
///     std::cout << setHexadecimal << 31;   // standard output: 0X1F
///     std::cout << setOctal << 8;          // standard output: 010
///     std::cout << setDecimal << 8;        // standard output: 8
///
/// The flags stay set on the stream; no function of the library clears them.
/// @{
ZN_UDF_API std::ostream& setDecimal(std::ostream& os);
ZN_UDF_API std::ostream& setHexadecimal(std::ostream& os);
ZN_UDF_API std::ostream& setOctal(std::ostream& os);
/// @}

/// Represents a token. It can be used wherever a std::string can.
///
///     String("pear") + " tree"  ->  "pear tree"
class ZN_UDF_API String : public std::string {
 public:
  String() = default;               ///< creates an empty text
  String(const std::string& text);  ///< copies `text`
};

/// Orders texts as std::string's `<` does: byte by byte as unsigned values, and a prefix before the
/// longer text.
///
///     vector_key()("B", "a")  ->  true
struct ZN_UDF_API vector_key {
  bool operator()(const std::string& a, const std::string& b) const;  ///< true for `a` before `b`
};

/// Splits a text at delimiters and keeps the tokens.
///
/// Every delimiter ends a token, which may be empty. The text after the last delimiter is a token
/// only if it is not empty. A text without delimiters is one token, so the empty text yields one
/// empty token.
///
///     Tokenizer("a,b,,c", ",").tokens  ->  {"a", "b", "", "c"}
///     Tokenizer("a,b,", ",").tokens    ->  {"a", "b"}
///     Tokenizer(",a", ",").tokens      ->  {"", "a"}
///     Tokenizer(",", ",").tokens       ->  {""}
///
/// Each call of a split function replaces the tokens of the previous call. Its arguments may be
/// tokens of the same object.
class ZN_UDF_API Tokenizer {
 public:
  /// Creates a tokenizer without tokens.
  Tokenizer();

  /// Splits `text` as `split` does, and throws as `split` does.
  Tokenizer(const std::string& text, std::string delimiters);

  /// Splits `text` at each character of `delimiters` and returns the number of tokens.
  ///
  ///     Tokenizer list;
  ///     list.split("1-2+3", "+-")  ->  3
  ///     list.tokens                ->  {"1", "2", "3"}
  ///
  /// `delimiters` is read as the inside of a bracket expression: "a-c" is a range, a leading "^"
  /// negates the set, a backslash escapes (`\d` is any digit), and "]" ends the set early. A hyphen
  /// at either end stands for itself, so "+-" is plus and minus. If `delimiters` is empty, the
  /// whole text is one token.
  ///
  /// A set of plain characters is searched in linear time, whatever the length of the text. A set
  /// that contains any of `^ \ [ ]`, an inner hyphen or several hyphens runs on std::regex. If a
  /// repetition follows its first "]", as in "a]+b", the search may exhaust the stack on long
  /// texts.
  ///
  /// Throws std::regex_error and leaves no tokens if the set is malformed, such as "z-a" and "[:".
  /// The same happens if `delimiters` contains a "]", escaped or not, and is longer than 9,998
  /// bytes.
  std::size_t split(const std::string& text, const std::string& delimiters);

  /// Splits `text` at each match of `pattern`, an ECMAScript regular expression, and returns the
  /// number of tokens.
  ///
  ///     Tokenizer list;
  ///     list.splitMulti("one, two,three", ", ?")  ->  3
  ///     list.tokens                               ->  {"one", "two", "three"}
  ///     list.splitMulti("abc", "")                ->  4
  ///     list.tokens                               ->  {"", "a", "b", "c"}
  ///
  /// A pattern of plain characters, such as ", ", is searched in linear time, whatever the length
  /// of the text. So is a pattern of at most 255 bytes in which all operators are escaped, such as
  /// "\.". Every other pattern runs on std::regex. A pattern with repetitions may exhaust the stack
  /// if a match is tens of thousands of characters long.
  ///
  /// Throws std::regex_error and leaves no tokens if a pattern that runs on std::regex is malformed
  /// or longer than 10,000 bytes. A single set, "[...]", with no other "]" may be longer.
  std::size_t splitMulti(const std::string& text, const std::string& pattern);

  /// Sorts the tokens in the order of `vector_key` and returns true. Returns false if there are
  /// fewer than two tokens.
  ///
  ///     Tokenizer list("pear,fig", ",");
  ///     list.sortTokens()  ->  true
  ///     list.tokens        ->  {"fig", "pear"}
  bool sortTokens();

  /// Returns the token at `index`, counted from 0. Returns an empty token if there is none.
  String getToken(std::size_t index) const;

  /// The tokens in text order.
  std::vector<std::string> tokens;
};

}  // namespace zn_lib

#endif  // ZN_TOKENIZER_H
