/// \file
/// \ingroup family_common
/// Declares what all families share: the version macros, the export macro, four string constants
/// and the version symbols.
///
///     zn_udf_1VersionNumber                 ->  1.1
///     zn_lib::BRACKET                       ->  "()"
///     std::cout << zn_udf_1VersionString;   // standard output:
///     // @(#)PROGRAM:zn_udf.1  PROJECT:zn_lib-1.1
///
/// A program that is compiled with `_GLIBCXX_DEBUG` cannot use the library, because that macro
/// changes the layout of `std::vector` and `std::map`. Every header rejects it.
#ifndef ZN_COMMON_H
#define ZN_COMMON_H

#include <string>

#if defined(_GLIBCXX_DEBUG) && defined(__GLIBCXX__)
#error "zn_udf cannot be used with _GLIBCXX_DEBUG; compile with _GLIBCXX_ASSERTIONS instead"
#endif

/// The version of the headers. The version of the library that the program has loaded may be a
/// later one: see `zn_udf_1VersionNumber`.
/// @{
#define ZN_UDF_VERSION_MAJOR 1
#define ZN_UDF_VERSION_MINOR 1
/// @}

/// The version of the headers as an integer, which `#if` can compare.
///
///     ZN_UDF_VERSION  ->  101
#define ZN_UDF_VERSION (ZN_UDF_VERSION_MAJOR * 100 + ZN_UDF_VERSION_MINOR)

/// Exports a declaration from the shared library.
#define ZN_UDF_API __attribute__((visibility("default")))

/// Contains the whole library except the XML parser and the version symbols.
namespace zn_lib {

/// Pairs of brackets, the opening one first. They are for hosts: the library does not read them.
/// @{
static const std::string BRACKET = "()";
static const std::string CURLY_BRACKET = "{}";
static const std::string SQUARE_BRACKET = "[]";
/// @}

/// The empty text, which the date functions return for "no date".
static const std::string BLANK_DATE_STR = "";

}  // namespace zn_lib

extern "C" {

/// The version as `what(1)` finds it in a binary: one line that ends with a line feed.
ZN_UDF_API extern const char zn_udf_1VersionString[];

/// The version of the loaded library as a number: 1.1.
ZN_UDF_API extern const double zn_udf_1VersionNumber;
}

#endif  // ZN_COMMON_H
