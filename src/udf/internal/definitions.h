/// Defines the forms that the library recognises, each by a regular expression.
///
/// The library recognises each form by a scan that takes linear time and constant stack. The scan
/// is in the source file of its family and is named after the form: `scanValidNumber` in
/// zn_str.cpp. Only builds with ZN_UDF_CHECK_DEFINITIONS compile the expressions; they compare the
/// result of each scan with that of its expression.
#ifndef ZN_INTERNAL_DEFINITIONS_H
#define ZN_INTERNAL_DEFINITIONS_H

#include <initializer_list>
#include <regex>
#include <string_view>

namespace zn_lib::internal {

/// Defines a form. A text has the form if the expression matches the whole text.
struct Definition {
  const char* name;
  const char* expression;
  std::regex_constants::syntax_option_type grammar = std::regex_constants::ECMAScript;
};

namespace definitions {

inline constexpr Definition isBool = {
    "isBool", R"((yes|true|on|y|\.t\.|t|1))",
    std::regex_constants::ECMAScript | std::regex_constants::icase};
inline constexpr Definition validNumber = {"validNumber", R"(-?((\d),?)*(\.\d+)?([eE][-+]\d+)?)"};
inline constexpr Definition quote = {"quote", R"([`'"])"};
inline constexpr Definition lastExt = {"lastExt", R"((.+)[\.](.+)$)"};
inline constexpr Definition fileSplit = {"fileSplit", R"((.+[\/])?(.+))"};
inline constexpr Definition fileseq = {"fileseq", R"((.+)[-](\d+)?)"};
inline constexpr Definition isoDateTime = {
    "isoDateTime", R"(^(\d{4})-?(\d{2})?-?(\d{2})?[\sT]?(\d{2})?:?(\d{2})?:?(\d{2})?)"};
inline constexpr Definition ipv4 = {"ipv4",
                                    R"(([0-5]{1,3})\.([0-5]{1,3})\.([0-5]{1,3})\.([0-5]{1,3}))"};

}  // namespace definitions

/// The length of the longest text that is verified. The engine recurses once per character.
inline constexpr std::size_t kLongestVerified = 255;

/// The texts that a definition's groups captured, in order. A group without a match is empty.
using Groups = std::initializer_list<std::string_view>;

#ifdef ZN_UDF_CHECK_DEFINITIONS
/// Compares the result of a scan of `text` with that of `form`: whether the text matches and, if it
/// does, the groups. Prints both results and ends the program if they differ. Compares no groups if
/// `groups` is empty.
void verify(const Definition& form, std::string_view text, bool isMatch, Groups groups = {});
#else
inline void verify(const Definition&, std::string_view, bool, Groups = {}) {}
#endif

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_DEFINITIONS_H
