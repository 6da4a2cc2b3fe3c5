/// The regular expressions that define the forms which the library recognises.
///
/// The library decides each form by a scan in linear time and constant stack, which stands in the
/// source of its family and has the form's name: `scanValidNumber` in zn_str.cpp. No program
/// compiles the expressions, unless the library is built with ZN_UDF_CHECK_DEFINITIONS: such a
/// build compares each answer of a scan with the expression's.
#ifndef ZN_INTERNAL_DEFINITIONS_H
#define ZN_INTERNAL_DEFINITIONS_H

#include <initializer_list>
#include <regex>
#include <string_view>

namespace zn_lib::internal {

/// A form: the texts that the expression matches as a whole.
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

/// The length up to which answers are compared: the engine recurses once a character.
inline constexpr std::size_t kLongestVerified = 255;

/// The texts of a definition's groups, in their order. A group that takes no part is empty.
using Groups = std::initializer_list<std::string_view>;

#ifdef ZN_UDF_CHECK_DEFINITIONS
/// Ends the program with both answers if `form` gives another answer for `text` than the scan gave:
/// whether the text matches and, if it does, the groups. Compares no groups if `groups` is empty.
void verify(const Definition& form, std::string_view text, bool isMatch, Groups groups = {});
#else
inline void verify(const Definition&, std::string_view, bool, Groups = {}) {}
#endif

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_DEFINITIONS_H
