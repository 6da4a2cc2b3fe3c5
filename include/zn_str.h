/// \file
/// \ingroup family_str
/// Trims, pads, converts, builds and rewrites strings.
///
///     zn_lib::allTrim("  a b\r\n")              ->  "a b"
///     zn_lib::rightPad("7", 3, '0')             ->  "007"
///     zn_lib::replaceString("a.b.c", ".", "/")  ->  "a/b.c"
///
/// All functions are pure: they change no argument, keep no state and print nothing. Text is bytes
/// of any value and any length; NULs count like other bytes unless a function says otherwise.
/// Whitespace is space, tab, line feed, vertical tab, form feed and carriage return. Letters are
/// the ASCII letters. Only `stringToDouble` depends on the host's locale. A function throws only
/// when memory runs out or where it says so.
#ifndef ZN_STR_H
#define ZN_STR_H

#include <string>
#include <vector>

#include "zn_common.h"

namespace zn_lib {

/// Returns `text` without its leading whitespace.
///
///     leftTrim("  a b ")  ->  "a b "
ZN_UDF_API std::string leftTrim(const std::string& text);

/// Returns `text` without its trailing whitespace.
///
///     rightTrim("  a b ")  ->  "  a b"
ZN_UDF_API std::string rightTrim(const std::string& text);

/// Returns `text` without its leading and trailing whitespace.
ZN_UDF_API std::string allTrim(const std::string& text);

/// Returns `text` with the letters a-z in upper case. Other bytes, including UTF-8 sequences, stay
/// as they are.
///
///     stringToUpper("Size 7b")  ->  "SIZE 7B"
ZN_UDF_API std::string stringToUpper(const std::string& text);

/// Returns `text` with the letters A-Z in lower case. Other bytes stay as they are.
///
///     stringToLower("Size 7B")  ->  "size 7b"
ZN_UDF_API std::string stringToLower(const std::string& text);

/// Moves `text` to the RIGHT end of a field of `width` bytes by filling on its left.
///
///     rightPad("7", 3, '0')       ->  "007"
///     rightPad("abcdef", 3, ' ')  ->  "abcdef"   // never cut
///
/// The text ends at its first NUL. A width of zero or less adds nothing.
ZN_UDF_API std::string rightPad(const std::string& text, int width, char fill);

/// Moves `text` to the LEFT end of a field of `width` bytes by filling on its right.
///
///     leftPad("ab", 5, '.')  ->  "ab..."
///
/// The text ends at its first NUL. A width of zero or less adds nothing.
ZN_UDF_API std::string leftPad(const std::string& text, int width, char fill);

/// Returns true if the whole text is "yes", "true", "on", "y", ".t.", "t" or "1", in any mix of
/// case. Returns false for all other texts. Whitespace around a keyword also makes the result
/// false, so trim first.
///
///     stringToBool("YES")   ->  true
///     stringToBool("yes ")  ->  false
ZN_UDF_API bool stringToBool(const std::string& text);

/// Returns the value of the number at the start of `text`, as `std::stod` reads it. Leading
/// whitespace is skipped, and text after the number is ignored.
///
///     stringToDouble("  2e3x")  ->  2000
///     stringToDouble("1,5")     ->  1
///     stringToDouble("x")       ->  NAN
///
/// Returns a quiet NaN if there is no number, or if `std::stod` reports the number as out of range,
/// as it does for "1e400" and "1e-310". The decimal point is that of the current C locale
/// (`setlocale`): in a host that set a decimal comma, "1,5" is 1.5 and "1.5" is 1.
ZN_UDF_API double stringToDouble(const std::string& text);

/// Returns true if the whole text is a number: an optional "-", digits, an optional fraction and an
/// optional exponent. One comma may follow each digit before the fraction. The exponent must have a
/// sign.
///
///     isNumber("-1,234.56")  ->  true
///     isNumber("1e-7")       ->  true
///     isNumber("1e7")        ->  false   // the exponent has no sign
///     isNumber("+1")         ->  false
///     isNumber(".5")         ->  true
///     isNumber("1.")         ->  false
///     isNumber("1,")         ->  true
///     isNumber("1,,2")       ->  false
///
/// Every part may be missing, so the empty text and "-" are numbers too; check for them where that
/// matters. `stringToDouble` reads a number with commas only up to its first comma, so remove them
/// first.
ZN_UDF_API bool isNumber(const std::string& text);

/// Returns `part` as a percentage of `whole`, with `decimals` digits after the point, followed by
/// "%".
///
///     percentString(1, 3, 2)  ->  "33.33%"
///
/// A negative `decimals` counts as 6. A `whole` of zero yields "inf%" or "-inf%". If `part` is zero
/// too, the result is a NaN whose sign depends on the processor: "nan%" or "-nan%".
ZN_UDF_API std::string percentString(double part, double whole, int decimals);

/// Returns `count` copies of `character`, which is cut to a char. Note the order: the character
/// comes first. Throws std::length_error if `count` is negative.
///
///     replicateChar('-', 5)  ->  "-----"
ZN_UDF_API std::string replicateChar(int character, int count);

/// Returns `count` copies of `text`. Returns the empty text if `count` is less than 1.
///
///     replicateString("ab", 3)  ->  "ababab"
ZN_UDF_API std::string replicateString(const std::string& text, int count);

/// Returns `text` with every byte equal to `from` replaced by `to`, which is cut to a char.
///
///     replaceChar("a,b,c", ',', ';')  ->  "a;b;c"
///
/// Bytes are compared as signed chars. A byte above 0x7F therefore equals a negative value: 0xC3
/// equals -61, never 195.
ZN_UDF_API std::string replaceChar(const std::string& text, int from, int to);

/// Returns `text` without the bytes equal to `character`, compared as in `replaceChar`.
///
///     removeChar("1,234,567", ',')  ->  "1234567"
ZN_UDF_API std::string removeChar(const std::string& text, int character);

/// Returns `text` without its backquotes, apostrophes and double quotes, wherever they are.
///
///     removeQuotes("\"I don't\"")  ->  "I dont"
ZN_UDF_API std::string removeQuotes(const std::string& text);

/// Returns `text` up to its first NUL, between two copies of `mark`. Nothing inside is escaped.
///
///     inQuotes("a b", '"')  ->  "\"a b\""
ZN_UDF_API std::string inQuotes(const std::string& text, char mark);

/// Returns `text` with the FIRST occurrence of `search` replaced. Later ones stay.
///
///     replaceString("a.b.c", ".", "/")  ->  "a/b.c"
///
/// An empty `search` occurs at the start of every text except the empty one:
///
///     replaceString("abc", "", "X")  ->  "Xabc"
///     replaceString("", "", "X")     ->  ""
ZN_UDF_API std::string replaceString(const std::string& text, const std::string& search,
                                     const std::string& replacement);

/// Returns true if any element of `list` occurs in `text`. An empty element occurs in every text
/// except the empty one. Nothing occurs in the empty text.
///
///     findStrings("a grey cat", {"dog", "cat"})  ->  true
ZN_UDF_API bool findStrings(const std::string& text, std::vector<std::string> list);

}  // namespace zn_lib

#endif  // ZN_STR_H
