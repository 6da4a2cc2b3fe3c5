/// \file
/// What all families share: the export marker, four string constants, and the version symbols.
///
///     #include <zn_common.h>
///     std::cout << zn_udf_1VersionNumber << '\n';   // 1.1
#ifndef ZN_COMMON_H
#define ZN_COMMON_H

#include <string>

/// Marks what the shared library exports.
#define ZN_UDF_API __attribute__((visibility("default")))

/// All of the library but the XML parser and the version symbols.
namespace zn_lib {

/// Pairs of brackets, the opening one first, for hosts; the library itself does not read them.
/// @{
static const std::string BRACKET = "()";
static const std::string CURLY_BRACKET = "{}";
static const std::string SQUARE_BRACKET = "[]";
/// @}

/// The empty text: what the date functions answer for "no date".
static const std::string BLANK_DATE_STR = "";

}  // namespace zn_lib

extern "C" {

/// The version as `what(1)` finds it in a binary: one line, closed by a line feed.
ZN_UDF_API extern const char zn_udf_1VersionString[];

/// The version as a number: 1.1.
ZN_UDF_API extern const double zn_udf_1VersionNumber;
}

#endif  // ZN_COMMON_H
