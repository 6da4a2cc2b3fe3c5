/// Reference model of the parts of a file name, by the regular expressions that define them.
#ifndef REFERENCE_NAME_PARTS_H
#define REFERENCE_NAME_PARTS_H

#include <regex>
#include <string>

#include "reference_engine.h"
#include "reference_names.h"

namespace reference {

struct DefinedParts {
  Parts parts;
  std::string stem;  ///< the name without its extension
};

/// Splits `name`, whose backslashes count as slashes. The engine recurses for each character, so
/// the name must be short.
inline DefinedParts splitByDefinitions(const std::string& name) {
  static const Engine lastExt = engine(zn_lib::internal::definitions::lastExt);
  static const Engine fileSplit = engine(zn_lib::internal::definitions::fileSplit);
  DefinedParts defined;
  defined.stem = withSlashes(name);
  std::smatch match;
  const std::string text = defined.stem;
  if (std::regex_match(text, match, lastExt)) {
    defined.stem = match[1];
    defined.parts.extension = match[2];
  }
  std::smatch split;
  if (std::regex_match(defined.stem, split, fileSplit)) {
    defined.parts.path = split[1];
    defined.parts.name = split[2];
  }
  return defined;
}

}  // namespace reference

#endif  // REFERENCE_NAME_PARTS_H
