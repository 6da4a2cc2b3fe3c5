/// \file
/// Strings: trimming, case, padding, conversion, building and rewriting.
///
///     zn_lib::allTrim("  a b\r\n")            ->  "a b"
///     zn_lib::rightPad("7", 3, '0')           ->  "007"
///     zn_lib::replaceString("a.b.c", ".", "/")  ->  "a/b.c"
///
/// All functions are pure: they change no argument, keep no state and print nothing. Text is bytes
/// of any value and any length; NULs count like other bytes except where a function says otherwise.
/// A blank is one of space, tab, line feed, vertical tab, form feed and carriage return. Letters
/// are the ASCII letters. Nothing depends on the host's locale but `stringToDouble`. Nothing is
/// thrown, except when memory runs out and where a function says so.
#ifndef ZN_STR_H
#define ZN_STR_H

#include <string>
#include <vector>

#include "zn_common.h"

namespace zn_lib {

/// `text` without its leading blanks.
ZN_UDF_API std::string leftTrim(const std::string& text);

/// `text` without its trailing blanks.
ZN_UDF_API std::string rightTrim(const std::string& text);

/// `text` without its leading and trailing blanks; empty when there is nothing else.
ZN_UDF_API std::string allTrim(const std::string& text);

/// `text` with the letters a-z in upper case; other bytes, UTF-8 sequences among them, stay as they
/// are.
ZN_UDF_API std::string stringToUpper(const std::string& text);

/// `text` with the letters A-Z in lower case; other bytes stay as they are.
ZN_UDF_API std::string stringToLower(const std::string& text);

/// Pushes `text` to the RIGHT end of a field of `width` bytes: the fill goes to the left of the
/// text.
///
///     rightPad("7", 3, '0')       ->  "007"
///     rightPad("abcdef", 3, ' ')  ->  "abcdef"   (never cut)
///
/// Text ends at its first NUL here. A width of zero or less adds nothing.
ZN_UDF_API std::string rightPad(const std::string& text, int width, char fill);

/// Pushes `text` to the LEFT end of a field of `width` bytes: the fill goes to the right of the
/// text.
///
///     leftPad("ab", 5, '.')  ->  "ab..."
///
/// Text ends at its first NUL here. A width of zero or less adds nothing.
ZN_UDF_API std::string leftPad(const std::string& text, int width, char fill);

/// True when the whole text is "yes", "true", "on", "y", ".t.", "t" or "1", in any mix of case.
/// Everything else is false, a keyword with a blank before or behind it too: trim first.
ZN_UDF_API bool stringToBool(const std::string& text);

/// The value at the start of `text`, as `std::stod` reads it: leading blanks are skipped, and what
/// follows the number is ignored.
///
///     stringToDouble("  2e3x")  ->  2000
///     stringToDouble("1,5")     ->  1
///
/// A quiet NaN when there is no number or when it is out of range, upwards or downwards. Reads the
/// decimal point of the C locale in force (`setlocale`): in a host that set a decimal comma, "1,5"
/// is 1.5 and "1.5" is 1.
ZN_UDF_API double stringToDouble(const std::string& text);

/// True when the whole text is a number: an optional "-", digits, each of which one comma may
/// follow, an optional fraction, an optional exponent, whose sign is a must.
///
///     isNumber("-1,234.56")  ->  true         isNumber("+1")    ->  false
///     isNumber("1e-7")       ->  true         isNumber("1e7")   ->  false   (no sign)
///     isNumber(".5")         ->  true         isNumber("1.")    ->  false
///     isNumber("1,")         ->  true         isNumber("1,,2")  ->  false
///
/// Every piece may be missing, so the empty text and "-" are numbers too; check for them where that
/// matters. A number with commas is read by `stringToDouble` up to its first comma only: remove
/// them first.
ZN_UDF_API bool isNumber(const std::string& text);

/// `part` as a percentage of `whole`, with `decimals` digits behind the point, followed by "%".
///
///     percentString(1, 3, 2)  ->  "33.33%"
///
/// A negative `decimals` counts as 6. A `whole` of zero gives "inf%", "-inf%" or, where `part` is
/// zero too, a NaN with the sign that the processor gives it: "nan%" or "-nan%".
ZN_UDF_API std::string percentString(double part, double whole, int decimals);

/// `count` copies of the byte `character` (cut to a char). Note the order: character first.
/// Throws std::length_error when `count` is negative.
ZN_UDF_API std::string replicateChar(int character, int count);

/// `text`, `count` times in a row; empty when `count` is less than 1.
ZN_UDF_API std::string replicateString(const std::string& text, int count);

/// `text` with every byte equal to `from` replaced by `to` (cut to a char).
///
/// Bytes are compared as signed chars: a byte above 0x7F is met by its negative value (-61 for
/// 0xC3), never by 195.
ZN_UDF_API std::string replaceChar(const std::string& text, int from, int to);

/// `text` without the bytes equal to `character`, compared as in `replaceChar`.
ZN_UDF_API std::string removeChar(const std::string& text, int character);

/// `text` without its backquotes, apostrophes and double quotes, wherever they stand.
ZN_UDF_API std::string removeQuotes(const std::string& text);

/// `mark`, the text up to its first NUL, `mark`. Nothing inside the text is escaped.
ZN_UDF_API std::string inQuotes(const std::string& text, char mark);

/// `text` with the FIRST occurrence of `search` replaced; later ones stay.
///
/// An empty `search` occurs at the front of every text but the empty one:
///
///     replaceString("abc", "", "X")  ->  "Xabc"
///     replaceString("", "", "X")     ->  ""
ZN_UDF_API std::string replaceString(const std::string& text, const std::string& search,
                                     const std::string& replacement);

/// True when any element of `list` occurs in `text`. An empty element occurs in every text but the
/// empty one; nothing occurs in the empty text.
ZN_UDF_API bool findStrings(const std::string& text, std::vector<std::string> list);

}  // namespace zn_lib

#endif  // ZN_STR_H
